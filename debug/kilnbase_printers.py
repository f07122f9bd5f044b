"""How gdb shows the values of libvx and libKilnBase.

gdb runs the script `LIBRARY-gdb.py` when it loads a library, and the script calls `register`. A
program that is linked with the static libraries has no such script; there `source` this file.

A printer reads memory only and calls no function of the program, so that core files can be looked
at as well. A value that is not initialised, or damaged, gives a text that says so: counts are
bounded, rings in chains are found, and what cannot be read ends the list with the reason.
"""

import itertools
import re
import struct

import gdb
import gdb.printing

# The nodes of a list or tree are counted up to this number.
MOST_COUNTED = 10_000

# What goes wrong with a damaged value: memory that is not there, and numbers that make no sense.
DAMAGE = (gdb.error, ValueError, OverflowError, struct.error)


class Damaged(ValueError):
    """A value that cannot be what its type says."""


# Memory and numbers


def word(address):
    """The pointer or `size_t` at an address."""
    size = gdb.lookup_type("void").pointer().sizeof
    return int.from_bytes(gdb.selected_inferior().read_memory(address, size), "little")


def word_size():
    return gdb.lookup_type("void").pointer().sizeof


def pointer(address, type_name="void"):
    return gdb.Value(address).cast(gdb.lookup_type(type_name).pointer())


def pointed_to(value):
    """What a pointer points to, read now: an error while gdb prints would end the whole output."""
    found = value.dereference()
    found.fetch_lazy()
    return found


def number(value):
    """The shortest text that reads as the same double."""
    text = repr(float(value))
    return text[:-2] if text.endswith(".0") else text


def numbers(value, names):
    return "(" + ", ".join(number(value[name]) for name in names) + ")"


def plural(count, noun):
    return f"{count} {noun}" if count == 1 else f"{count} {noun}s"


def function_name(value):
    """The name of the function that a pointer points to; its address when it has no name."""
    found = re.search(r"<(.+?)(\([^()]*\))?>$", str(value))
    return found.group(1) if found else hex(int(value))


# Chains and trees, by the addresses of their nodes


def chain(node, offset):
    """The nodes from one on; `offset` is where a node holds the address of the next one."""
    seen = set()
    while node:
        if node in seen:
            raise Damaged(f"comes back to node {node:#x}")
        seen.add(node)
        yield node
        node = word(node + offset)


def in_order(root, offset):
    """The nodes of a binary tree; `offset` is where a node holds its left child, then the right."""
    path, seen, node = [], set(), root
    while node or path:
        while node:
            if node in seen:
                raise Damaged(f"comes back to node {node:#x}")
            seen.add(node)
            path.append(node)
            node = word(node + offset)
        node = path.pop()
        yield node
        node = word(node + offset + word_size())


def counted(items, noun):
    """How many items there are, and whether what comes behind them is damaged."""
    count = 0
    try:
        for _ in itertools.islice(items, MOST_COUNTED + 1):
            count += 1
    except DAMAGE:
        return f"{plural(count, noun)}, then damaged"
    return plural(count, noun) if count <= MOST_COUNTED else f"more than {MOST_COUNTED} {noun}s"


# What all printers have in common


class Printer:
    """Shows `title()`, then `parts()`, pairs of a name and a value."""

    hint = None

    def __init__(self, value):
        self.value = value

    def parts(self):
        return ()

    def to_string(self):
        try:
            return self.title()
        except DAMAGE as problem:
            return f"<damaged or not initialised: {problem}>"

    def children(self):
        try:
            yield from self.parts()
        except DAMAGE as problem:
            yield "end", f"<{problem}>"

    def display_hint(self):
        return self.hint


class Sequence(Printer):
    """Shows parts without names."""

    hint = "array"

    def parts(self):
        for i, item in enumerate(self.items()):
            yield str(i), item


class Components(Printer):
    """A small value: its numbers in parentheses."""

    names = ("x", "y", "z")

    def title(self):
        return numbers(self.value, self.names)


class Text(Printer):
    """A string, with the length that it knows."""

    hint = "string"

    def text(self):
        return self.value["text_"]

    def title(self):
        text = self.text()
        return text["_M_dataplus"]["_M_p"].lazy_string(length=int(text["_M_string_length"]))

    def children(self):
        return iter(())


# libvx


class Path(Text):
    def text(self):
        return self.value["path_"]["text_"]


class Address(Text):
    def text(self):
        return self.value["text_"]["text_"]


class Error(Printer):
    def title(self):
        code = int(self.value["code_"])
        return f"error {code}" if code else "success"

    def parts(self):
        if int(self.value["code_"]):
            yield "message", self.value["message_"]


class Interval(Printer):
    def title(self):
        seconds = float(self.value["seconds_"])
        return f"{number(seconds)} s" if seconds else "no limit"


class Reference(Printer):
    def title(self):
        target = self.value["object_"]
        if not int(target):
            return "no object"
        return f"one of {plural(int(target.dereference()['count_']), 'reference')}"

    def parts(self):
        if int(self.value["object_"]):
            yield "object", self.value["object_"]


class Uuid(Printer):
    def title(self):
        bytes_ = self.value["bytes_"]["_M_elems"]
        digits = "".join(f"{int(bytes_[i]):02x}" for i in range(16))
        return "-".join(digits[a:b] for a, b in ((0, 8), (8, 12), (12, 16), (16, 20), (20, 32)))


class Point2(Components):
    names = ("u", "v")


class ParamLine(Printer):
    def title(self):
        origin, direction = (numbers(self.value[name], "xyz") for name in ("origin_", "direction_"))
        return f"{origin} + t * {direction}"


class Mesh(Printer):
    arrays = ("vertices_", "triangles_", "normals_")

    def title(self):
        return self.value.type.strip_typedefs().name

    def parts(self):
        for name in self.arrays:
            yield name[:-1], self.value[name]


class TopoMesh(Mesh):
    arrays = ("vertices_", "halfEdges_", "faces_")


# Vectors and matrices

FAMILIES = {"double": "Double", "int": "Int", "signed char": "SChar"}


def element_type(value):
    return value["begin_"].type.target().unqualified()


def family(value):
    name = str(element_type(value).strip_typedefs())
    return FAMILIES.get(name, name)


def element(value, i):
    """Element i of a vector, the stride taken into account; signed characters as numbers."""
    found = pointed_to(value["begin_"] + i * int(value["step_"]))
    return gdb.Value(int(found)) if found.type.sizeof == 1 else found


def numbers_value(count, at, type_):
    """Numbers as an array that gdb prints as its own; the text for one that gdb would cut."""
    limit = gdb.parameter("print elements") or count
    items = [at(k) for k in range(min(count, limit))]
    if not items:
        return "{}"
    code, number_type = ("d", float) if type_.code == gdb.TYPE_CODE_FLT else ("i", int)
    memory = struct.pack(f"={len(items)}{code}", *map(number_type, items))
    element_type = gdb.lookup_type("double" if code == "d" else "int")
    array = gdb.Value(memory, element_type.array(len(items) - 1))
    return array if count <= limit else array.format_string()[:-1] + "...}"


def views(value):
    """How many vectors view the storage, which explains most surprises. The block of all empty
    vectors has lost count."""
    references = int(value["block_"]["refs"])
    return f", one of {references} views" if 1 < references < 0xFFFF else ""


def stride(value):
    step = int(value["step_"])
    return f", stride {step}" if step != 1 else ""


class Vec(Sequence):
    def title(self):
        length = int(self.value["npts_"])
        return f"{family(self.value)}Vec of {length}{stride(self.value)}{views(self.value)}"

    def items(self):
        for i in range(int(self.value["npts_"])):
            yield element(self.value, i)


class Block(Printer):
    def title(self):
        references = plural(int(self.value["refs"]), "reference")
        return f"RWBlock with {references}, storage at {int(self.value['data']):#x}"


class VecPick(Sequence):
    def title(self):
        vector = self.value["vec_"]
        indices = int(self.value["indices_"]["npts_"])
        return f"{family(vector)}VecPick of {indices} elements of {int(vector['npts_'])}"

    def items(self):
        for i in range(int(self.value["indices_"]["npts_"])):
            yield element(self.value["vec_"], int(element(self.value["indices_"], i)))


class Rows(Printer):
    """A matrix: `name()`, `rows()`, `cols()` and `at(i, j)`. Shows row by row."""

    hint = "array"

    def type(self):
        return element_type(self.value)

    def title(self):
        return f"{self.name()} {self.rows()}x{self.cols()}{self.state()}"

    def state(self):
        return stride(self.value) + views(self.value)

    def parts(self):
        columns = self.cols()
        for i in range(self.rows() if columns else 0):
            yield str(i), numbers_value(columns, lambda j: self.at(i, j), self.type())


class GenMat(Rows):
    def name(self):
        return f"{family(self.value)}GenMat"

    def rows(self):
        return int(self.value["nrows_"])

    def cols(self):
        return int(self.value["ncols_"])

    def at(self, i, j):
        return element(self.value, j * self.rows() + i)


class GenMatPick(Rows):
    def __init__(self, value):
        super().__init__(value)
        self.matrix = GenMat(value["matrix_"])

    def type(self):
        return self.matrix.type()

    def name(self):
        return f"{self.matrix.name()}Pick"

    def state(self):
        return f" of {self.matrix.rows()}x{self.matrix.cols()}"

    def rows(self):
        return int(self.value["rowIndices_"]["npts_"])

    def cols(self):
        return int(self.value["columnIndices_"]["npts_"])

    def at(self, i, j):
        row = int(element(self.value["rowIndices_"], i))
        return self.matrix.at(row, int(element(self.value["columnIndices_"], j)))


def place_below(i, j):
    return (i + 1) * i // 2 + j


# For each packing the name of the matrix, which elements are stored, and where.
PACKINGS = {
    "vxKilnBase::SymmetricPacking":
        ("DoubleSymMat", lambda i, j: True,
         lambda i, j: place_below(max(i, j), min(i, j))),
    "vxKilnBase::LowerPacking":
        ("DoubleLowerTriMat", lambda i, j: i >= j, place_below),
    "vxKilnBase::UpperPacking":
        ("DoubleUpperTriMat", lambda i, j: i <= j, lambda i, j: place_below(j, i)),
}


class PackedMat(Rows):
    def __init__(self, value):
        super().__init__(value)
        self.packing = PACKINGS[str(value.type.strip_typedefs().template_argument(0))]

    def name(self):
        return self.packing[0]

    def rows(self):
        return int(self.value["n_"])

    cols = rows

    def at(self, i, j):
        _, stores, place = self.packing
        return element(self.value, place(i, j)) if stores(i, j) else 0.0


class Owned:
    """What an `Owned` holds, said to be owned."""

    def __new__(cls, value):
        printer = printer_of(base_of(value))
        title = printer.title
        printer.title = lambda: f"Owned {title()}"
        return printer


# Decompositions


def base_of(value):
    """The value as its first base class."""
    return value.cast(value.type.strip_typedefs().fields()[0].type)


class Decomposition(Printer):
    """The size of the matrix and the state, then what was computed."""

    def size(self):
        return f"{int(self.value['nrows_'])}x{int(self.value['ncols_'])}"

    def title(self):
        return f"{self.name()} {self.size()}, {self.state()}"


class Fact(Decomposition):
    def packed(self):
        return "PackedMat" in str(self.value.type.strip_typedefs())

    def name(self):
        return "DoubleSymFact" if self.packed() else "DoubleGenFact"

    def order(self):
        return int(self.value["n_" if self.packed() else "nrows_"])

    def size(self):
        return f"of order {self.order()}"

    def state(self):
        if not self.order():
            return "nothing factored"
        condition = float(self.value["rcond_"])
        if condition == 0.0:
            return "singular"
        return f"reciprocal condition {number(condition)}" if condition > 0.0 else "factored"

    def parts(self):
        yield "factors", base_of(self.value)
        yield "pivots", self.value["pvts_"]


class ChDecomp(Decomposition):
    def name(self):
        return "DoubleChDecomp"

    def state(self):
        factored = int(self.value["info_"])
        return "nothing factored" if factored < 0 else f"{plural(factored, 'column')} factored"

    def parts(self):
        yield "factor", self.value.cast(gdb.lookup_type("vxKilnBase::GenMat<double>"))
        if int(self.value["permuted_"]):
            yield "pivots", self.value["pvts_"]


class QRDecomp(Decomposition):
    def name(self):
        return self.value.type.strip_typedefs().name

    def state(self):
        pivoting = "with" if int(self.value["pivoting_"]) else "without"
        state = f"{pivoting} pivoting"
        if self.name() == "DoubleLeastSqQR":
            state += f", tolerance {number(self.value['tolerance_'])}"
        return state

    def parts(self):
        yield "factors", self.value.cast(gdb.lookup_type("vxKilnBase::GenMat<double>"))
        yield "pivots", self.value["pvts_"]


class SVDecomp(Printer):
    def title(self):
        count, missing = int(self.value["singularValues_"]["npts_"]), int(self.value["info_"])
        if not count:
            return "DoubleSVDecomp, nothing factored"
        return f"DoubleSVDecomp, {count - missing} of {plural(count, 'singular value')} found"

    def parts(self):
        yield "singularValues", self.value["singularValues_"]
        yield "leftVecs", self.value["u_"]
        yield "rightVecs", self.value["v_"]


class SymEig(Printer):
    def title(self):
        count = int(self.value["values_"]["npts_"])
        if not count:
            return "DoubleSymEig, nothing factored"
        state = "failed" if int(self.value["failed_"]) else "found"
        return f"DoubleSymEig, {plural(count, 'eigenvalue')} {state}"

    def parts(self):
        yield "eigenValues", self.value["values_"]
        yield "eigenVecs", self.value["v_"]


# Geometry


class HomogeneousPoint(Components):
    names = ("x", "y", "z", "w")


class Quaternion(Components):
    names = ("w", "x", "y", "z")

    def title(self):
        return f"w {number(self.value['w'])}, {numbers(self.value, 'xyz')}"


class Plane(Printer):
    def title(self):
        normal, d = numbers(self.value, "abc"), number(self.value["d"])
        return f"normal {normal}, d {d}, tolerance {number(self.value['tolerance'])}"


class Angle(Printer):
    """An angle computes its forms when they are asked for; the others hold old numbers."""

    def title(self):
        valid = int(self.value["valid_"])
        if valid & 1:
            return f"{number(self.value['degrees_'])} degrees"
        if valid & 2:
            return f"{number(self.value['radians_'])} radians"
        return f"cosine {number(self.value['cos_'])}, sine {number(self.value['sin_'])}"


class Matrix4(Sequence):
    def title(self):
        return self.value.type.strip_typedefs().name

    def items(self):
        for row in range(4):
            yield self.value["element_"][row]


class Transform(Matrix4):
    """A matrix and the components that it is composed of, or will be."""

    hint = None

    def title(self):
        return f"{super().title()}, {'changed' if int(self.value['dirty_']) else 'not changed'}"

    def parts(self):
        yield "matrix", self.value.cast(gdb.lookup_type("T4dDblMatrix"))
        for name in ("translation_", "rotation_", "scale_"):
            yield name[:-1], self.value[name]


class Box(Printer):
    def corner(self, name):
        corner = self.value[name]
        coordinates = (number(element(corner, i)) for i in range(int(corner["npts_"])))
        return f"({', '.join(coordinates)})"

    def title(self):
        if not int(self.value["minCorner_"]["npts_"]):
            return "empty box"
        return f"from {self.corner('minCorner_')} to {self.corner('maxCorner_')}"


# Containers of objects and points


class TupleVector(Sequence):
    def count(self):
        size = int(self.value["size_"])
        return int(self.value["data_"]["npts_"]) // size if size > 0 else 0

    def title(self):
        points = f"{plural(self.count(), 'point')} of {int(self.value['size_'])}"
        return f"TtupleVector of {points}{views(self.value['data_'])}"

    def point(self, i):
        data, size = self.value["data_"], int(self.value["size_"])
        return numbers_value(size, lambda k: element(data, i * size + k), element_type(data))

    def items(self):
        for i in range(self.count()):
            yield self.point(i)


class TupleMatrix(TupleVector):
    hint = None

    def title(self):
        size, rows, cols = (int(self.value[name]) for name in ("size_", "rows_", "cols_"))
        return f"TtupleMatrix {rows}x{cols} of {size}{views(self.value['data_'])}"

    def parts(self):
        rows, cols = int(self.value["rows_"]), int(self.value["cols_"])
        for r in range(rows):
            for c in range(cols):
                yield f"({r}, {c})", self.point(c * rows + r)


class SparseMatrix(Printer):
    def title(self):
        value = self.value
        size = f"{int(value['rows_'])}x{int(value['cols_'])}"
        return f"TsparseMatrix {size}, {plural(int(value['numberOfElements_']), 'element')} stored"

    def parts(self):
        beginnings, counts = self.value["beginnings_"], self.value["counts_"]
        for c in range(min(int(self.value["cols_"]), int(counts["npts_"]))):
            first = int(element(beginnings, c))
            for k in range(first, first + int(element(counts, c))):
                yield (f"({int(element(self.value['indices_'], k))}, {c})",
                       element(self.value["data_"], k))


class NumberSequence(Sequence):
    def title(self):
        return f"TnumberSequence of {int(self.value['values_']['npts_'])}"

    def items(self):
        return Vec(self.value["values_"]).items()


class Array(Sequence):
    """An array whose elements have no type, and those with one, whose base it is."""

    def size(self):
        return int(self.value["length_"]), int(self.value["capacity_"])

    def title(self):
        length, capacity = self.size()
        name = self.value.type.strip_typedefs().name
        return f"{name} of {length}, room for {capacity}"

    def addresses(self):
        first, step = int(self.value["buffer_"]), int(self.value["elementSize_"])
        return (first + i * step for i in range(self.size()[0]))

    def parts(self):
        type_ = typed_base(self.value.type.strip_typedefs())
        if type_ is None:
            yield "elementSize", self.value["elementSize_"]
            yield "elements", self.value["buffer_"].cast(gdb.lookup_type("void").pointer())
            return
        first = self.value["buffer_"].cast(type_.pointer())
        for i in range(self.size()[0]):
            yield str(i), pointed_to(first + i)

    def display_hint(self):
        return None if typed_base(self.value.type.strip_typedefs()) is None else "array"


def typed_base(type_):
    """The type of the elements of a TypedArray or TypedObjArray, or of a class derived from one."""
    while type_.fields() and type_.fields()[0].is_base_class:
        type_ = type_.fields()[0].type.strip_typedefs()
        if type_.name.startswith("vxKilnBase::detail::TypedArray<"):
            return type_.template_argument(1)
        if type_.name.startswith("vxKilnBase::detail::TypedObjArray<"):
            return type_.template_argument(0)
    return None


class ScratchArray(Printer):
    def title(self):
        count, size = int(self.value["count_"]), int(self.value["size_"])
        return f"scratch array of {plural(count, 'element')} of {plural(size, 'byte')}"


class LinkedElement(Printer):
    def title(self):
        return "linked" if int(self.value["next_"]) or int(self.value["prev_"]) else "not linked"


class LinkedList(Sequence):
    """The elements between the two sentinels, as what they really are."""

    def title(self):
        name = self.value.type.strip_typedefs().name
        return f"{name} of {int(self.value['length_'])}"

    def elements(self):
        node, seen = self.value["head_"]["next_"], set()
        while int(node) and int(node["next_"]):  # the sentinel at the end has no next
            if int(node) in seen:
                raise Damaged(f"comes back to element {int(node):#x}")
            seen.add(int(node))
            yield node
            node = node["next_"]

    def addresses(self):
        return (int(node) for node in self.elements())

    def items(self):
        for node in self.elements():
            yield pointed_to(node.cast(node.dynamic_type))


class GroupOfLists(Printer):
    def title(self):
        used = int(self.value["usingIndices_"]["npts_"])
        return f"{plural(int(self.value['count_']), 'slot')}, {used} in use"

    def parts(self):
        for k in range(int(self.value["usingIndices_"]["npts_"])):
            i = int(element(self.value["usingIndices_"], k))
            yield f"[{i}]", pointed_to(self.value["lists_"] + i)


# Records of the plain functions


class Status(Printer):
    """A status code by its name, which the debug information of the library knows."""

    def title(self):
        code = int(self.value)
        symbol = gdb.lookup_static_symbol("MR_NO_ERROR") or gdb.lookup_symbol("MR_NO_ERROR")[0]
        if symbol is not None:
            for field in symbol.type.fields():
                if field.enumval == code:
                    return f"{field.name} ({code})"
        return str(code)


class LinkList(Sequence):
    """The nodes of a list; the records around them are the caller's."""

    def title(self):
        return f"{self.value.type.strip_typedefs().name} of {counted(self.addresses(), 'node')}"

    def addresses(self):
        return chain(int(self.value["head"]), word_size())

    def items(self):
        for node in self.addresses():
            yield pointer(node, "MR_LinkNode")


class List(LinkList):
    """The pointers that the nodes of a list hold."""

    def items(self):
        return (pointer(item) for item in self.data())

    def data(self):
        return (word(node + 2 * word_size()) for node in self.addresses())


class AvlNode(Sequence):
    """The nodes at and below a node, in order."""

    def title(self):
        return f"MR_AvlNode, subtree of {counted(self.addresses(), 'node')}"

    def addresses(self):
        if self.value.address is None:
            raise Damaged("a copy, whose own place is not known")
        return in_order(int(self.value.address), 0)

    def items(self):
        for node in self.addresses():
            yield pointer(node, "MR_AvlNode")


class PlainArray(Printer):
    def title(self):
        count, size = int(self.value["count"]), int(self.value["elementSize"])
        growth = int(self.value["growth"])
        return f"MR_Array of {plural(count, 'element')} of {plural(size, 'byte')}, growth {growth}"

    def addresses(self):
        first, step = int(self.value["elements"]), int(self.value["elementSize"])
        return (first + i * step for i in range(int(self.value["count"])))

    def parts(self):
        yield "elements", self.value["elements"]


class Pool(Printer):
    def title(self):
        blocks = counted(chain(int(self.value["blocks"]["head"]), word_size()), "block")
        used, size = int(self.value["used"]), int(self.value["blockSize"])
        return f"MR_Pool of {blocks} of {plural(size, 'byte')}, {used} used in the newest"


class FileName(Printer):
    """A file, or a frame of a sequence, as its parts."""

    def title(self):
        if int(self.value["sequence"]):
            return f"frame {int(self.value['frame'])}"
        return "file"

    def parts(self):
        name = "basename" if int(self.value["sequence"]) else "name"
        yield name, self.value[name]
        yield "type", self.value["type"]


class Structure(Sequence):
    """All items of a generic structure, those that the filter hides included."""

    # What a kind is called, and how the slots of its items are reached from its storage.
    KINDS = {
        "dlist": ("doubly linked list", lambda data: chain(word(data), word_size())),
        "slist": ("singly linked list", lambda data: chain(word(data), word_size())),
        "bintree": ("binary tree", lambda data: chain(word(data), word_size())),
        "array": ("array", lambda data: (word(data + 2 * word_size()) + i * word_size()
                                         for i in range(word(data)))),
    }

    def kind(self):
        """The kind by the name of its function, which is one of the library's exports."""
        if not int(self.value["methods"]):
            return None
        found = re.fullmatch(r"Ds_(\w+)_get_type", function_name(self.value["methods"]["get_type"]))
        return self.KINDS.get(found.group(1)) if found else None

    def title(self):
        if not int(self.value["methods"]):
            return "DS_Structure without methods"
        kind = self.kind()
        what = "kind of the application"
        if kind:
            what = f"{kind[0]} of {counted(self.slots(), 'item')}"
        order = ", ordered" if int(self.value["ordered"]) else ""
        return f"DS_Structure, {what}{order}{self.functions()}"

    def functions(self):
        return "".join(f", {name} {function_name(self.value[name])}"
                       for name in ("comparator", "filter") if int(self.value[name]))

    def slots(self):
        kind, data = self.kind(), int(self.value["data"])
        return kind[1](data) if kind and data else iter(())

    def data(self):
        return (word(slot) for slot in self.slots())

    def items(self):
        return (pointer(item) for item in self.data())


VX = {
    "vxString::BasicString": Text,
    "vxUtil::Error": Error,
    "vxUtil::Interval": Interval,
    "vx::Reference": Reference,
    "vxOS::Filename": Path,
    "vxOS::URL": Address,
    "vxOS::Uuid": Uuid,
    "vxLinear::Vector": Components,
    "vxLinear::Point": Components,
    "vxLinear::Point2": Point2,
    "vxLinear::ParamLine": ParamLine,
    "vxGeom::CompactMesh": Mesh,
    "vxGeom::TopoMesh": TopoMesh,
}

KILNBASE = {
    "RWBlock": Block,
    "vxKilnBase::Vec": Vec,
    "vxKilnBase::VecPick": VecPick,
    "vxKilnBase::GenMat": GenMat,
    "vxKilnBase::GenMatPick": GenMatPick,
    "vxKilnBase::PackedMat": PackedMat,
    "vxKilnBase::Owned": Owned,
    "vxKilnBase::Fact": Fact,
    "DoubleChDecomp": ChDecomp,
    "DoubleQRDecomp": QRDecomp,
    "DoubleLeastSqQR": QRDecomp,
    "DoubleSVDecomp": SVDecomp,
    "DoubleSymEig": SymEig,
    "T3dDblPoint": Components,
    "T4dDblPoint": HomogeneousPoint,
    "T4dDblVector": Components,
    "vxKilnBase::detail::ColumnProduct": Components,
    "Tscale": Components,
    "Tplane": Plane,
    "Tangle": Angle,
    "Tquaternion": Quaternion,
    "TunitQuaternion": Quaternion,
    "T4dDblMatrix": Matrix4,
    "TgenXformMatrix": Matrix4,
    "TxformMatrix": Transform,
    "TpostXformMatrix": Transform,
    "TboundingBox": Box,
    "TtupleVector": TupleVector,
    "TtupleMatrix": TupleMatrix,
    "TsparseMatrix": SparseMatrix,
    "TnumberSequence": NumberSequence,
    "Tarray": Array,
    "TobjArray": Array,
    "TdoubleArray": Array,
    "TcharPtrArray": Array,
    "T3dDblPointArray": Array,
    "vxKilnBase::detail::TypedArray": Array,
    "vxKilnBase::detail::TypedObjArray": Array,
    "TautoArrayBase": ScratchArray,
    "TdblLinkedListElement": LinkedElement,
    "TrestrictedLinkedList": LinkedList,
    "TdblLinkedList": LinkedList,
    "TgroupDLLists": GroupOfLists,
    "StatusCode": Status,
    "MR_LinkList": LinkList,
    "MR_List": List,
    "MR_AvlNode": AvlNode,
    "MR_Array": PlainArray,
    "MR_Pool": Pool,
    "MR_Filename": FileName,
    "DS_Structure": Structure,
}


def name_of(type_):
    """The name by which a type is found: without parameters of templates."""
    if type_.unqualified().name == "StatusCode":
        return "StatusCode"
    return (type_.strip_typedefs().unqualified().name or "").split("<")[0]


def printer_of(value):
    """The printer of a value of these libraries, or null."""
    if value.type.code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF):
        value = value.referenced_value()
    name = name_of(value.type)
    printer = KILNBASE.get(name) or VX.get(name)
    return printer(value) if printer and is_known(value.type.strip_typedefs()) else None


def is_known(type_):
    """False for a class with virtual functions while the symbols of its library are missing."""
    return type_.code != gdb.TYPE_CODE_STRUCT or len(type_.fields()) > 0


class Printers(gdb.printing.PrettyPrinter):
    """The printers of one library, each of which can be disabled by the name of its type."""

    def __init__(self, library, table):
        super().__init__(library, [gdb.printing.SubPrettyPrinter(name) for name in sorted(table)])
        self.enabled_by_name = {each.name: each for each in self.subprinters}

    def __call__(self, value):
        type_ = value.type
        if type_.code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF):
            type_ = type_.target()
        subprinter = self.enabled_by_name.get(name_of(type_))
        return printer_of(value) if subprinter is not None and subprinter.enabled else None


class At(gdb.Function):
    """$kiln_at(CONTAINER, I [, "TYPE"]): item I of a list, tree, array or structure, from 0.

CONTAINER is the container or a pointer to it. For lists and trees of the caller's records the
result is the record, for MR_List and DS_Structure the item, for arrays the element: each as a
pointer to TYPE, or to void.

    print *$kiln_at(knots, 2, "Knot")"""

    def invoke(self, container, i, type_name=None):
        if container.type.strip_typedefs().code == gdb.TYPE_CODE_PTR:
            container = container.dereference()
        printer = printer_of(container)
        items = getattr(printer, "data", None) or getattr(printer, "addresses", None)
        if items is None:
            raise gdb.GdbError(f"$kiln_at: {container.type} is no container of items")
        try:
            address = next(itertools.islice(items(), int(i), None), None)
        except DAMAGE as problem:
            raise gdb.GdbError(f"$kiln_at: {problem}") from None
        if address is None:
            raise gdb.GdbError(f"$kiln_at: there is no item {int(i)}")
        name = type_name.string() if type_name is not None else "void"
        return gdb.parse_and_eval(f"({name}*) {address}")  # as the code at hand knows the name


def register(objfile, library):
    """Adds the printers of libvx or libKilnBase: to an object file, or everywhere for null."""
    table = VX if library == "vx" else KILNBASE
    gdb.printing.register_pretty_printer(objfile, Printers(library, table), replace=True)


At("kiln_at")
if __name__ == "__main__":
    register(None, "vx")
    register(None, "KilnBase")

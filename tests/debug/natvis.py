"""Type-checks the expressions of a natvis file with gdb, as Visual Studio is not at hand."""

import re
import xml.etree.ElementTree as ElementTree

import gdb

NAMES_OF_TYPES = {"char", "double", "int", "size_t", "void", "T3dDblPoint"}
# Elements and attributes that hold expressions about the object, and those about a node of it.
OF_OBJECT = {"Item", "ExpandedItem", "Size", "ValuePointer", "HeadPointer", "Exec"}
OF_NODE = {"NextPointer", "LeftPointer", "RightPointer"}
ATTRIBUTES = ("Condition", "InitialValue")


def in_context(expression, context, variables):
    """The expression in terms of the program: members of the object become `context.member`."""
    def replaced(found):
        name = found.group(0)
        if name in NAMES_OF_TYPES:
            return name
        return {"this": f"(&{context})", "$i": "0"}.get(name) or variables.get(
            name, f"{context}.{name}")
    expression = re.sub(r",s8$", "", expression.strip())
    return re.sub(r"(?<![.\w$])(?<!->)[A-Za-z_$]\w*", replaced, expression)


def base_names(type_):
    """The names, without parameters of templates, of a type and its bases."""
    type_ = type_.strip_typedefs()
    if type_.code == gdb.TYPE_CODE_REF:
        type_ = type_.target().strip_typedefs()
    if type_.code != gdb.TYPE_CODE_STRUCT:
        return
    yield (type_.name or "").split("<")[0]
    for field in type_.fields():
        if field.is_base_class:
            yield from base_names(field.type)


class Natvis:
    def __init__(self, path):
        self.types = {}
        for element in ElementTree.parse(path).getroot():
            names = [element, *(each for each in element if each.tag.endswith("AlternativeType"))]
            for each in names:
                self.types[each.get("Name").split("<")[0]] = element
        self.used = set()

    def unused(self):
        return sorted(set(self.types) - self.used)

    def check(self, expression):
        """The complaints about the entries for the type of a value and for the bases of it."""
        names = set(base_names(gdb.parse_and_eval(expression).type)) & set(self.types)
        self.used |= names
        return [complaint for name in names
                for complaint in self.complaints(name, f"({expression})")]

    def complaints(self, name, context):
        for text, of_object in self.expressions(self.types[name], context):
            try:
                gdb.execute(f"whatis {of_object}", to_string=True)
            except gdb.error as problem:
                yield f"natvis: {name}: {text}: {problem}"

    def expressions(self, element, context, variables=None):
        """Pairs of an expression as written and in terms of the program."""
        variables = dict(variables or {})
        node = context
        for each in element:
            tag = each.tag.split("}")[1]
            texts = [each.get(name) for name in ATTRIBUTES if each.get(name)]
            if tag == "DisplayString":
                texts += re.findall(r"\{([^}]*)\}", each.text)
            if tag in OF_OBJECT:
                texts.append(each.text)
            yield from ((text, in_context(text, context, variables)) for text in texts)
            if tag == "HeadPointer":
                node = f"(*({in_context(each.text, context, variables)}))"
            if tag in OF_NODE or tag == "ValueNode":
                yield each.text, in_context(each.text, node, variables)
            if tag == "Variable":
                value = in_context(each.get("InitialValue"), context, variables)
                variables[each.get("Name")] = f"({value})"
            yield from self.expressions(each, context, variables)

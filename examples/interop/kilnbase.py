"""Some plain functions of libKilnBase for Python, by ctypes.

Copy this file and add the functions that you need: the declarations say what the C headers say.
"""

import ctypes
import ctypes.util
import os
import sys
from ctypes import CFUNCTYPE, POINTER, byref, c_char, c_char_p, c_double, c_int, c_int32, c_void_p


# [load]
def load(path=None):
    """The library at a path, or else the one that the system finds."""
    if sys.platform == "win32":
        path = os.path.abspath(path or "libKilnBase-0.1.dll")
        with os.add_dll_directory(os.path.dirname(path)):  # libvx-0.1.dll stands beside it
            return ctypes.CDLL(path)
    return ctypes.CDLL(path or ctypes.util.find_library("KilnBase") or "libKilnBase.so.0.1")


library = load(os.environ.get("KILNBASE_LIBRARY"))
# [load]

# The run-time library whose `free` goes with the `malloc` of libKilnBase.
runtime = ctypes.CDLL("msvcrt.dll" if sys.platform == "win32" else None)


# [declare]
def declare(name, result, *arguments):
    """A function with its types, without which ctypes passes every value as an int."""
    function = getattr(library, name)
    function.restype = result
    function.argtypes = arguments
    return function


class MR_Array(ctypes.Structure):  # the fields of mr_array.h, in the same order
    _fields_ = [
        ("count", c_int32),
        ("elementSize", c_int32),
        ("growth", c_int32),
        ("elements", c_void_p),
    ]


StatusCode = c_int32
MR_NO_ERROR, MR_ITEM_NOT_FOUND = 0, 12

MR_array_new = declare("MR_array_new", POINTER(MR_Array), c_int, c_int, c_int)
MR_array_put = declare("MR_array_put", None, POINTER(MR_Array), c_int, c_void_p)
MR_array_get = declare("MR_array_get", c_void_p, POINTER(MR_Array), c_int)
MR_array_free = declare("MR_array_free", None, POINTER(POINTER(MR_Array)))

get_crv_fit_tolerance = declare("get_crv_fit_tolerance", c_double)
set_crv_fit_tolerance = declare("set_crv_fit_tolerance", None, c_double)
# [declare]

# [callbacks]
DS_Comparator = CFUNCTYPE(c_int, POINTER(c_void_p), POINTER(c_void_p))
DS_WalkFn = CFUNCTYPE(c_int, c_void_p, c_void_p, POINTER(StatusCode))

DS_DLIST = 1
DS_create_type = declare("DS_create_type", c_void_p, c_int, POINTER(StatusCode), c_int, c_char_p)
DS_set_comparator = declare("DS_set_comparator", c_void_p, c_void_p, DS_Comparator,
                            POINTER(StatusCode))
DS_destructor = declare("DS_destructor", c_int, POINTER(c_void_p), c_void_p, c_void_p,
                        POINTER(StatusCode))
Ds_dlist_add = declare("Ds_dlist_add", c_int, c_void_p, c_void_p, POINTER(StatusCode))
Ds_dlist_remove = declare("Ds_dlist_remove", c_void_p, c_void_p, c_void_p, c_void_p, c_void_p,
                          POINTER(StatusCode))
Ds_dlist_walk = declare("Ds_dlist_walk", c_int, c_void_p, DS_WalkFn, c_void_p, c_int, c_int,
                        POINTER(StatusCode))
# [callbacks]


class KilnError(Exception):
    """A status code that is not 0."""

    def __init__(self, code):
        super().__init__(f"status code {code}")
        self.code = code


def check(status):
    if status.value != MR_NO_ERROR:
        raise KilnError(status.value)


# [ownership]
_convertFilename = declare("convertFilename", c_void_p, c_char_p, c_int)
runtime.free.argtypes = [c_void_p]
runtime.free.restype = None


def convert_filename(name, to_forward):
    """`convertFilename` for str. (With the result type c_char_p the address would be lost.)"""
    address = _convertFilename(name.encode(), int(to_forward))
    if not address:
        raise MemoryError
    try:
        return ctypes.string_at(address).decode()
    finally:
        runtime.free(address)
# [ownership]


# [list]
class Names:
    """Names in an order, kept in a doubly linked list of the library."""

    def __init__(self, key=str):
        def compare(a, b):
            left, right = (key(ctypes.string_at(slot[0]).decode()) for slot in (a, b))
            return (left > right) - (left < right)

        self._compare = DS_Comparator(compare)  # the library keeps the address: so must we
        self._texts = {}  # the list borrows its items
        status = StatusCode(MR_NO_ERROR)
        self._list = c_void_p(DS_create_type(DS_DLIST, byref(status), 0, None))
        DS_set_comparator(self._list, self._compare, byref(status))
        check(status)

    def add(self, name):
        text = (c_char * (len(name.encode()) + 1))(*name.encode())
        status = StatusCode(MR_NO_ERROR)
        Ds_dlist_add(self._list, text, byref(status))
        check(status)
        self._texts[name] = text

    def remove(self, name):
        status = StatusCode(MR_NO_ERROR)
        Ds_dlist_remove(self._list, self._texts.get(name), None, None, byref(status))
        check(status)
        del self._texts[name]

    def __iter__(self):
        found = []

        def visit(item, user, status):
            found.append(ctypes.string_at(item).decode())
            return 1

        # A `user` that is not null makes the library pass all three arguments.
        Ds_dlist_walk(self._list, DS_WalkFn(visit), self._list, -1, 0, None)
        return iter(found)

    def close(self):
        DS_destructor(byref(self._list), None, None, None)
        self._texts.clear()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()
# [list]

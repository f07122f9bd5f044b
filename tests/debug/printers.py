"""Run by gdb: compares how it shows the values of a program with a table.

    gdb -batch -x printers.py PROGRAM

The table, expected.txt, has a section for each caller of `stop`. Its lines are `expression = text`,
where "..." stands for any text. Then each value is looked at once more as if its memory were
garbage, and the expressions of the natvis file for its type are type-checked.
"""

import os
import re
import sys

import gdb

sys.path.insert(0, os.path.dirname(__file__))
from natvis import Natvis

failures = []


def sections(path):
    """For each section its pairs of an expression and the text expected for it."""
    found, current = {}, None
    for line in filter(None, map(str.strip, open(path, encoding="utf-8"))):
        if line.startswith("["):
            current = found.setdefault(line.strip("[]"), [])
        elif not line.startswith("#"):
            current.append(line.split(" = ", 1))
    return found


def shown(expression):
    text = gdb.execute(f"print {expression}", to_string=True)
    return re.sub(r"^\$\d+ = ", "", text).strip().replace("\n", " ")


def agree(expected, actual):
    pattern = ".*".join(map(re.escape, expected.split("...")))
    return re.fullmatch(pattern, actual) is not None


def compare(expression, expected):
    try:
        actual = shown(expression)
    except gdb.error as problem:
        actual = f"error: {problem}"
    if not agree(expected, actual):
        failures.append(f"{expression}\n  expected {expected}\n  shown    {actual}")


def look_at_garbage(expression):
    """gdb writes of exceptions in printers; what it writes else does not matter."""
    type_ = gdb.parse_and_eval(expression).type.strip_typedefs()
    if type_.code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_PTR):
        return
    for byte in (0x00, 0x01, 0xA5, 0xFF):
        gdb.set_convenience_variable("garbage", gdb.Value(bytes([byte]) * type_.sizeof, type_))
        try:
            text = shown("$garbage")
        except gdb.error as problem:
            text = f"Python: {problem}"
        if "Python" in text:
            failures.append(f"{expression} as bytes {byte:#x}: {text}")


def main():
    expected = sections(os.path.join(os.path.dirname(__file__), "expected.txt"))
    natvis = Natvis(os.path.join(os.path.dirname(__file__), "../../debug/kilnbase.natvis"))
    for setting in ("pagination off", "width 0", "startup-with-shell off",
                    "disable-randomization off", "print repeats 10"):
        gdb.execute(f"set {setting}")
    gdb.execute("break stop")
    gdb.execute("run", to_string=True)
    while gdb.selected_inferior().pid:
        gdb.execute("up", to_string=True)
        section = re.sub(r"^.*::|\(.*$", "", gdb.selected_frame().name())
        lines = expected.pop(section, [])
        for expression, text in lines:
            compare(expression, text)
        for expression, _ in lines:
            look_at_garbage(expression)
            failures.extend(natvis.check(expression))
        gdb.execute("continue", to_string=True)
    failures.extend(f"the program did not stop in {section}" for section in expected)
    failures.extend(f"natvis: the table has no value of type {name}" for name in natvis.unused())
    print(*failures, sep="\n")
    print(f"{len(failures)} failures")


try:
    main()
except gdb.error as problem:
    failures.append(str(problem))
    print(problem)
sys.stdout.flush()
gdb.execute(f"quit {min(len(failures), 1)}")

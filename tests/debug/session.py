"""Run by gdb: types the session of docs/guide/debugging.md and compares what `print` answers.

Numbers count as equal up to rounding, and addresses as equal.
"""

import os
import re
import sys

import gdb

PAGE = os.path.join(os.path.dirname(__file__), "../../docs/guide/debugging.md")


def session():
    """Pairs of a command and its answer, from the block of the page that starts with a prompt."""
    page = open(PAGE, encoding="utf-8").read()
    block = re.search(r"^```\w*\n(\(gdb\).*?)^```", page, re.S | re.M)
    for part in block.group(1).split("(gdb) ")[1:]:
        command, _, answer = part.partition("\n")
        yield command, answer


def rounded(found):
    value = float(found.group(0))
    return "0" if abs(value) < 1e-12 else f"{value:.6g}"


def normal(text):
    text = re.sub(r"0x[0-9a-f]+", "ADDRESS", " ".join(text.split()))
    return re.sub(r"-?\d+(\.\d+)?(e[-+]?\d+)?", rounded, text)


failures = compared = 0
for setting in ("pagination off", "width 0", "startup-with-shell off", "disable-randomization off"):
    gdb.execute(f"set {setting}")
for command, expected in session():
    try:
        answer = gdb.execute(command, to_string=True)
    except gdb.error as problem:
        answer = str(problem)
    if command.startswith("print"):
        compared += 1
        if normal(answer) != normal(expected):
            failures += 1
            print(f"(gdb) {command}\n  page {expected}\n  gdb  {answer}")
print(f"{compared} answers compared, {failures} differ")
sys.stdout.flush()
gdb.execute(f"quit {int(failures > 0 or compared == 0)}")

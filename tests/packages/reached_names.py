"""Prints a C++ program that names everything a list of exports holds, from qv_rtl.h alone.

Functions and variables by using-declarations, classes by their size. The members of a class come
with it; some of them are private and could not be named.
"""
import re
import sys

NAMESPACES = {"System", "Classes", "Sysutils", "Strhlpr", "Mox", "driver_devmode", "driver_global"}
LOADERS_OWN = {"DllMain"}  # declared to nobody

classes, names = set(), set()
for line in open(sys.argv[1], encoding="ascii"):
    shown = line.rstrip("\n").split("  ", 1)[-1]
    of_class = re.match(r"(?:typeinfo name|typeinfo|vtable) for (.*)", shown)
    path = (of_class[1] if of_class else shown.split("(")[0]).split("::")
    depth = 2 if path[0] in NAMESPACES else 1
    if of_class or len(path) > depth:
        classes.add("::".join(path[:depth]))
    elif path[0] not in LOADERS_OWN:
        names.add("::".join(path))
if len(classes) < 20 or len(names) < 100:
    sys.exit("the list is too short to be one")
print("#include <qv_rtl.h>")
for name in sorted(classes):
    print(f"static_assert(sizeof(::{name}) > 0);")
for number, name in enumerate(sorted(names)):
    print(f"namespace name{number} {{ using ::{name}; }}")

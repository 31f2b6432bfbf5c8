"""Holds the places of the export table equal.

bop/exports.map is the table. The library's symbols, the declarations in include/qzbifun, the definitions in bop, the cases or
tests, and the catalog of the engine each have every name of it, and none that it lacks.

    exports_test.py CHECK SOURCE [NM LIBRARY]

CHECK is map, symbols, declarations, definitions, cases or catalog.
"""

import pathlib
import re
import subprocess
import sys

check = sys.argv[1]
source = pathlib.Path(sys.argv[2])

failures = []


def bare(path):
    text = re.sub(r"/\*.*?\*/", " ", path.read_text(), flags=re.DOTALL)
    return re.sub(r"//[^\n]*|\[\[.*?\]\]", " ", text)  # nor attributes


def code_of(folder, *patterns):
    paths = sorted(path for pattern in patterns for path in (source / folder).rglob(pattern))
    return {path.relative_to(source): bare(path) for path in paths}


def report(names, complaint):
    failures.extend(f"{name}: {complaint}" for name in sorted(names))


export_map = (source / "bop/exports.map").read_text()
listing = re.fullmatch(r"\{\nglobal:\n((?: {4}\w+;\n)*)local:\n {4}\*;\n\};\n", export_map)
if listing is None:
    sys.exit("bop/exports.map: not one name a line between global and local")
listed = re.findall(r"\w+", listing.group(1))
exports = set(listed)

headers = code_of("include/qzbifun", "*.h")
# Batch functions are declared by the type of their form: bop_fn_av bround_av_li_math_dbl;
batch = set()
declared = set()
for text in headers.values():
    text = re.sub(r"\btypedef\b[^;]*;|\bstatic_assert\b[^;]*;", " ", text)
    batch.update(re.findall(r"\bbop_fn_\w+\s+(\w+)\s*;", text))
    declared.update(re.findall(r"\b(\w+)\s*\([^(){}]*\)\s*;", text))
declared |= batch


def check_map():
    report({name for name in listed if listed.count(name) > 1}, "stands twice")
    if listed != sorted(listed):
        out_of_order = [b for a, b in zip(listed, listed[1:]) if a > b]
        report(out_of_order, "out of order")


def check_symbols():
    nm, library = sys.argv[3:5]
    output = subprocess.run([nm, "-D", "--defined-only", library], check=True, capture_output=True, text=True).stdout
    symbols = {line.split()[-1].split("@")[0] for line in output.splitlines()}
    report(exports - symbols, "not in the library")
    report(symbols - exports, "in the library, and not in bop/exports.map")


def check_declarations():
    report(exports - declared, "not declared in include/qzbifun")
    report(declared - exports, "declared in include/qzbifun, and not in bop/exports.map")


def check_definitions():
    places = {}
    for path, text in code_of("bop", "*.cpp").items():
        text = re.sub(r"^[ \t]*#.*(?:\\\n.*)*$", "", text, flags=re.MULTILINE)
        names = re.findall(r"\bBIFUN_EXPORT\w*\s*\(\s*(\w+)", text)
        names += re.findall(r"(?:\bBIFUN_EXPORT\b|\bextern \"C\")[^;{}()\"]*?\b(\w+)\s*\([^{};]*\)\s*\{", text)
        for name in names:
            places.setdefault(name, []).append(str(path))
    report(exports - places.keys(), "defined in no file of bop")
    report(places.keys() - exports, "defined in bop as an export, and not in bop/exports.map")
    for name, paths in sorted(places.items()):
        if len(paths) > 1:
            failures.append(f"{name}: defined in {', '.join(paths)}")


def check_cases():
    in_cases = set()
    for path in (source / "tests/cases").glob("*.case"):
        for line in path.read_text().splitlines():
            if re.match(r"\s*(function|forms)\b", line):
                in_cases.update(re.findall(r"\b[av]+=(\w+)", line.split("#")[0]))
    in_tests = set()
    for text in code_of("tests", "*.cpp").values():
        in_tests.update(re.findall(r"\w+", text))
    report((exports & batch) - in_cases, "in no table of cases")
    report(exports - batch - in_tests, "in no test")
    report(in_cases - exports, "in a table of cases, and not in bop/exports.map")


def check_catalog():
    in_catalog = set()
    for text in code_of("engine/catalog", "*.cpp").values():
        in_catalog.update(re.findall(r'"(\w+)"', text))
    report((exports & batch) - in_catalog, "not in engine/catalog")


checks = {
    "map": check_map,
    "symbols": check_symbols,
    "declarations": check_declarations,
    "definitions": check_definitions,
    "cases": check_cases,
    "catalog": check_catalog,
}
if not exports:
    failures.append("bop/exports.map: no names")
checks[check]()
print("\n".join(failures) or f"{len(exports)} names")
sys.exit(bool(failures))

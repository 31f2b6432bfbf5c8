#!/usr/bin/env python3
"""Holds the loops of bop/vectorised.list against what g++ reports: check-vectorised.py BUILD_FOLDER

Each source of the list is compiled once more with the flags of the build, with the compiler's record of its optimisations
beside it. A line of the list passes when, for each width, at least as many different loops of the named function or worker were
vectorised with vectors of that many bytes.
"""

import gzip
import json
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

root = pathlib.Path(__file__).resolve().parent.parent


def read_list(path):
    for line in path.read_text().splitlines():
        fields = line.split("#")[0].split()
        if fields:
            source, name, *widths = fields
            yield source, name, [tuple(map(int, width.split(":"))) for width in widths]


def optimisation_records(command, source):
    """The compiler's records of one source, flattened."""
    with tempfile.TemporaryDirectory() as folder:
        arguments = shlex.split(command["command"])
        arguments[arguments.index("-o") + 1] = f"{folder}/out.o"
        if pathlib.Path(arguments[0]).name == "ccache":
            arguments = arguments[1:]
        subprocess.run([*arguments, "-fsave-optimization-record"], cwd=command["directory"], check=True)
        (record,) = pathlib.Path(folder).glob("*.opt-record.json.gz")
        pending = json.loads(gzip.decompress(record.read_bytes()))[2]
    while pending:
        entry = pending.pop()
        pending.extend(entry.get("children", []))
        yield entry


def vectorised_loops(command, source):
    """(names of the function and of those inlined around the loop, vector bytes, place), demangled."""
    loops = []
    for entry in optimisation_records(command, source):
        message = "".join(part for part in entry.get("message", []) if isinstance(part, str))
        width = re.search(r"loop vectorized using (\d+) byte vectors", message)
        if width and entry.get("kind") == "success":
            chain = [entry.get("function", ""), *(step["fndecl"] for step in entry.get("inlining_chain", []))]
            place = (entry["location"]["file"], entry["location"]["line"])
            loops.append(("\t".join(chain), int(width[1]), place))
    names = "\n".join(names for names, _, _ in loops)
    demangled = subprocess.run(["c++filt"], input=names, capture_output=True, text=True, check=True).stdout.splitlines()
    return [(name, width, place) for name, (_, width, place) in zip(demangled, loops)]


def main():
    build = pathlib.Path(sys.argv[1])
    commands = {entry["file"]: entry for entry in json.loads((build / "compile_commands.json").read_text())}
    loops = {}
    failures = 0
    entries = list(read_list(root / "bop/vectorised.list"))
    for source, name, widths in entries:
        if source not in loops:
            loops[source] = vectorised_loops(commands[str(root / source)], source)
        word = re.compile(rf"(?<![\w]){re.escape(name)}(?![\w])")
        for width, wanted in widths:
            found = {place for names, bytes_, place in loops[source] if bytes_ == width and word.search(names)}
            if len(found) < wanted:
                failures += 1
                print(f"{source}: {name}: {len(found)} of {wanted} loops with {width}-byte vectors: {sorted(found)}")
    print(f"{len(entries)} lines of bop/vectorised.list, {failures} failures")
    return 1 if failures or not entries else 0


if __name__ == "__main__":
    sys.exit(main())

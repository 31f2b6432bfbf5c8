"""Every fenced block that a document marks as a file of the tree equals that file.

The mark is a comment on the line above the block: <!-- examples/embed.c -->
"""

import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])
quotation = re.compile(r"^<!-- ([\w./-]+) -->\n```\w*\n(.*?)^```$", re.MULTILINE | re.DOTALL)

quoted = set()
failures = []
for document in sorted([*root.glob("*.md"), *root.glob("docs/**/*.md")]):
    for name, text in quotation.findall(document.read_text()):
        quoted.add(name)
        if text != (root / name).read_text():
            failures.append(f"{document.relative_to(root)}: the quotation of {name} differs from the file")

for name in ("examples/embed.c", "examples/embed.out", "examples/cities.out", "examples/proverbs.out"):
    if name not in quoted:
        failures.append(f"no document quotes {name}")

print("\n".join(failures) or f"{len(quoted)} files quoted as they are")
sys.exit(bool(failures))

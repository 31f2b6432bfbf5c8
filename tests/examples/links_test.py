"""Every relative link of a document leads to a file or folder of the tree, and every #fragment to a heading."""

import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])
link = re.compile(r"\[[^\]]*\]\(([^)\s]+)\)")


def headings(document):
    text = re.sub(r"^```.*?^```$", "", document.read_text(), flags=re.MULTILINE | re.DOTALL)
    for title in re.findall(r"^#+ (.+)$", text, flags=re.MULTILINE):
        yield re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-")


links = 0
failures = []
for document in sorted([*root.glob("*.md"), *root.glob("docs/**/*.md")]):
    text = re.sub(r"^```.*?^```$", "", document.read_text(), flags=re.MULTILINE | re.DOTALL)
    for target in link.findall(re.sub(r"`[^`\n]*`", "", text)):
        if re.match(r"\w+:", target):
            continue
        links += 1
        path, _, fragment = target.partition("#")
        aim = (document.parent / path).resolve() if path else document
        if not aim.exists():
            failures.append(f"{document.relative_to(root)}: {target} leads nowhere")
        elif fragment and fragment not in headings(aim):
            failures.append(f"{document.relative_to(root)}: {target} names no heading")

print("\n".join(failures) or f"{links} links")
sys.exit(bool(failures) or links == 0)

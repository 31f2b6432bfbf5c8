"""Runs a program and compares what it prints with a file: output_test.py EXPECTED PROGRAM [ARGUMENT...]"""

import difflib
import pathlib
import subprocess
import sys

expected = pathlib.Path(sys.argv[1]).read_text()
run = subprocess.run(sys.argv[2:], capture_output=True, text=True, check=False)
sys.stdout.writelines(
    difflib.unified_diff(expected.splitlines(True), run.stdout.splitlines(True), "expected", "printed")
)
sys.stderr.write(run.stderr)
sys.exit(0 if run.returncode == 0 and run.stdout == expected else f"exit status {run.returncode}")

#!/usr/bin/env python3
"""Runs benchmark programs and prints what a row costs at best.

usage: bench-minimum.py [--filter REGEX] [--repetitions N] [--min-time SECONDS] PROGRAM...

Each benchmark runs several times; the smallest time counts, since whatever else the machine does only ever adds to it. Printed
are nanoseconds a row (items of the benchmark) and gigabytes a second where the benchmark tells its bytes. Benchmarks of one
program stand beside their floors, BM_copy_* and BM_loop_*, measured in the same run.
"""
import argparse
import json
import subprocess
import sys


def run(program, arguments):
    command = [
        program,
        f"--benchmark_filter={arguments.filter}",
        f"--benchmark_repetitions={arguments.repetitions}",
        f"--benchmark_min_time={arguments.min_time}",
        "--benchmark_format=json",
    ]
    answer = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True, text=True).stdout
    return json.loads(answer)["benchmarks"] if answer.strip() else []


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--filter", default=".")
    parser.add_argument("--repetitions", type=int, default=5)
    parser.add_argument("--min-time", default="0.03")
    parser.add_argument("program", nargs="+")
    arguments = parser.parse_args()
    for program in arguments.program:
        best = {}
        for one in run(program, arguments):
            if one.get("run_type") == "aggregate" or "error_occurred" in one:
                continue
            rate = one.get("items_per_second", 0)
            name = one["run_name"]
            if rate and (name not in best or rate > best[name][0]):
                best[name] = (rate, one.get("bytes_per_second", 0))
        for name, (rate, bytes_rate) in best.items():
            gigabytes = f"{bytes_rate / 1e9:8.1f} GB/s" if bytes_rate else ""
            print(f"{name:70s} {1e9 / rate:10.3f} ns/row {gigabytes}")
        sys.stdout.flush()


if __name__ == "__main__":
    main()

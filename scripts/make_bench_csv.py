#!/usr/bin/env python3
"""Writes the CSV file by which the throughput of qzeval is measured: prices with two fraction digits and whole numbers.

usage: make_bench_csv.py [rows [seed]] > FILE

The same rows and seed give the same bytes. The default is 5 million rows, about 95 MB.
"""

import random
import sys


def main():
    rows = int(sys.argv[1]) if len(sys.argv) > 1 else 5_000_000
    generator = random.Random(int(sys.argv[2]) if len(sys.argv) > 2 else 1)
    write = sys.stdout.write
    write("price,n\n")
    chunk = []
    for row in range(rows):
        cents = generator.randrange(-100_000_00, 100_000_00)
        sign = "-" if cents < 0 else ""
        # Numbers of one to twelve digits, as many of each length.
        n = generator.randrange(10 ** generator.randrange(1, 13))
        chunk.append(f"{sign}{abs(cents) // 100}.{abs(cents) % 100:02d},{-n if row % 3 == 0 else n}\n")
        if len(chunk) == 65536:
            write("".join(chunk))
            chunk.clear()
    write("".join(chunk))


if __name__ == "__main__":
    main()

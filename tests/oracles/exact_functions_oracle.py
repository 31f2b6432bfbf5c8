"""Checks bitand, to_char, round and trunc of decimals against Python's integers and its decimal module.

Usage: exact_functions_oracle.py PATH_OF_EXACT_FUNCTIONS_TRACE BATCHES [SEED]

Runs exact_functions_trace, works out every call again and compares the texts. Exits with 1 at the first line that differs; the
seed is printed.
"""

import subprocess
import sys
import time
from decimal import MAX_EMAX, MIN_EMIN, ROUND_DOWN, ROUND_HALF_UP, Context, Decimal, setcontext

setcontext(Context(prec=200, Emax=MAX_EMAX, Emin=MIN_EMIN))


def plain(value):
    """The digits of a number without an exponent; a zero has no sign and no fraction."""
    return format(value, "f") if value else "0"


def at_places(text, places, rounding):
    value = Decimal(text)
    if places >= -value.as_tuple().exponent:
        return plain(value)
    cut = value.quantize(Decimal(1).scaleb(-places), rounding=rounding)
    return plain(cut)


def bitand(x, y):
    # A number that equals a constant beyond 64 bits is answered as it stands.
    constant = int(Decimal(y))
    if not 0 <= constant < 2**64 and Decimal(x) == constant:
        return plain(Decimal(x))
    return str(int(Decimal(x)) & constant)


EXPECTED = {
    "bitand": bitand,
    "to_char": lambda x: plain(Decimal(x)),
    "round": lambda x, places: at_places(x, int(places), ROUND_HALF_UP),
    "trunc": lambda x, places: at_places(x, int(places), ROUND_DOWN),
}


def main():
    seed = sys.argv[3] if len(sys.argv) > 3 else str(time.time_ns() % 2**32)
    print("seed:", seed)
    trace = subprocess.run([sys.argv[1], sys.argv[2], seed], stdout=subprocess.PIPE, check=True, text=True)
    lines = trace.stdout.splitlines()
    for line in lines:
        function, *arguments, result = line.split(" ")
        expected = EXPECTED[function](*arguments)
        if result != expected:
            sys.exit("%s\nexpected %s" % (line, expected))
    if len(lines) < 1024 * int(sys.argv[2]):
        sys.exit("only %d lines" % len(lines))
    print(len(lines), "calls agree")


if __name__ == "__main__":
    main()

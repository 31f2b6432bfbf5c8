"""Checks the decimal services against Python's decimal module.

Usage: decimal_oracle.py PATH_OF_DECIMAL_TRACE COUNT [SEED]

Runs decimal_trace, works out every operation again in exact arithmetic, builds the 30 bytes of the expected record from the
rules of the form, and compares. Exits with 1 at the first line that differs, and prints the seed.
"""

import struct
import subprocess
import sys
import time
from decimal import MAX_EMAX, MIN_EMIN, ROUND_DOWN, ROUND_HALF_UP, Context, Decimal, Inexact, setcontext
from fractions import Fraction

EXACT = Context(prec=1200, Emax=MAX_EMAX, Emin=MIN_EMIN, traps=[Inexact])
LOOSE = Context(prec=1200, Emax=MAX_EMAX, Emin=MIN_EMIN, traps=[])
PAIRS = 22
OVERFLOW = -6102
INVALID_ARGUMENT = -6803
LIMIT = Decimal("1E126")
SMALLEST = Decimal("1E-130")
KEPT_SCALE = 127
ZERO = bytes([128, 1, 0, 0, 0, 0, 1, 128] + [0] * 22)
TWO_DIGITS = ["%02d" % i for i in range(100)]


def read(text):
    """The value and scale of a record printed in hexadecimal."""
    b = bytes.fromhex(text)
    if b[0] == 128:
        assert b == ZERO, "zero has one form"
        return Decimal(0), 0
    n = b[6] - 1
    digits = "".join([TWO_DIGITS[p - 1] for p in b[8 : 8 + n]])
    return Decimal("%s%sE%d" % ("-" if b[0] == 62 else "", digits, 2 * (b[7] - 192 - n))), b[2]


def at_exponent(value, exponent, rounding=ROUND_HALF_UP):
    return value.quantize(Decimal((0, (1,), exponent)), rounding=rounding, context=LOOSE)


def record(value, scale):
    """Code and hexadecimal record of an exact value with the scale that an operation's rule gives it."""
    if value:
        lowest = 2 * (value.adjusted() // 2 + 1 - PAIRS)
        if value.as_tuple().exponent < lowest:
            value = at_exponent(value, lowest)
        if abs(value) < SMALLEST:
            value = at_exponent(value, -130)
    if not value:
        return 0, ZERO.hex()
    if abs(value) >= LIMIT:
        return OVERFLOW, ZERO.hex()
    sign, digits, exponent = value.as_tuple()
    digits = "".join(map(str, digits)).strip("0") if len(digits) > 1 else str(digits[0])
    top = value.adjusted()
    needed = max(0, len(digits) - 1 - top)
    scale = max(needed, min(scale, KEPT_SCALE))
    int_pairs = top // 2 + 1
    if top % 2 == 0:
        digits = "0" + digits
    if len(digits) % 2:
        digits += "0"
    pairs = [int(digits[i : i + 2]) + 1 for i in range(0, len(digits), 2)]
    head = struct.pack(
        "<BBBBhBB", 62 if sign else 193, max(0, top + 1) + scale, scale, 0, int_pairs - 1, len(pairs) + 1, int_pairs + 192
    )
    return 0, (head + bytes(pairs) + bytes(PAIRS - len(pairs))).hex()


def quotient(x, y):
    """x / y to far more digits than a record holds; the last one is odd when the quotient goes on, so no tie is made up."""
    shift = 60 + y.adjusted() - x.adjusted() if x else 0
    ratio = Fraction(x) / Fraction(y)
    scaled = ratio * Fraction(10) ** shift
    whole = abs(scaled.numerator) // scaled.denominator
    text = str(whole) + ("1" if whole * scaled.denominator != abs(scaled.numerator) else "0")
    return Decimal("%s%sE%d" % ("-" if ratio < 0 else "", text, -shift - 1))


def whole_part(x):
    return int(x)


def as_signed(n):
    return n - (1 << 64) if n >= 1 << 63 else n


def as_double(bits):
    return struct.unpack("<d", struct.pack("<Q", int(bits, 16)))[0]


def check_arithmetic(name, f):
    (x, xs), (y, ys) = read(f[0]), read(f[1])
    if name == "add":
        want = record(EXACT.add(x, y), max(xs, ys))
    elif name == "sub":
        want = record(EXACT.subtract(x, y), max(xs, ys))
    elif name == "mul":
        want = record(EXACT.multiply(x, y), xs + ys)
    elif not y:
        want = INVALID_ARGUMENT, ZERO.hex()
    else:
        want = record(quotient(x, y), 0)
    return (int(f[2]), f[3]), want


def check_cmp(_, f):
    x, y = read(f[0])[0], read(f[1])[0]
    got = int(f[2])
    return (got > 0) - (got < 0), (x > y) - (x < y)


def rounded(text, n, rounding):
    x, scale = read(text)
    if n < -1000:
        value = Decimal(0)
    elif n > 1000:
        value = x
    elif x and x.as_tuple().exponent < -n:
        value = at_exponent(x, -n, rounding)
    else:
        value = x
    return record(value, min(scale, max(n, 0)))


def check_round(_, f):
    return (int(f[2]), f[3]), rounded(f[0], int(f[1]), ROUND_HALF_UP)


def check_trunc(_, f):
    return (0, f[2]), rounded(f[0], int(f[1]), ROUND_DOWN)


def check_outwards(_, f):
    x, scale = read(f[0])
    whole = Decimal(whole_part(x))
    ceil = record(whole + 1 if x > 0 else whole, 0)[1] if scale else f[0]
    floor = record(whole - 1 if x < 0 else whole, 0)[1] if scale else f[0]
    return (f[1], f[2]), (ceil, floor)


def check_in(_, f):
    scale = max(0, -Decimal(f[0]).as_tuple().exponent)
    return (int(f[1]), f[2]), record(Decimal(f[0]), scale)


def check_out(_, f):
    x, scale = read(f[0])
    text = format(at_exponent(x, -scale, ROUND_DOWN) if x else x, "f")
    sign = "-" if text[0] == "-" else ""
    whole, point, fraction = text.lstrip("-").partition(".")
    text = sign + whole.rjust(int(f[1]), "0") + point + fraction
    return (int(f[2]), int(f[3]), f[4]), (0, len(text), text)


def check_int(_, f):
    natural, scale = int(f[0]), int(f[1])
    signed = Decimal(as_signed(natural))
    want = [
        record(signed, 0)[1],
        record(signed, scale)[1],
        record(Decimal(natural), 0)[1],
        record(signed.scaleb(-scale, context=EXACT), scale)[1],
    ]
    return f[2:], want


def check_get(_, f):
    whole = whole_part(read(f[0])[0])
    signed = (0, whole) if -(1 << 63) <= whole < 1 << 63 else (OVERFLOW, 0)
    natural = (0, whole) if 0 <= whole < 1 << 64 else (OVERFLOW, 0)
    part = Decimal(-(abs(whole) // 16) if whole < 0 else whole // 16)
    if part:
        lowest = 2 * (part.adjusted() // 2 + 1 - PAIRS)
        if lowest > 0:
            part = at_exponent(part, lowest, ROUND_DOWN)
    want = (*signed, *natural, int(natural[0] == 0), record(part, 0)[1], abs(whole) % 16)
    got = (int(f[1]), int(f[2]), int(f[3]), int(f[4]), int(f[5]), f[6], int(f[7]))
    return got, want


def check_fromdouble(_, f):
    x = as_double(f[0])
    if x != x or x in (float("inf"), float("-inf")):
        want = OVERFLOW, ZERO.hex()
    else:
        want = record(Decimal(repr(x)), 0)
    return (int(f[1]), f[2]), want


def check_getdouble(_, f):
    return (int(f[1]), as_double(f[2])), (0, float(read(f[0])[0]))


def check_frombinary(_, f):
    magnitude = sum(int(w) << 32 * i for i, w in enumerate(f[1:6]))
    return (int(f[6]), f[7]), record(Decimal(-magnitude if f[0] == "1" else magnitude), 0)


def check_getbinary(_, f):
    whole = abs(whole_part(read(f[0])[0]))
    code, whole = (0, whole) if whole < 1 << 160 else (OVERFLOW, 0)
    return [int(w) for w in f[1:7]], [code] + [whole >> 32 * i & 0xFFFFFFFF for i in range(5)]


CHECKS = {
    "add": check_arithmetic,
    "sub": check_arithmetic,
    "mul": check_arithmetic,
    "div": check_arithmetic,
    "cmp": check_cmp,
    "round": check_round,
    "trunc": check_trunc,
    "outwards": check_outwards,
    "in": check_in,
    "out": check_out,
    "int": check_int,
    "get": check_get,
    "fromdouble": check_fromdouble,
    "getdouble": check_getdouble,
    "frombinary": check_frombinary,
    "getbinary": check_getbinary,
}


def main():
    program, count = sys.argv[1], int(sys.argv[2])
    seed = sys.argv[3] if len(sys.argv) > 3 else str(time.time_ns())
    print("seed", seed)
    setcontext(EXACT)
    lines = 0
    seen = dict.fromkeys(CHECKS, 0)
    with subprocess.Popen([program, str(count), seed], stdout=subprocess.PIPE, text=True) as trace:
        for line in trace.stdout:
            name, *fields = line.split()
            got, want = CHECKS[name](name, fields)
            if got != want:
                print("line:", line, "got: ", got, "\nwant:", want)
                trace.kill()
                return 1
            lines += 1
            seen[name] += 1
    if trace.returncode != 0 or lines < count or 0 in seen.values():
        print("the trace ended early:", trace.returncode, lines, seen)
        return 1
    print(lines, "operations agree:", seen)
    return 0


if __name__ == "__main__":
    sys.exit(main())

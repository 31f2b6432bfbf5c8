#!/usr/bin/env python3
"""Doubles with their texts, by Python's own conversions.

usage: number_text_oracle.py write|read SEED COUNT

write: lines "BITS TEXT", BITS the double in hexadecimal, TEXT the shortest text that reads back as it.
read:  lines "TEXT BITS", TEXT a decimal number, BITS the double nearest to it, or "overflow".
"""
import random
import struct
import sys
from fractions import Fraction


def bits_of(value):
    return struct.pack(">d", value).hex()


def double_of(bits):
    return struct.unpack(">d", struct.pack(">Q", bits))[0]


def random_double(rng):
    kind = rng.randrange(8)
    if kind == 0:
        value = double_of(rng.getrandbits(64))
        return value if value - value == 0 else 0.0
    if kind == 1:  # subnormal
        return double_of(rng.getrandbits(rng.randint(1, 52)) | rng.getrandbits(1) << 63)
    if kind == 2:  # a power of two, whose lower neighbour is nearer
        return 2.0 ** rng.randint(-1074, 1023)
    if kind == 3:  # a neighbour of a power of ten
        bits = struct.unpack(">Q", struct.pack(">d", float("1e%d" % rng.randint(-323, 308))))[0]
        return double_of(max(0, bits + rng.randint(-2, 2)))
    if kind == 4:  # an integer
        return float(rng.getrandbits(rng.randint(1, 70)))
    if kind == 5:  # few decimals
        return round(rng.uniform(-1e6, 1e6), rng.randint(0, 6))
    if kind == 6:
        return rng.uniform(-1e6, 1e6)
    return rng.choice([-1, 1]) * float("%de%d" % (rng.randint(1, 10 ** rng.randint(1, 17)), rng.randint(-30, 20)))


def shortest_text(value):
    text = repr(value).replace("e", "E")
    return text[:-2] if text.endswith(".0") else text


def exact_text(number):
    """The digits of a fraction whose denominator is a power of two."""
    shift = number.denominator.bit_length() - 1
    digits = str(number.numerator * 5**shift)
    if shift == 0:
        return digits
    digits = digits.rjust(shift + 1, "0")
    return digits[:-shift] + "." + digits[-shift:]


def halfway_text(rng):
    """The number between two neighbouring doubles, or one digit above or below it."""
    exponent = rng.randint(1, 2045)
    lower = double_of(exponent << 52 | rng.getrandbits(52))
    upper = double_of((exponent << 52 | 0) + (struct.unpack(">Q", struct.pack(">d", lower))[0] & (1 << 52) - 1) + 1)
    text = exact_text((Fraction(lower) + Fraction(upper)) / 2)
    kind = rng.randrange(3)
    if kind == 0:
        return text
    if "." not in text:
        text += "."
    return text + "0" * rng.randint(0, 5) + "1" if kind == 1 else text[:-1]


def random_text(rng):
    kind = rng.randrange(6)
    if kind == 0:
        return halfway_text(rng)
    if kind == 1:
        return repr(random_double(rng))
    digits = "".join(rng.choice("0123456789") for _ in range(rng.randint(1, 25 if kind < 5 else 800)))
    text = rng.choice(["", "-", "+"]) + rng.choice(["", "0", "000"]) + digits
    if rng.random() < 0.7:
        point = rng.randint(len(text) - len(digits), len(text))
        text = text[:point] + "." + text[point:]
    if rng.random() < 0.5:
        text += rng.choice("eE") + rng.choice(["", "+", "-"]) + str(rng.randint(0, 20 if rng.random() < 0.5 else 350))
    return text


def main():
    mode, seed, count = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
    rng = random.Random(seed)
    for _ in range(count):
        if mode == "write":
            value = random_double(rng)
            text = shortest_text(value)
            print(bits_of(value), text)
        else:
            text = random_text(rng)
            value = float(text)
            print(text, "overflow" if value - value != 0 else bits_of(value))


main()

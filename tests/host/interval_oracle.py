"""Decimal counts of a unit as intervals, by Python's decimal: one line for each question, read by interval_test.cpp.

usage: interval_oracle.py SEED COUNT

Each line: the number, a unit, then the fields of the interval, day hour minute second microsecond or year month; or the word
range.
"""

import random
import sys
from decimal import Decimal, ROUND_HALF_UP, getcontext

getcontext().prec = 120
MICROS = {"DAY": 86400 * 10**6, "HOUR": 3600 * 10**6, "MINUTE": 60 * 10**6, "SECOND": 10**6}
MONTHS = {"YEAR": 12, "MONTH": 1}


def rounded(number):
    return int(number.to_integral_value(rounding=ROUND_HALF_UP))


def fields(number, unit):
    negative = number < 0
    if unit in MONTHS:
        total = rounded(abs(number) * MONTHS[unit])
        parts = [total // 12, total % 12]
    else:
        total = rounded(abs(number) * MICROS[unit])
        seconds, micros = divmod(total, 10**6)
        parts = [seconds // 86400, seconds // 3600 % 24, seconds // 60 % 60, seconds % 60, micros]
    if parts[0] > 999999999:
        return "range"
    return " ".join(str(-part if negative else part) for part in parts)


def main():
    source = random.Random(int(sys.argv[1]))
    for _ in range(int(sys.argv[2])):
        unit = source.choice(list(MICROS) + list(MONTHS))
        digits = source.randrange(1, 39)
        scale = source.randrange(0, digits + 12)
        text = str(source.randrange(10**digits))
        if source.randrange(4) == 0:
            text = text[: len(text) // 2] + "5" + "0" * (len(text) // 2)  # ties
        number = Decimal(text).scaleb(-scale)
        if source.randrange(2):
            number = -number
        print(format(number, "f"), unit, fields(number, unit))


main()

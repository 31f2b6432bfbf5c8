#!/usr/bin/env python3
"""Random number formats, numbers and their texts, by Python's decimal arithmetic.

usage: number_format_oracle.py SEED COUNT

Lines of five fields between tabs: number, format, NLS parameters (may be empty), the text that the format writes, and the
number that it reads back from that text, or "none" for a field of '#'.

The format is not parsed here: it is put together along with what is expected of it.
"""
import random
import sys
from decimal import ROUND_HALF_UP, Context, Decimal, setcontext

setcontext(Context(prec=400, rounding=ROUND_HALF_UP, Emin=-9999, Emax=9999))

MAX_FORMAT = 75


def random_number(rng):
    kind = rng.randrange(10)
    if kind == 0:
        return Decimal(0)
    digits = rng.randint(1, 44 if kind == 1 else rng.choice([3, 6, 12, 20, 43]))
    number = rng.randint(1, 10**digits - 1)
    if number > 10**43 and number % 10**42:  # 44 digits only where all pairs are full, with an even exponent
        exponent = 2 * rng.randint(-40, 5)
    elif kind == 2:
        exponent = rng.randint(-100, 80)
    else:
        exponent = -rng.randint(0, digits + 2)
    if rng.random() < 0.2:  # ties and carries
        number = int(rng.choice(["9", "99", "5", "15", "45", "995", "9995", "49"]) * rng.randint(1, 4))
        exponent = -rng.randint(0, len(str(number)) + 1)
    return Decimal(number).scaleb(exponent) * rng.choice([1, 1, -1])


class Locale:
    def __init__(self, rng):
        self.point, self.group = ".", ","
        self.symbols = {"L": "$", "U": "$", "C": "USD", "$": "$"}
        self.parameters = ""
        if rng.random() < 0.5:
            return
        words = []
        if rng.random() < 0.7:
            self.point, self.group = rng.choice([",.", ", ", ".'", ";:", "._", "*/"])
            words.append("NLS_NUMERIC_CHARACTERS='%s'" % (self.point + self.group).replace("'", "''"))
        if rng.random() < 0.5 or not words:
            self.symbols["L"] = rng.choice(["EUR", "kr", "€", "Rs.", "AusDollars", "F's"])
            words.append("nls_currency = '%s'" % self.symbols["L"].replace("'", "''"))
        if rng.random() < 0.3:
            self.symbols["C"] = rng.choice(["JPY", "CHF"])
            words.append("NLS_ISO_CURRENCY=" + self.symbols["C"].lower())
        if rng.random() < 0.3:
            self.symbols["U"] = rng.choice(["£", "x"])
            words.append("NLS_DUAL_CURRENCY=" + self.symbols["U"])
        self.parameters = "  ".join(words)


def rounded(number, places):
    return number.quantize(Decimal(1).scaleb(-places), ROUND_HALF_UP)


def currency_width(element):
    return {"": 0, "$": 1, "C": 7}.get(element, 10)


def frame(number_text, negative, sign, front, behind, fill_mode, width):
    """Puts sign and currency around the digits, and blanks in front of it all."""
    text = front + number_text + behind
    if sign == "S<":
        text = ("-" if negative else "+") + text
    elif sign == "S>":
        text += "-" if negative else "+"
    elif sign == "MI":
        text += "-" if negative else ("" if fill_mode else " ")
    elif sign == "PR":
        text = "<" + text + ">" if negative else text + ("" if fill_mode else " ")
    elif negative:
        text = "-" + text
    return text if fill_mode else " " * (width - len(text.encode())) + text


def random_case(rng, text):
    return text if rng.random() < 0.5 else "".join(rng.choice([c, c.lower()]) for c in text)


def picture(rng, number, locale):
    literal = rng.random() < 0.5
    point, group = (".", ",") if literal else (locale.point, locale.group)
    fill_mode, blank = rng.random() < 0.3, rng.random() < 0.15
    sign = rng.choice(["", "", "", "S<", "S>", "MI", "PR"])
    currency = rng.choice(["", "", "", "$", "L", "C", "U"])
    room = MAX_FORMAT - 20
    whole = rng.randint(0, rng.choice([3, 6, 12, 45]))
    shift = rng.randint(0, 5) if rng.random() < 0.1 else 0
    fraction = 0 if shift else rng.choice([0, 0, 1, 2, 3, rng.randint(0, room - whole)])
    fraction = min(fraction, room - whole - shift)
    if whole + shift + fraction == 0:
        whole = 1
    digits = [rng.choice("999990") for _ in range(whole)]
    # positions in front of which a separator stands, counted from the left
    groups = [i for i in range(1, whole) if rng.random() < rng.choice([0, 0.3])][: room - whole - shift - fraction]
    shifted = [rng.choice("99990") for _ in range(shift)]
    behind_point = [rng.choice("9990") for _ in range(fraction)]
    has_point = fraction > 0 or (not shift and rng.random() < 0.1)

    body = "".join(("," if literal else "G") * (i in groups) + d for i, d in enumerate(digits))
    if shift:
        body += "V" + "".join(shifted)
    if has_point:
        body += "." if literal else "D"
    body += "".join(behind_point)
    at_front = currency == "$" or rng.random() < 0.7
    if currency == "$":
        at = rng.randint(0, len(body))
        while 0 < at and body[at - 1] in ",G":
            at -= 1
        body = body[:at] + "$" + body[at:]
    elif currency:
        body = currency + body if at_front else body + currency
    text = ("FM" if fill_mode else "") + ("B" if blank else "") + ("S" if sign == "S<" else "") + body
    text += {"S>": "S", "MI": "MI", "PR": "PR"}.get(sign, "")

    all_digits = digits + shifted
    width = (2 if sign == "PR" else 1) + currency_width(currency) + len(all_digits) + len(groups) + has_point + fraction
    symbol = locale.symbols[currency] if currency else ""
    value = rounded(abs(number).scaleb(shift), fraction)
    plain = format(value, "f")
    integer, _, decimals = plain.partition(".")
    integer = integer.lstrip("0")
    back = value.scaleb(-shift) * (-1 if number < 0 else 1)
    if len(integer) > len(all_digits):
        return text, "#" * width, None
    if blank and value == 0:
        return text, "" if fill_mode else " " * width, back
    if fill_mode:
        kept = max([i + 1 for i, d in enumerate(behind_point) if d == "0"], default=0)
        decimals = decimals[:kept] + decimals[kept:].rstrip("0")
    shown = len(integer)
    if not (blank and shown == 0) and "0" in all_digits:
        shown = max(shown, len(all_digits) - all_digits.index("0"))
    if shown == 0 and decimals == "":
        if all_digits:
            shown = 1
        else:
            decimals = "0"
    integer = integer.rjust(shown, "0")
    first = len(all_digits) - shown
    written = "".join((group if first + i in groups and i > 0 else "") + d for i, d in enumerate(integer))
    if has_point:
        written += point + decimals
    front, behind = (symbol, "") if currency == "$" or at_front else ("", symbol)
    return text, frame(written, number < 0, sign, front, behind, fill_mode, width), back


def scientific(rng, number, locale):
    literal = rng.random() < 0.5
    fill_mode = rng.random() < 0.3
    sign = rng.choice(["", "", "S<", "S>", "MI", "PR"])
    currency = rng.choice(["", "", "$", "C"])
    fraction = rng.choice([0, 1, 3, rng.randint(0, 50)])
    has_point = fraction > 0 or rng.random() < 0.2
    text = ("FM" if fill_mode else "") + ("S" if sign == "S<" else "") + currency
    text += "".join(rng.choice("90") for _ in range(rng.randint(1, 3)))
    text += ("." if literal else "D") * has_point + "".join(rng.choice("90") for _ in range(fraction)) + "EEEE"
    text += {"S>": "S", "MI": "MI", "PR": "PR"}.get(sign, "")
    magnitude, exponent = abs(number), 0
    if magnitude:
        exponent = magnitude.adjusted()
        magnitude = rounded(magnitude.scaleb(-exponent), fraction)
        if magnitude >= 10:
            magnitude, exponent = magnitude / 10, exponent + 1
    mantissa = format(rounded(magnitude, fraction), "f")
    if has_point and "." not in mantissa:
        mantissa += "."
    mantissa = mantissa.replace(".", "." if literal else locale.point)
    written = "%sE%s%02d" % (mantissa, "-" if exponent < 0 else "+", abs(exponent))
    width = (2 if sign == "PR" else 1) + currency_width(currency) + 1 + has_point + fraction + 5
    back = magnitude.scaleb(exponent) * (-1 if number < 0 else 1)
    symbol = locale.symbols[currency] if currency else ""
    return text, frame(written, number < 0, sign, symbol, "", fill_mode, width), back


def shortest(rng, number, locale):
    element = rng.choice(["TM", "TM9", "TME"])
    sign = "-" if number < 0 else ""
    magnitude = abs(number).normalize()
    digits = "".join(map(str, magnitude.as_tuple().digits))
    plain = format(magnitude, "f")
    plain = sign + (plain[1:] if plain.startswith("0.") else plain)
    if element == "TME" or len(plain) > 64:
        exponent = magnitude.adjusted() if magnitude else 0
        plain = sign + digits[0] + ("." + digits[1:] if len(digits) > 1 else "")
        plain += "E%s%02d" % ("-" if exponent < 0 else "+", abs(exponent))
    return element, plain.replace(".", locale.point), number


def roman(rng, number, _locale):
    if rng.random() < 0.7:
        number = Decimal(rng.randint(-100, 50000)) / 10
    value = int(rounded(number, 0))
    element, fill_mode = rng.choice(["RN", "rn", "Rn", "rN"]), rng.random() < 0.4
    text = ("FM" if fill_mode else "") + element
    if not 1 <= value <= 3999:
        return text, "#" * 15, None, number
    numeral, rest = "", value
    for symbol, worth in [("M", 1000), ("CM", 900), ("D", 500), ("CD", 400), ("C", 100), ("XC", 90), ("L", 50), ("XL", 40),
                          ("X", 10), ("IX", 9), ("V", 5), ("IV", 4), ("I", 1)]:
        while rest >= worth:
            numeral, rest = numeral + symbol, rest - worth
    numeral = numeral.lower() if element[0] == "r" else numeral
    return text, numeral if fill_mode else numeral.rjust(15), Decimal(value), number


def hexadecimal(rng, number, _locale):
    value = int(rounded(number, 0))
    zeros, places = rng.choice([0, 0, 1, 3]), rng.randint(1, rng.choice([3, 16, 70]))
    fill_mode, letter = rng.random() < 0.3, rng.choice("Xx")
    text = ("FM" if fill_mode else "") + "0" * zeros + letter + "".join(rng.choice("Xx") for _ in range(places - 1))
    positions = zeros + places
    width = positions + (0 if zeros else 1)
    digits = "%X" % abs(value)
    if value < 0 or len(digits) > positions:
        return text, "#" * width, None
    if zeros:
        digits = digits.rjust(positions, "0")
    if letter == "x":
        digits = digits.lower()
    return text, digits if fill_mode else digits.rjust(width), Decimal(value)


def main():
    rng = random.Random(int(sys.argv[1]))
    for _ in range(int(sys.argv[2])):
        number = random_number(rng)
        locale = Locale(rng)
        kind = rng.choice([picture] * 8 + [scientific] * 2 + [shortest, roman, hexadecimal])
        text, written, back, *changed = kind(rng, number, locale)
        number = changed[0] if changed else number
        if kind in (picture, scientific, shortest):
            text = random_case(rng, text)
        print("\t".join([str(number), text, locale.parameters, written, "none" if back is None else str(back)]))


main()

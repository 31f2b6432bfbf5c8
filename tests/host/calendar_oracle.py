"""Dates as Python's datetime sees them, from 1583 on: one line for each question, read by calendar_test.cpp.

usage: calendar_oracle.py SEED COUNT

Each line: a date-time, another, the days between their dates, weekday (0 Sunday), day of the year and week of the first (weeks
begin on Sunday, week 1 holds January 1), then a number of microseconds and the first date-time plus these.
"""

import datetime
import random
import sys

LOW = datetime.datetime(1583, 1, 1)
SPAN = datetime.datetime(9999, 12, 31, 23, 59, 59, 999999) - LOW
MICROSECOND = datetime.timedelta(microseconds=1)


def fields(value):
    return f"{value.year} {value.month} {value.day} {value.hour} {value.minute} {value.second} {value.microsecond}"


def week(value):
    january_1 = datetime.datetime(value.year, 1, 1)
    sunday_weeks = int(value.strftime("%U"))  # week 0: the days before the first Sunday
    return sunday_weeks + (0 if january_1.isoweekday() == 7 else 1)


def main():
    source = random.Random(int(sys.argv[1]))
    moment = lambda: LOW + source.randrange(SPAN // MICROSECOND) * MICROSECOND
    for _ in range(int(sys.argv[2])):
        first, second = moment(), moment()
        near = source.randrange(3) == 0
        target = first + source.randrange(-(10**12), 10**12) * MICROSECOND if near and 1600 < first.year < 9000 else moment()
        days = first.toordinal() - second.toordinal()
        print(fields(first), fields(second), days, first.isoweekday() % 7, first.timetuple().tm_yday, week(first),
              (target - first) // MICROSECOND, fields(target))


main()

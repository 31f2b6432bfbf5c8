"""Runs qzeval as its users do: what it prints, what it says when something is wrong, and what it leaves behind.

usage: qzeval_test.py QZEVAL SOURCE_DIRECTORY
"""

import json
import os
import pathlib
import pty
import random
import re
import signal
import stat
import subprocess
import sys
import tempfile
import time
import unittest

QZEVAL = sys.argv[1]
SOURCE = pathlib.Path(sys.argv[2])
CITIES = str(SOURCE / "examples" / "cities.csv")


def qzeval(*arguments, stdin=""):
    return subprocess.run([QZEVAL, *arguments], input=stdin.encode(), capture_output=True, timeout=60)


class QzevalTest(unittest.TestCase):
    def setUp(self):
        self.directory = tempfile.TemporaryDirectory()
        self.addCleanup(self.directory.cleanup)

    def path(self, name, content=None):
        path = pathlib.Path(self.directory.name) / name
        if content is not None:
            path.write_bytes(content.encode())
        return str(path)

    def expect(self, result, code, stdout=None, stderr=None):
        self.assertEqual(result.returncode, code, result.stderr.decode(errors="replace"))
        if stdout is not None:
            self.assertEqual(result.stdout.decode(), stdout)
        if stderr is not None:
            self.assertIn(stderr, result.stderr.decode())

    # ---- What it computes

    def test_a_file(self):
        file = self.path("in.csv", "price,n\n1.10,-5\n,7\n-2.5,\n")
        self.expect(qzeval("ceil(price) AS c, abs(n)", file), 0, "c,abs(n)\n2,5\n,7\n-2,\n")

    def test_standard_input(self):
        self.expect(qzeval("abs(n)", "-", stdin="n\n-1\n"), 0, "abs(n)\n1\n")

    def test_without_a_file_there_is_one_row(self):
        self.expect(qzeval("abs(-5) AS five, 'x' AS x, NULL AS n"), 0, "five,x,n\n5,x,\n")
        self.expect(qzeval("1", "--where", "FALSE"), 0, "1\n")

    def test_an_expression_that_begins_with_a_minus(self):
        self.expect(qzeval("--", "-5"), 0, "-5\n-5\n")

    def test_where_type_and_format(self):
        file = self.path("in.csv", "id,n\n007,1\n010,\n")
        self.expect(qzeval("id", file, "--where", "n is null"), 0, "id\n10\n")
        self.expect(qzeval("id", file, "--type", "id=string", "--type", "n=double"), 0, "id\n007\n010\n")
        result = qzeval("id, n", file, "--format", "json")
        self.assertEqual(json.loads(result.stdout), [{"id": 7, "n": 1}, {"id": 10, "n": None}])
        self.expect(qzeval("n", file, "--format", "TABLE"), 0, "    n\n------\n    1\n NULL\n(2 rows)\n")

    def test_dates_and_intervals(self):
        file = self.path(
            "in.csv",
            "d,t,z,i\n"
            "2024-01-31,2024-02-29 10:30:15.5,2024-02-29T10:30Z,1-2\n"
            "1582-10-04,1582-10-15,2024-02-29 10:30 +08:00,\n",
        )
        result = qzeval("d, trunc(t, 'HH') AS t, z, date_add(d, i) AS e, (d, i) OVERLAPS (DATE '2024-03-01', i) AS o", file,
                        "--type", "i=interval_ym")
        self.expect(
            result,
            0,
            "d,t,z,e,o\n"
            "2024-01-31,2024-02-29 10:00:00,2024-02-29 10:30:00 +00:00,2025-03-31,1\n"
            "1582-10-04,1582-10-15 00:00:00,2024-02-29 10:30:00 +08:00,,0\n",
        )
        self.expect(qzeval("d, datediff(day, d, t) AS n", file, "--where", "d < DATE '1600-01-01'"), 0, "d,n\n1582-10-04,1\n")
        self.expect(qzeval("z", file, "--type", "d=colour"), 2,
                    stderr="--type d=colour: colour is no type; there are int, bigint, decimal")
        self.expect(qzeval("d", file, "--type", "d=time"), 3, stderr="line 2, column d: '2024-01-31' is no time")
        self.expect(qzeval("DATE '2024-02-30'"), 2, stderr="'2024-02-30' is no date\n  DATE '2024-02-30'\n       ^")
        failed = qzeval("dateadd(year, 9999, d)", file)
        self.expect(failed, 1, stderr="row 1 (line 2): dateadd(year, 9999, d) failed")
        self.assertIn(b"with ", failed.stderr)
        self.expect(qzeval("TIMESTAMP '2024-02-29 10:30' AS t", "--session-time-zone", "+08:00", "--format", "json"), 0,
                    '[\n{"t":"2024-02-29 10:30:00"}\n]\n')
        self.expect(qzeval("CAST('10:30' AS time_tz) AS t", "--session-time-zone", "-03:30"), 0, "t\n10:30:00 -03:30\n")

    def test_the_sample_of_cities(self):
        result = qzeval("city, elevation_m, ceil(january_c) AS jan", CITIES, "--where", "elevation_m < 0", "--format", "json")
        rows = {row["city"]: row for row in json.loads(result.stdout)}
        self.assertEqual(rows["Jericho"], {"city": "Jericho", "elevation_m": -258, "jan": 13 + 1})
        self.assertIsNone(rows["Tiberias"]["jan"])
        everything = json.loads(qzeval("city, latitude, longitude, elevation_m, population, january_c", CITIES,
                                       "--format", "json").stdout)
        self.assertGreaterEqual(len(everything), 300)
        for row in everything:
            self.assertTrue(-90 <= row["latitude"] <= 90 and -180 <= row["longitude"] <= 180, row)
            self.assertTrue(row["january_c"] is None or -60 < row["january_c"] < 40, row)
            self.assertTrue(row["elevation_m"] is None or -430 < row["elevation_m"] < 5200, row)

    def test_char_and_lob_columns(self):
        file = self.path("in.csv", "name,text\nAda   ,one\n\"\",\nAlan,three\n")
        self.expect(qzeval("name, text", file, "--type", "name=char(5)", "--type", "text=CLOB"), 0,
                    "name,text\nAda,one\n\"\",\nAlan,three\n")
        self.expect(qzeval("name", file, "--type", "name=char(5)", "--where", "name = 'Ada '"), 0, "name\nAda\n")
        self.expect(qzeval("name", file, "--type", "name=Varchar", "--where", "name = 'Ada'"), 0, "name\nAda   \n")
        self.expect(qzeval("name", file, "--type", "name=char(3)"), 3, None,
                    "in.csv: line 4, column name: 'Alan' has 4 characters, more than char(3)")
        for wrong in "char", "char()", "char(0)", "char(-1)", "char(32768)", "char(five)":
            self.expect(qzeval("name", file, "--type", f"name={wrong}"), 2, "",
                        f"--type name={wrong}: char wants a number of characters from 1 to 32767, such as char(20)")
        self.expect(qzeval("name", file, "--type", "name=clob(5)"), 2, "", "clob takes nothing in parentheses")
        self.expect(qzeval("CAST('it''s' AS char(6)) AS c, CAST('x' AS clob) AS l", "--format", "json"), 0,
                    '[\n{"c":"it\'s","l":"x"}\n]\n')

    def test_files_of_every_character_set(self):
        """Python's codecs say what the bytes are. The texts are of characters that all three sets have."""
        text = "이름,text,n\n가나  ,中文가나,1\n\"라\",,2\n가,가나中文,3\n"
        for charset, codec in ("utf8", "utf-8"), ("gb18030", "gb18030"), ("euc-kr", "euc_kr"):
            with self.subTest(charset=charset):
                file = self.path("in.csv")
                pathlib.Path(file).write_bytes(text.encode(codec))
                common = file, "--charset", charset, "--type", "이름=char(4)", "--type", "text=clob"
                result = qzeval("이름, text, '文' AS 中", *common, "--where", "이름 < '나'")
                self.expect(result, 0)
                self.assertEqual(result.stdout, "이름,text,中\n가나,中文가나,文\n가,가나中文,文\n".encode(codec))
                result = qzeval("이름, text", *common, "--format", "json")
                self.assertEqual(json.loads(result.stdout.decode()), [
                    {"이름": "가나", "text": "中文가나"}, {"이름": "라", "text": None}, {"이름": "가", "text": "가나中文"}])
                self.expect(qzeval("이름, text, n", *common, "--format", "table"), 0,
                            " 이름 | text     | n\n------+----------+---\n 가나 | 中文가나 | 1\n 라   | NULL     | 2\n"
                            " 가   | 가나中文 | 3\n(3 rows)\n")
                self.expect(qzeval("locate('나', 이름) AS a, locate('가', text) AS b", *common), 0, "a,b\n2,3\n0,\n0,1\n")
                self.expect(qzeval("locate(' ', 이름, 2) AS n", *common), 0, "n\n3\n2\n2\n")
                self.expect(qzeval("이름", *common, "--type", "이름=char(1)"), 3, None,
                            "line 2, column 이름: '가나  ' has 2 characters, more than char(1)")
                self.expect(qzeval("nmae", *common), 2, "", "there is no column nmae; the columns are 이름, text, n")
                self.expect(qzeval("abs(CAST(이름 AS bigint))", *common), 1, None, "with 이름 = '가나  '")

    def test_strings_in_every_character_set(self):
        """Python upper-cases and counts; the characters are in all sets, Greek and Cyrillic letters of two bytes among them."""
        names = ["ωmega юг", "가나 abc", "Z", "", "中文αβγ ж"]
        for charset, codec in ("utf8", "utf-8"), ("gb18030", "gb18030"), ("euc-kr", "euc_kr"):
            with self.subTest(charset=charset):
                file = self.path("in.csv")
                pathlib.Path(file).write_bytes("".join(f'"{line}"\n' for line in ["name", *names]).encode(codec))
                common = file, "--charset", charset, "--type", "name=char(10)", "--format", "json"
                rows = json.loads(qzeval("upper(name) AS u, lengthb(name) AS b, name || '中' AS c, locate('a', name) AS l, "
                                         "locate('α', CAST(name AS clob), 2) AS k, CAST(upper(name) AS char(10)) AS t",
                                         *common).stdout)
                for name, row in zip(names, rows, strict=True):
                    filled = name.ljust(10)
                    self.assertEqual(row, {"u": filled.upper(), "b": len(filled.encode(codec)), "c": filled + "中",
                                           "l": filled.find("a") + 1, "k": filled.find("α", 1) + 1, "t": name.upper()})

    def test_the_sample_of_proverbs_in_every_character_set(self):
        text = (SOURCE / "examples" / "proverbs.csv").read_text()
        header, *lines = (SOURCE / "examples" / "proverbs.out").read_text().splitlines()
        names = [name.strip() for name in header.split("| ")]
        cells = [dict(zip(names, line.split("| "))) for line in lines[1:-1]]
        for charset, codec in ("gb18030", "gb18030"), ("euc-kr", "euc_kr"), ("utf8", "utf-8"):
            with self.subTest(charset=charset):
                file = self.path("in.csv")
                pathlib.Path(file).write_bytes(text.encode(codec))
                rows = json.loads(qzeval(
                    "upper(word) AS word, length(word) AS chars, lengthb(word) AS bytes, locate(' ', proverb) AS first_blank, "
                    "instr(CAST(proverb AS string), ' ', -1, 2) AS last_but_one", file, "--charset", charset,
                    "--type", "word=char(8)", "--type", "proverb=clob", "--format", "json", "--threads", "2").stdout)
                self.assertEqual(len(rows), len(cells))
                for row, cell in zip(rows, cells):
                    for name in "chars", "first_blank", "last_but_one":
                        self.assertEqual(row[name], int(cell[name]))
                    self.assertEqual(row["word"].strip(), cell["word"].strip())
                    self.assertEqual(row["bytes"], len(row["word"].encode(codec)))

    def test_bytes_that_are_no_characters(self):
        for charset, bad in ("utf8", b"\xe4\xb8"), ("gb18030", b"\xff"), ("euc-kr", b"\xff"):
            with self.subTest(charset=charset):
                file = self.path("in.csv")
                pathlib.Path(file).write_bytes(b"s\na" + bad + b"z\n")
                self.assertEqual(qzeval("s", file, "--charset", charset).stdout, b"s\na" + bad + b"z\n")
                self.assertEqual(json.loads(qzeval("s", file, "--charset", charset, "--format", "json").stdout),
                                 [{"s": "a\ufffdz"}])
        self.expect(qzeval("'é'", "--charset", "euc-kr"), 2, "", "euc-kr has no character é\n  'é'\n  ^\n")
        result = qzeval("1 AS é", "--charset", "euc-kr")
        self.expect(result, 2, "", "the name é cannot be written: euc-kr has no character é; AS gives another name")

    def test_lobs_of_a_long_file_do_not_pile_up(self):
        def most_memory(rows):
            """Of a run over so many LOBs of 8 KiB, each out of row."""
            file = self.path("in.csv")
            with open(file, "wb") as out:  # row by row: a process begins with the most memory of the one that starts it
                out.write(b"c\n")
                for _ in range(rows):
                    out.write(b"x" * 8191 + b"\n")
            # Without a quarantine what is freed is used again also under AddressSanitizer.
            environment = dict(os.environ, ASAN_OPTIONS=os.environ.get("ASAN_OPTIONS", "") + ":quarantine_size_mb=1")
            process = subprocess.Popen([QZEVAL, "c", file, "--type", "c=clob", "-o", "/dev/null"], env=environment)
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
            self.assertEqual(process.returncode, 0)
            return usage.ru_maxrss * 1024

        few, many = most_memory(1000), most_memory(13000)
        self.assertLess(many - few, 12000 * 8192 // 4, f"{few} bytes for 8 MB of values, {many} for 104 MB")

    def test_threads_give_the_same_bytes(self):
        seed = 17
        print("seed", seed)
        generator = random.Random(seed)
        rows = "".join(f"{generator.randrange(-10**9, 10**9) / 100},{generator.randrange(10**6)}\n" for _ in range(60000))
        file = self.path("in.csv", "price,n\n" + rows)
        one = qzeval("ceil(price), abs(n), price", file, "--where", "price > 0")
        self.expect(one, 0)
        self.assertGreater(one.stdout.count(b"\n"), 20000)
        for threads in "2", "4":
            self.assertEqual(qzeval("ceil(price), abs(n), price", file, "--where", "price > 0", "--threads", threads).stdout,
                             one.stdout)

    # ---- What it tells

    def test_the_catalog(self):
        self.expect(qzeval("--functions"), 0)
        listed = qzeval("--functions").stdout.decode()
        self.assertRegex(listed, r"(?m)^ceil\(x decimal\) -> decimal +\S")
        self.expect(qzeval("--functions", "ABS"), 0)
        told = qzeval("--functions", "abs").stdout.decode()
        for part in ("abs(x bigint) -> bigint", "NULL: ", "error: EC_DATA_OVERFLOW (-6102), ", "form a: babs_a_math_int",
                     "abs(-7) is 7"):
            self.assertIn(part, told)
        self.expect(qzeval("--functions", "flor"), 2, "", "there is no function flor; did you mean floor?")

    def test_the_plan(self):
        file = self.path("in.csv", "n,p\n1,1.5\n")
        plan = qzeval("--explain", "abs(n), ceil(p)", file).stdout.decode()
        self.assertIn("babs_a_math_int(#0), form a; serves abs(x bigint) -> bigint", plan)
        self.assertIn("bceil_a_math_dec", plan)
        self.expect(qzeval("--explain", "abs(-1)"), 0)

    def test_help_and_version(self):
        self.expect(qzeval("--help"), 0)
        self.assertRegex(qzeval("--version").stdout.decode(), r"^qzeval \d+\.\d+\.\d+\n$")

    def test_the_manual_page_has_every_option_and_no_other(self):
        page = (SOURCE / "docs" / "qzeval.1").read_text().replace("\\-", "-")
        options = set(re.findall(r"(?<![\w-])--?[a-z][a-z-]*", qzeval("--help").stdout.decode()))
        self.assertGreater(len(options), 10)
        self.assertEqual(options, set(re.findall(r"(?m)^\.BR? .*?((?<![\w-])--?[a-z][a-z-]*)", page))
                         | set(re.findall(r"(?m)^\.BR? --?[a-z][a-z-]* .*?((?<![\w-])--?[a-z][a-z-]*)", page)))

    # ---- What goes wrong

    def test_errors_of_the_expression_are_shown_where_they_stand(self):
        self.expect(qzeval("abs(1"), 2, "",
                    "qzeval: expected a comma or a closing parenthesis, the expression ends here\n  abs(1\n       ^\n")
        self.expect(qzeval("1,\nabs(é(2))"), 2, "", "\n  abs(é(2))\n      ^\n")
        self.expect(qzeval("'中文', abs(1"), 2, "", "\n  '中文', abs(1\n" + " " * 15 + "^\n")
        self.expect(qzeval("n", self.path("in.csv", "n\n1\n"), "--where", "m = 1"), 2, "",
                    "there is no column m; the columns are n\n  m = 1\n  ^\n")

    def test_wrong_usage(self):
        for arguments in ((), ("--threads", "0", "1"), ("--threads", "x", "1"), ("--no-such-option", "1"), ("1", "a", "b"),
                          ("--format", "xml", "1"), ("--charset", "ascii", "1"), ("--session-time-zone", "8", "1"),
                          ("--session-time-zone", "+15:00", "1"), ("--session-time-zone", "+08:60", "1"),
                          ("--type", "n", "n", CITIES), ("--type", "n=colour", "n", CITIES),
                          ("--type", "x=int", "city", CITIES),
                          ("--type", "city=int", "1")):
            result = qzeval(*arguments)
            self.expect(result, 2, "")
            self.assertNotEqual(result.stderr, b"", arguments)

    def test_session_options_are_accepted(self):
        self.expect(qzeval("1", "--session-time-zone", "-03:30", "--compat-mode", "2", "--charset", "GB18030",
                           "--case-insensitive"), 0)

    def test_a_function_that_fails(self):
        file = self.path("in.csv", "n\n1\n\n-9223372036854775808\n")
        self.expect(qzeval("abs(n)", file), 1, None,
                    "qzeval: row 3 (line 4): abs(n) failed: numeric overflow")
        self.expect(qzeval("abs(n)", file), 1, None,
                    "  with n = -9223372036854775808\n  reported by babs_a_process_int (-6102)\n")

    def test_an_input_that_cannot_be_read(self):
        self.expect(qzeval("n", "/nonexistent/in.csv"), 3, "", "cannot open /nonexistent/in.csv: No such file or directory")
        self.expect(qzeval("n", self.directory.name), 3, "", "cannot read")
        self.expect(qzeval("n", self.path("empty.csv", "")), 3, "", "line 1 is empty")
        self.expect(qzeval("a", self.path("in.csv", "a,b\n1\n")), 3, "", "in.csv: line 2: column b is missing")

    def test_an_output_that_cannot_be_written(self):
        self.expect(qzeval("1", "-o", "/nonexistent/out.csv"), 4, "",
                    "cannot write /nonexistent/out.csv: No such file or directory")
        with open("/dev/full", "wb") as full:
            result = subprocess.run([QZEVAL, "1"], stdout=full, stderr=subprocess.PIPE, timeout=60)
        self.assertEqual(result.returncode, 4)
        self.assertIn(b"cannot write standard output: No space left on device", result.stderr)

    # ---- Files

    def test_an_output_file_appears_whole_or_not_at_all(self):
        good = self.path("good.csv", "n\n1\n")
        bad = self.path("bad.csv", "n\n" + "1\n" * 200000 + "-9223372036854775808\n")
        out = self.path("out.csv")
        self.expect(qzeval("abs(n)", bad, "-o", out), 1)
        self.assertFalse(os.path.exists(out))
        self.expect(qzeval("abs(n)", good, "-o", out), 0, "")
        self.assertEqual(pathlib.Path(out).read_text(), "abs(n)\n1\n")
        self.expect(qzeval("abs(n)", bad, "-o", out), 1)
        self.assertEqual(pathlib.Path(out).read_text(), "abs(n)\n1\n")
        self.assertEqual(sorted(os.listdir(self.directory.name)), ["bad.csv", "good.csv", "out.csv"])

    def test_an_output_file_keeps_its_mode_and_its_links(self):
        out = self.path("out.csv", "old")
        os.chmod(out, 0o640)
        link = self.path("link.csv")
        os.symlink(out, link)
        self.expect(qzeval("1", "-o", link), 0)
        self.assertTrue(os.path.islink(link))
        self.assertEqual(pathlib.Path(out).read_text(), "1\n1\n")
        self.assertEqual(stat.S_IMODE(os.stat(out).st_mode), 0o640)
        self.expect(qzeval("1", "-o", self.path("new.csv")), 0)
        mask = os.umask(0)
        os.umask(mask)
        self.assertEqual(stat.S_IMODE(os.stat(self.path("new.csv")).st_mode), 0o666 & ~mask)

    def test_the_input_may_be_the_output(self):
        file = self.path("in.csv", "n\n-1\n-2\n")
        self.expect(qzeval("abs(n) AS n", file, "-o", file), 0)
        self.assertEqual(pathlib.Path(file).read_text(), "n\n1\n2\n")

    def test_a_device_is_written_as_it_is(self):
        self.expect(qzeval("1", "-o", "/dev/null"), 0, "")
        self.assertTrue(stat.S_ISCHR(os.stat("/dev/null").st_mode))

    def test_a_signal_leaves_nothing_behind(self):
        out = self.path("out.csv")
        process = subprocess.Popen([QZEVAL, "n", "-", "-o", out], stdin=subprocess.PIPE)
        process.stdin.write(b"n\n" + b"1\n" * 500000)
        process.stdin.flush()
        deadline = time.monotonic() + 30
        while not os.listdir(self.directory.name) and time.monotonic() < deadline:
            time.sleep(0.01)
        self.assertTrue(os.listdir(self.directory.name))
        process.send_signal(signal.SIGTERM)
        self.assertEqual(process.wait(60), -signal.SIGTERM)
        process.stdin.close()
        self.assertEqual(os.listdir(self.directory.name), [])

    def test_progress_is_shown_on_a_terminal_only(self):
        try:
            master, terminal = pty.openpty()
        except OSError:
            self.skipTest("there are no pseudo-terminals here")
        process = subprocess.Popen([QZEVAL, "n", "-", "-o", "/dev/null"], stdin=subprocess.PIPE, stderr=terminal)
        os.close(terminal)
        process.stdin.write(b"n\n")
        block = b"1\n" * 200000
        begun = time.monotonic()
        while time.monotonic() - begun < 2.5:
            process.stdin.write(block)
        process.stdin.close()
        shown = b""
        while True:
            try:
                piece = os.read(master, 65536)
            except OSError:
                break
            if not piece:
                break
            shown += piece
        os.close(master)
        self.assertEqual(process.wait(60), 0)
        self.assertRegex(shown, rb"\d+ rows, \d+ MB/s")
        self.assertTrue(shown.endswith(b"\r\x1b[K"), "the line is gone in the end")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])

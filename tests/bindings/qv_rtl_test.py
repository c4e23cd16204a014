"""The Python module against the library, on a machine made from the samples.

    qv_rtl_test.py LIBRARY     with QV_HOST_ROOT set
"""
import datetime
import os
import sys
import threading
import unittest

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
sys.path.insert(0, os.path.join(ROOT, "bindings", "python"))

import qv_rtl  # noqa: E402

FAX = "Vantrel Fax"
# A character outside the Basic Multilingual Plane, one that is 0 in its low byte, an accent.
FANCY = "\U0001F4E0 \u0100 \u00e9"


class Names(unittest.TestCase):
    def test_each_host_has_its_name(self):
        self.assertEqual(qv_rtl.library_names("win32"), ["qv_rtl.dll"])
        self.assertEqual(qv_rtl.library_names("linux")[-1], "libqv_rtl.so")

    def test_a_missing_library_is_named(self):
        with self.assertRaisesRegex(qv_rtl.QvRtlError, "no_such_library"):
            qv_rtl.QvRtl("/no_such_library.so")


class Commands(unittest.TestCase):
    def setUp(self):
        self.qv = qv_rtl.QvRtl(LIBRARY)

    def test_printers(self):
        self.assertEqual(self.qv.printers(), [FAX, FAX + " (Second Line)"])

    def test_settings_change_and_read_back(self):
        # A value with a tab or a quote would be two items or lose its quotes without care.
        for directory in (FANCY, '"quoted" ' + FANCY, "half \ud83d pair"):
            self.assertEqual(self.qv.change_settings(FAX, mode=1, defaultsavedir=directory), [])
            settings = self.qv.settings(FAX)
            self.assertEqual(settings["DefaultSaveDir"], directory)
            self.assertEqual(settings["Mode"], "1")
        self.qv.change_settings(FAX, mode=0, defaultsavedir="a\tb")
        with self.assertRaises(qv_rtl.QvRtlError):
            self.qv.settings(FAX)
        self.assertEqual(self.fields()["exOut.Directory"], "a\tb")

    def test_an_error_has_status_and_text(self):
        with self.assertRaises(qv_rtl.CommandError) as caught:
            self.qv.settings(FANCY)
        self.assertEqual(caught.exception.status, -30)
        self.assertIn(FANCY, caught.exception.text)
        with self.assertRaises(qv_rtl.CommandError) as caught:
            self.qv.settings("")
        self.assertEqual(caught.exception.status, -20)
        with self.assertRaises(ValueError):
            self.qv.settings("a\0b")

    def test_a_long_answer_is_whole(self):
        unknown = {f"nothing{i:04}{FANCY}": 1 for i in range(600)}
        lines = self.qv.change_settings(FAX, **unknown)
        self.assertEqual(len(lines), 600)
        self.assertTrue(lines[599].startswith(f"Unsupported keyword 'nothing0599{FANCY}'"))

    def test_a_long_error_is_whole(self):
        for length in (4030, 4096, 9000):
            with self.assertRaises(qv_rtl.CommandError) as caught:
                self.qv.settings("x" * length)
            self.assertIn("x" * length + ".' : [", caught.exception.text)

    def test_defaults(self):
        second = FAX + " (Second Line)"
        self.qv.default_settings(second, silent=True, use_serial=True, directory=FANCY)
        settings = self.qv.settings(second)
        self.assertEqual((settings["Mode"], settings["UseSerial"]), ("1", "1"))
        self.assertEqual(settings["DefaultSaveDir"], FANCY)
        with self.assertRaises(qv_rtl.QvRtlError):
            self.qv.default_settings(FANCY)

    def fields(self):
        for printer in self.qv.query_printers("Vantrel Driver"):
            if printer.findtext("name") == FAX:
                return qv_rtl._fields(printer.find("devmode"))
        return {}


class Requests(unittest.TestCase):
    def setUp(self):
        self.qv = qv_rtl.QvRtl(LIBRARY)

    def test_all_printers_are_found(self):
        names = [printer.findtext("name") for printer in self.qv.query_printers()]
        self.assertEqual(sorted(names), ["Office Laser", FAX, FAX + " (Second Line)"])

    def test_an_update_gives_previous_values(self):
        wanted = {"dmCopies": 7, "exOut.FileName": FANCY, "exOut.UseSerial": False}
        self.qv.update_printer(FAX, wanted)
        change = self.qv.update_printer(FAX, {**wanted, "dmScale": "99999", "no.Such": 1})
        self.assertEqual(change.previous, {"dmCopies": "7", "exOut.FileName": FANCY,
                                           "exOut.UseSerial": "False"})
        self.assertEqual(change.skipped, ["dmScale", "no.Such"])

    def test_errors_carry_the_systems_code(self):
        with self.assertRaises(qv_rtl.RequestError) as caught:
            self.qv.update_printer(FANCY, {"dmCopies": 2})
        self.assertEqual(caught.exception.status, 1801)
        self.assertIn("[1801]", str(caught.exception))
        response = self.qv.request("<query><printer>")
        self.assertIn("The request ends before its root element is closed", response.errors[0])
        response = self.qv.request("<query><driver><name>none</name></driver></query>")
        self.assertEqual(response.check().warnings, ["No printer driver was found"])


class Logs(unittest.TestCase):
    def setUp(self):
        self.qv = qv_rtl.QvRtl(LIBRARY)

    def test_lines_are_written_and_followed(self):
        with self.qv.follow_log(timeout=0) as log:
            self.qv.write_log(FANCY, "warning", "a_test", 7)
            self.qv.write_log("", "X")
            records = list(log)
        self.assertEqual([record[1:3] + record[4:] for record in records],
                         [("warning", os.getpid(), 1, "a_test", 7, FANCY, "", b"", 0, False),
                          ("error", os.getpid(), 1, "python", 0, "", "", b"", 0, False)])
        age = datetime.datetime.now(datetime.timezone.utc) - records[0].time
        self.assertLess(abs(age.total_seconds()), 60)
        self.assertEqual(list(self.qv.follow_log(only_new=False, timeout=0))[-2:], records)
        self.assertEqual(list(log), [])

    def test_what_others_write_comes_in_time(self):
        writer = threading.Timer(0.3, self.qv.write_log, ["later"])
        writer.start()
        self.assertEqual([record.text for record in self.qv.follow_log(timeout=1)], ["later"])
        writer.join()

    def test_troubles_have_a_code(self):
        for level, source in (("fatal", "a"), ("log", "a"), ("error", "a b")):
            with self.assertRaises(ValueError):
                self.qv.write_log("text", level, source)
        for file, status in (("/no/such.log", 3), (__file__, 13)):
            with self.assertRaises(qv_rtl.LogError) as caught:
                self.qv.follow_log(file)
            self.assertEqual(caught.exception.status, status)


if __name__ == "__main__":
    LIBRARY = sys.argv.pop(1)
    unittest.main(verbosity=2)

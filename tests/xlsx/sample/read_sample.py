"""Reads the sample spreadsheet with a reader that shares nothing with its writer."""

import datetime
import os
import subprocess
import tempfile
import unittest
from pathlib import Path

import openpyxl

KINDS = [42, -12.5, "9007199254740993", True, False, "plain text", "=1+1", "007", "http://example.com/",
         "Zürich 東京 <&> \"q\"", "  two blanks ", "line\nline\ttab", None, None, "nan"]


class Sample(unittest.TestCase):
    decimal = "1.5"

    @classmethod
    def locale(cls):
        return {"LC_ALL": "C.UTF-8"}

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        path = Path(cls.folder.name) / "sheets" / "sample.xlsx"
        path.parent.mkdir()
        program = subprocess.run([os.environ["XLSX_SAMPLE"], path], check=True, text=True, stdout=subprocess.PIPE,
                                 env={**os.environ, **cls.locale()})
        cls.printed = program.stdout.strip()
        cls.left = sorted(entry.name for entry in path.parent.iterdir())
        cls.sheet = openpyxl.load_workbook(path).active

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def test_the_program_had_the_locale(self):
        self.assertEqual(self.printed, self.decimal)

    def test_nothing_but_the_file_is_left(self):
        self.assertEqual(self.left, ["sample.xlsx"])

    def test_values_keep_their_kind(self):
        cells = [self.sheet.cell(row + 2, 1) for row in range(len(KINDS))]
        self.assertEqual([cell.value for cell in cells], KINDS)
        self.assertEqual([type(cell.value) for cell in cells], [type(kind) for kind in KINDS])

    def test_text_is_never_a_formula_nor_a_link(self):
        self.assertEqual(self.sheet["A8"].value, "=1+1")
        self.assertNotEqual(self.sheet["A8"].data_type, "f")
        self.assertIsNone(self.sheet["A10"].hyperlink)

    def test_dates_are_dates_in_the_format_given(self):
        for row, date in ((2, datetime.datetime(2018, 2, 7, 3, 4, 5, 250000)),
                          (3, datetime.datetime(1969, 12, 31, 23, 59, 59, 500000)),
                          (4, datetime.datetime(1900, 3, 1))):
            cell = self.sheet.cell(row, 2)
            self.assertTrue(cell.is_date)
            self.assertLess(abs(cell.value - date), datetime.timedelta(milliseconds=1))
            self.assertEqual(cell.number_format, "m/d/yy h:mm:ss.00")

    def test_dates_before_the_calendar_are_text(self):
        self.assertEqual(self.sheet["B5"].value, "1897-06-12T11:06:00.000Z")

    def test_dates_without_a_format_show_as_dates(self):
        self.assertTrue(self.sheet["C2"].is_date)
        self.assertEqual(self.sheet["C2"].number_format, "yyyy-mm-dd hh:mm:ss")
        self.assertEqual(self.sheet["C3"].value, datetime.datetime(2020, 2, 29))
        self.assertEqual(self.sheet["C3"].number_format, "yyyy-mm-dd")

    def test_headers_are_bold_and_values_are_not(self):
        self.assertTrue(self.sheet["A1"].font.b and self.sheet["B1"].font.b)
        self.assertFalse(self.sheet["A2"].font.b or self.sheet["B2"].font.b)
        self.assertEqual(self.sheet["A2"].number_format, "General")

    def test_the_last_write_to_a_cell_stands(self):
        self.assertEqual(self.sheet["C4"].value, 8)
        self.assertTrue(self.sheet["C4"].font.b)

    def test_columns_are_as_wide_as_asked(self):
        # A file states the width with the padding of a cell.
        self.assertAlmostEqual(self.sheet.column_dimensions["A"].width, 30, delta=0.8)
        self.assertAlmostEqual(self.sheet.column_dimensions["B"].width, 17.5, delta=0.8)

    def test_the_last_cell_of_a_sheet_is_reached(self):
        self.assertEqual(self.sheet["XFD1048576"].value, "last")


class SampleWhereNumbersHaveAComma(Sample):
    decimal = "1,5"

    @classmethod
    def locale(cls):
        locales = Path(cls.folder.name) / "locales"
        locales.mkdir()
        subprocess.run(["localedef", "-i", "de_DE", "-f", "UTF-8", locales / "de_DE.UTF-8"], check=True)
        return {"LC_ALL": "de_DE.UTF-8", "LOCPATH": str(locales)}


if __name__ == "__main__":
    unittest.main()

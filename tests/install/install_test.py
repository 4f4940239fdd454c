"""Installs the build into a temporary folder and uses it as another project would."""

import csv
import os
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

BUILD = Path(os.environ["ORVANE_BUILD"])
SOURCE = Path(os.environ["ORVANE_SOURCE"])
CMAKE = os.environ.get("CMAKE", "cmake")
HOST = Path(__file__).resolve().parent / "host"

PLATFORM_HEADERS = {"orvane/util.h", "orvane/util_export.h", "orvane/db.h", "orvane/db_check.h", "orvane/db_create.h",
                    "orvane/db_export.h",
                    "orvane/tr.h", "orvane/numbers.h", "orvane/language.h", "orvane/tr_export.h",
                    "orvane/plot.h", "orvane/plot_export.h"}
WIDGET_HEADERS = {"ovqt_export.h", "qovresponse.h", "qovserver.h", "qovconnection.h", "qdbptr.h", "ovconfig.h",
                  "orvanedatabasemodel.h", "orvanetablemodel.h", "qovutil.h", "orvanetableview.h",
                  "orvanedatabaseview.h", "qlistchooserdialog.h", "qlistitemchooserdialog.h", "qsaveasdialog.h",
                  "orvanerowview.h", "qfieldedit.h"}
# Of the stand-in for the spreadsheet writer; an installed QXlsx has its own elsewhere.
XLSX_HEADERS = {"xlsxdocument.h", "xlsxformat.h", "xlsx_export.h"}
STANDARD_HEADER = re.compile(r"^(Q[A-Za-z]+|[a-z_]+|(stddef|stdint|stdio|math)\.h)$")


def run(*command, **options):
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options)
    if result.returncode != 0:
        raise AssertionError(f"{' '.join(map(str, command))} ended with {result.returncode}:\n{result.stdout}")
    return result.stdout


class InstalledTree(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.prefix = Path(cls.folder.name) / "prefix"
        run(CMAKE, "--install", BUILD, "--prefix", cls.prefix)
        cls.libraries = {path.name: path for path in cls.prefix.glob("lib*/**/*.so.*")}

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def headers(self):
        include = self.prefix / "include"
        for path in include.rglob("*.h"):
            name = path.relative_to(include)
            own_folder = name.parts[0] in ("ovqt", "ovqt-xlsx")
            yield path, str(name.relative_to(name.parts[0]) if own_folder else name)

    def public_headers(self):
        stand_in = XLSX_HEADERS if "liborvane_xlsx.so.1" in self.libraries else set()
        return PLATFORM_HEADERS | WIDGET_HEADERS | stand_in

    def test_only_the_public_headers_are_installed(self):
        self.assertEqual({name for _, name in self.headers()}, self.public_headers())

    def test_no_internal_or_third_party_header_leaks_through_a_public_one(self):
        allowed = self.public_headers()
        for path, name in self.headers():
            for included in re.findall(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]', path.read_text(), re.M):
                self.assertTrue(included in allowed or STANDARD_HEADER.match(included),
                                f"{name} includes {included}")

    def test_the_widget_library_needs_the_database_but_not_what_its_host_links(self):
        dynamic = run("readelf", "-d", self.libraries["libovqt_x11.so.3"])
        self.assertIn("Library soname: [libovqt_x11.so.3]", dynamic)
        needed = set(re.findall(r"Shared library: \[([^\]]+)\]", dynamic))
        self.assertLessEqual({"liborvane_db.so.1", "liborvane_util.so.1", "libQt5Core.so.5", "libQt5Gui.so.5",
                              "libQt5Widgets.so.5"}, needed)
        self.assertFalse({name for name in needed if re.search(r"orvane_(tr|plot|xlsx)|QXlsx|xlsxwriter", name)})

    def test_the_database_and_utility_libraries_do_without_the_toolkit(self):
        for name in ("liborvane_db.so.1", "liborvane_util.so.1"):
            self.assertNotIn("Qt5", run("readelf", "-d", self.libraries[name]))

    def test_the_command_line_runs_without_the_toolkit_and_has_its_manual_page(self):
        program = self.prefix / "bin/ovdb"
        needed = set(re.findall(r"Shared library: \[([^\]]+)\]", run("readelf", "-d", program)))
        self.assertLessEqual({"liborvane_db.so.1", "liborvane_util.so.1"}, needed)
        self.assertFalse({name for name in needed if re.search(r"Qt5|ovqt", name)})
        environment = {key: value for key, value in os.environ.items() if not key.startswith("ORVANE_SCHEMA")}
        counted = run(program, "select", SOURCE / "demo/quakes.origin", "--join", "event", "--count", env=environment)
        self.assertEqual(counted, "1707\n")
        page = (self.prefix / "share/man/man1/ovdb.1").read_text()
        self.assertTrue(page.startswith(".TH OVDB 1 "))

    def test_nothing_but_the_documented_c_calls_is_exported(self):
        for name, header in (("liborvane_db.so.1", "db"), ("liborvane_util.so.1", "util")):
            symbols = run("nm", "-D", "--defined-only", self.libraries[name])
            exported = {line.split()[2].split("@")[0] for line in symbols.splitlines() if " T " in line}
            headers = (self.prefix / "include/orvane").glob(f"{header}*.h")
            text = "".join(path.read_text() for path in headers if not path.name.endswith("_export.h"))
            declared = set(re.findall(r"_EXPORT [^;(]*?\*?\s*(\w+)\(", text))
            self.assertTrue(declared)
            self.assertEqual(declared - exported, set(), f"{name} declares what it does not export")
            self.assertEqual(exported - declared, set(), f"{name} exports what its header does not declare")

    def test_a_host_program_and_a_c_program_build_and_run_against_it(self):
        build = Path(self.folder.name) / "host"
        run(CMAKE, "-S", HOST, "-B", build, f"-DCMAKE_PREFIX_PATH={self.prefix}",
            f"-DCMAKE_CXX_FLAGS={os.environ.get('HOST_CXX_FLAGS', '')}",
            f"-DCMAKE_C_FLAGS={os.environ.get('HOST_CXX_FLAGS', '').replace(',vptr', '')}",
            f"-DCMAKE_CXX_COMPILER={os.environ['HOST_CXX_COMPILER']}",
            f"-DCMAKE_C_COMPILER={os.environ['HOST_C_COMPILER']}")
        run(CMAKE, "--build", build, "-j2")
        demo = SOURCE / "demo/quakes"
        environment = {key: value for key, value in os.environ.items() if not key.startswith("ORVANE_SCHEMA")}
        self.assertEqual(run(build / "count", demo, "origin", env=environment).strip(), "1707")
        self.assertIn("origin", run(build / "host", demo, env=environment))

    def test_the_program_of_the_hosting_page_builds_and_runs(self):
        page = (SOURCE / "docs/hosting.md").read_text()
        folder = Path(self.folder.name) / "hosting"
        folder.mkdir()
        files = re.findall(r"^`([\w.]+)`:\n\n```\w+\n(.*?)^```$", page, re.M | re.S)
        self.assertEqual([name for name, _ in files], ["CMakeLists.txt", "main.cpp"])
        for name, text in files:
            (folder / name).write_text(text)
        run(CMAKE, "-S", folder, "-B", folder / "build", f"-DCMAKE_PREFIX_PATH={self.prefix}",
            f"-DCMAKE_CXX_FLAGS={os.environ.get('HOST_CXX_FLAGS', '')} -Wall -Wextra -Werror",
            f"-DCMAKE_CXX_COMPILER={os.environ['HOST_CXX_COMPILER']}")
        run(CMAKE, "--build", folder / "build", "-j2")
        environment = {key: value for key, value in os.environ.items() if not key.startswith("ORVANE_SCHEMA")}
        environment["DEEP_EVENTS_ONCE"] = "1"
        program, demo, written = folder / "build/deep_events", SOURCE / "demo/quakes", folder / "deep.csv"
        said = run(program, demo, "origin", "depth > 100", written, env=environment)
        with written.open(newline="") as file:
            rows = list(csv.DictReader(file))
        records = (SOURCE / "demo/quakes.origin").read_text().splitlines()
        deep = [record for record in records if float(record.split()[2]) > 100]
        self.assertGreater(len(deep), 10)
        self.assertEqual([row["depth"] for row in rows], [record.split()[2] for record in deep])
        self.assertIn(f"{len(deep)} rows in chosen", said)
        for arguments, reason in ((("nowhere", "origin", "1==1"), "cannot open the database 'nowhere'"),
                                  ((demo, "origin", "dep > 1"), "dep")):
            failed = subprocess.run([program, *arguments, written], env=environment, text=True,
                                    stdout=subprocess.PIPE, stderr=subprocess.PIPE)
            self.assertEqual(failed.returncode, 1)
            self.assertIn(reason, failed.stderr)


if __name__ == "__main__":
    unittest.main()

"""ovdb map: pictures, as ImageMagick has them."""

import shutil
import subprocess
import unittest

from program import DEMO, OVDB, ProgramTest, environment, run


def identified(path, form):
    return subprocess.run(["identify", "-format", form, path], capture_output=True, text=True, check=True).stdout


class Map(ProgramTest):
    def drawn(self, *options, database=DEMO, name="map.png"):
        path = self.folder / name
        result = run("map", database, "--output", path, *options)
        self.assertEqual((result.returncode, result.stdout), (0, b""), result.stderr)
        return path, result.stderr.decode()

    def test_a_picture_of_the_events(self):
        path, said = self.drawn()
        self.assertEqual(identified(path, "%m %w %h"), "PNG 1200 800")
        self.assertRegex(said, r"^ovdb: note: Events: 1,[0-9]{3} ")
        self.assertGreater(int(identified(path, "%k")), 200, "colours")

    def test_size_ratio_and_looks(self):
        self.assertEqual(identified(self.drawn("--size", "300x200", "--ratio", "2")[0], "%w %h"), "600 400")
        dark, _ = self.drawn("--dark", "--size", "300x200", name="dark.png")
        light, _ = self.drawn("--size", "300x200", name="light.png")
        full, _ = self.drawn("--size", "900x600", name="full.png")
        bare, _ = self.drawn("--size", "900x600", "--no-legend", name="bare.png")
        brightness = [float(identified(path, "%[fx:mean]")) for path in (dark, light)]
        self.assertLess(brightness[0], 0.45)
        self.assertGreater(brightness[1], 0.6)
        self.assertFalse(full.read_bytes() == bare.read_bytes(), "there is no legend")

    def test_a_region(self):
        _, world = self.drawn("--centre", "0,0", "--range", "180")
        _, alaska = self.drawn("--centre", "64.5,-150", "--range", "12", "--force")
        self.assertNotIn("beyond", world)
        self.assertIn("beyond", alaska)

    def test_records_that_cannot_be_drawn_are_counted(self):
        for file in DEMO.parent.glob("quakes*"):
            shutil.copy(file, self.folder)
        origin = self.folder / "quakes.origin"
        lines = origin.read_bytes().splitlines(keepends=True)[:50]
        nowhere = b"-999.0000 -999.0000" + lines[0][19:]
        impossible = b"  95.0000  190.0000" + lines[0][19:]
        self.assertEqual(len(nowhere), len(lines[0]))
        origin.write_bytes(b"".join(lines + [nowhere] * 3 + [impossible] * 2))
        _, said = self.drawn("--range", "180", database=self.folder / "quakes")
        self.assertIn("Events: 50 ", said)
        self.assertIn("without coordinates: 3", said)
        self.assertIn("with impossible coordinates: 2", said)

    def test_what_is_wrong(self):
        out = self.folder / "map.png"
        for options, reason in (([], "--output FILE.png is missing"),
                                (["--output", self.folder / "map.jpg"], "maps are PNG files"),
                                (["--output", out, "--size", "9x9"], "WIDTHxHEIGHT is expected"),
                                (["--output", out, "--size", "many"], "WIDTHxHEIGHT is expected"),
                                (["--output", out, "--ratio", "0"], "from 0.5 to 8"),
                                (["--output", out, "--centre", "95,0"], "LATITUDE,LONGITUDE"),
                                (["--output", out, "--range", "200"], "above 0 and up to 180")):
            self.assertIn(reason, self.failure(2, "map", DEMO, *options))
        self.assertIn("no table", self.failure(1, "map", self.database, "--output", out).lower())
        self.assertIn("cannot open", self.failure(1, "map", self.folder / "nowhere", "--output", out))
        out.write_text("precious")
        self.assertIn("there is a file already", self.failure(1, "map", DEMO, "--output", out))
        self.assertEqual(out.read_text(), "precious")
        self.assertIn("No such file", self.failure(1, "map", DEMO, "--output", self.folder / "no" / "map.png"))

    def test_without_the_part_that_draws(self):
        alone = self.folder / "bin"
        alone.mkdir()
        shutil.copy(OVDB, alone)
        library_path = subprocess.run(["ldd", OVDB], capture_output=True, text=True, check=True).stdout
        folders = {line.split("=> ")[1].rsplit("/", 1)[0] for line in library_path.splitlines() if "liborvane" in line}
        result = subprocess.run([alone / "ovdb", "map", DEMO, "--output", self.folder / "map.png"],
                                env=environment(LD_LIBRARY_PATH=":".join(folders),
                                                ORVANE_SCHEMA_PATH=str(DEMO.parent.parent / "schemas")),
                                capture_output=True, text=True, check=False)
        self.assertEqual(result.returncode, 1)
        self.assertIn("libexec/orvane/ovdb-qt is missing: maps and spreadsheets need it", result.stderr)
        self.assertFalse((self.folder / "map.png").exists())

    def test_it_needs_no_display_and_takes_none(self):
        path = self.folder / "map.png"
        result = run("map", DEMO, "--output", path, "--size", "100x100",
                     env=environment(DISPLAY=":nonsense", QT_QPA_PLATFORM="xcb", QT_SCALE_FACTOR="3"))
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(identified(path, "%w %h"), "100 100")


if __name__ == "__main__":
    unittest.main()

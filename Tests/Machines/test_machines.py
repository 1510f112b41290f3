"""What of the machines can be tested without one: the scenarios can be read, names are understood,
and results become rows. Run by scripts/check-scripts."""
import pathlib
import sys
import tempfile
import unittest
import zlib

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
sys.path.append(str(pathlib.Path(__file__).resolve().parent / "guest"))
import day  # noqa: E402
from picture import Picture  # noqa: E402
import results  # noqa: E402
import scenario  # noqa: E402

TABLE = f"before\n{results.BEGIN}\nold head\n|---|\n| `a-12`: A |\n| `c-12`: C |\n{results.END}\nafter\n"


def result(**more):
    given = {"scenario": "a-12", "title": "A", "machine": "bookworm", "figures": {},
             "findings": [], "skipped": [], "on": "2026-11-22"}
    return results.Result(**{**given, **more})


class Scenarios(unittest.TestCase):
    def test_each_has_a_name_of_its_own_and_a_title(self):
        known = scenario.known()
        self.assertTrue(known)
        self.assertEqual(len({one.name for one in known}), len(known))
        self.assertTrue(all(one.title and callable(one.run) for one in known))

    def test_a_name_without_its_release_means_all(self):
        known = [scenario.Scenario(f"{name}-{release}", "", scenario.Machine(release), print)
                 for name in ("lid", "lid-mode") for release in ("bookworm", "trixie")]

        def names(*wanted):
            return [one.name for one in scenario.chosen(known, wanted)]

        self.assertEqual(names("lid"), ["lid-bookworm", "lid-trixie"])
        self.assertEqual(names("lid-mode-trixie"), ["lid-mode-trixie"])
        with self.assertRaises(KeyError) as raised:
            names("lid", "lig")
        self.assertEqual(raised.exception.args[0], "lig")


class Pictures(unittest.TestCase):
    def test_a_dump_is_read_though_its_pixels_look_like_its_head(self):
        shown = Picture.of_ppm(b"P6\n2 1\n255\n\n 2551")
        self.assertEqual((shown.width, shown.height, shown.pixels), (2, 1, b"\n 2551"))
        with self.assertRaises(ValueError):
            Picture.of_ppm(b"P5\n2 1\n255\n12")

    def test_what_changed_is_in_the_least_box(self):
        before = Picture(4, 3, bytes(36))
        pixels = bytearray(36)
        pixels[(1 * 4 + 2) * 3 + 1] = pixels[(2 * 4 + 1) * 3] = 9
        self.assertEqual(Picture(4, 3, bytes(pixels)).changed(before), (1, 1, 3, 3))
        self.assertIsNone(before.changed(Picture(4, 3, bytes(36))))
        self.assertEqual(Picture(1, 1, bytes(3)).changed(before), (0, 0, 1, 1))

    def test_how_many_rows_are_the_same(self):
        shown = Picture(1, 4, b"abcdefghijkl")
        self.assertEqual(shown.same_rows(Picture(1, 4, b"abcdefghijkm")), 0.75)
        self.assertEqual(shown.same_rows(shown), 1)
        self.assertEqual(shown.same_rows(Picture(4, 1, b"abcdefghijkl")), 0)

    def test_brightness(self):
        self.assertEqual(Picture(1, 1, bytes(3)).brightness(), 0)
        self.assertEqual(Picture(1, 1, b"\xff\xff\0").brightness(), 170)

    def test_what_is_saved_is_a_png_of_these_rows(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "a.png"
            Picture(1, 2, b"abcdef").save(path)
            data = path.read_bytes()
        self.assertEqual(data[:8], b"\x89PNG\r\n\x1a\n")
        begin = data.index(b"IDAT") + 4
        self.assertEqual(zlib.decompress(data[begin:data.index(b"IEND") - 8]), b"\0abc\0def")


class Day(unittest.TestCase):
    def test_numbers_have_names(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "status"
            path.write_text("55d0-7ffd ---p 00000000 [rollup]\nRss:  12 kB\nusage_usec 7\nName: a\n")
            self.assertEqual(day.fields(path), {"Rss": 12, "usage_usec": 7})

    def test_a_hold_is_a_lock_of_staylit_on_the_idle_machine(self):
        with tempfile.TemporaryDirectory() as folder:
            locks = pathlib.Path(folder)
            (locks / "1").write_text("WHO=Staylit\nWHAT=sleep\nMODE=delay\n")
            (locks / "2").write_text("WHO=Exporter\nWHAT=idle\nMODE=block\n")
            self.assertFalse(day.is_held(locks))
            (locks / "3").write_text("WHO=Staylit\nWHAT=idle\nMODE=block\n")
            self.assertTrue(day.is_held(locks))

    def test_each_work_ends_within_its_hour(self):
        self.assertTrue(all(hour < day.HOURS and seconds + 60 < day.HOUR
                            for hour, (_, seconds) in day.WORK.items()))


class Results(unittest.TestCase):
    def test_a_span_has_the_shortest_and_the_longest(self):
        self.assertEqual(results.span([14.6, 13.2, 15.4]), "13 to 15 s")
        self.assertEqual(results.span([14.6, 15.4]), "15 s")
        self.assertEqual(results.span([]), "–")

    def test_a_row_has_what_was_measured(self):
        row = result(figures={"held after": [13, 14], "asleep after work": [50, 60],
                              "asleep by its lid": [1]},
                     findings=["it slept"]).row()
        self.assertEqual(row, "| `a-12`: A | bookworm | 13 to 14 s | – | 50 to 60 s | 3 | 1 | "
                              "2026-11-22 |")

    def test_a_row_replaces_that_of_its_scenario(self):
        text = results.with_row(TABLE, "a-12", "| `a-12`: new |")
        self.assertIn("| `a-12`: new |\n| `c-12`: C |\n", text)
        self.assertNotIn("A |", text)
        self.assertTrue(text.startswith("before\n") and text.endswith("\nafter\n"))

    def test_a_new_row_stands_in_its_place(self):
        text = results.with_row(TABLE, "b-12", "| `b-12`: B |")
        self.assertIn("| `a-12`: A |\n| `b-12`: B |\n| `c-12`: C |\n", text)

    def test_what_is_saved_can_be_read(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "result.json"
            result(skipped=["a battery"]).save(path)
            self.assertEqual(results.load(path), result(skipped=["a battery"]))


if __name__ == "__main__":
    unittest.main()

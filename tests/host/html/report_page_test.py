"""What stands on the pages of `orvane report --html`."""

import os
import pathlib
import re
import stat
import tempfile
import unittest

from pages import durations, make_page, make_store, parse, report

HOSTILE = "</script></title><script>document.title='taken'</script>\"' onfocus=x & \u0007 ü 漢字 🙂"
APPLICATIONS = {
    "org.example.Editor": ("Editor", "2563ebff", "Work"),
    "org.example.Browser": ("<b>Browser</b> & \"friends\"", "fff3b0ff", None),
    "org.example.Terminal": ("Terminal", "0b0f19ff", "Work"),
    "org.example.Player": (None, None, None),
}
RECORDINGS = [
    ("org.example.Editor", "2026-03-02T08:00:00", "2026-03-02T09:30:00", "report.txt", False),
    ("org.example.Editor", "2026-03-02T09:30:00", "2026-03-02T09:30:20", "a glance", False),
    ("org.example.Editor", "2026-03-02T09:30:20", "2026-03-02T10:15:00", "report.txt", False),
    ("org.example.Editor", "2026-03-02T10:15:00", "2026-03-02T10:45:00", HOSTILE, False),
    ("org.example.Editor", "2026-03-02T11:00:00", "2026-03-02T12:00:00", "report.txt", True),
    ("org.example.Browser", "2026-03-02T12:00:00", "2026-03-02T13:10:30.5", None, False),
    ("org.example.Terminal", "2026-03-02T13:15:00", "2026-03-02T13:15:40", "make", False),
    ("org.example.Player", "2026-03-02T22:30:00", "2026-03-03T01:20:00", "Nocturne", False),
    ("org.example.Browser", "2026-03-03T09:00:00", "2026-03-03T09:10:00", "news", False),
    ("org.example.Editor", "2026-03-29T00:30:00", "2026-03-29T02:00:00", "night", False),
    ("org.example.Editor", "2026-03-30T10:00:00", "2026-03-30T09:00:00", "clock set back", False),
]


def rows_of(table):
    return [[cell for cell in row.children if cell.tag in ("th", "td")] for row in table.all("tr")]


def totals_of(page):
    """(name, seconds) of each row of the table of totals."""
    return [(row[0].text(), row[2].first("data").attributes["value"])
            for row in rows_of(page.first("table", "totals").first("tbody"))]


def heat_of(page):
    """Row name to {hour: seconds}."""
    return {row[0].text(): {hour: float(cell.first("data").attributes["value"])
                            for hour, cell in enumerate(row[1:25]) if list(cell.all("data"))}
            for row in rows_of(page.first("table", "heat").first("tbody"))}


class ReportPage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.store = make_store(APPLICATIONS, RECORDINGS, [("Work", "1d4ed8ff")])

    def test_totals_are_those_of_the_report(self):
        for range_text in ("2026-03-02", "2026-03-02..2026-03-03", "2026-03-02..2026-03-08", "all"):
            page = parse(make_page(self.store, range_text))
            expected = durations(self.store, range_text)
            self.assertEqual([seconds for _, seconds in totals_of(page)], [seconds for _, seconds in expected])
            self.assertEqual([name for name, _ in totals_of(page)],
                             [name or "org.example.Player" for name, _ in expected])

    def test_timeline_shows_each_application_idle_time_and_presence(self):
        page = parse(make_page(self.store, "2026-03-02..2026-03-03"))
        monday, tuesday = page.all("section", "day")
        lanes = {lane.attributes["aria-label"]: list(lane.all("li")) for lane in monday.all("ol", "lane")}
        self.assertEqual(list(lanes), ["Editor", "org.example.Player", "<b>Browser</b> & \"friends\"", "Terminal",
                                       "Idle"])
        # A short look aside does not divide a stretch, another title does.
        editor = [re.sub(r"\s+", " ", block.text()) for block in lanes["Editor"]]
        self.assertEqual(editor[0], "report.txt 2 h 14 min a glance 20 s Editor, 08:00 – 10:15, 2 h 15 min")
        self.assertEqual(len(editor), 2)
        self.assertIn("Idle 11:00 – 12:00, 1 h 0 min", lanes["Idle"][0].text())
        # The axis is that of both days, from 00:00 to 24:00; what lies beyond a day is shown on the next.
        self.assertEqual(lanes["Idle"][0].attributes["style"], "left:45.833%;width:4.167%")
        self.assertIn("org.example.Player, 22:30 – 00:00, 1 h 30 min", lanes["org.example.Player"][0].text())
        self.assertIn("org.example.Player, 00:00 – 01:20, 1 h 20 min", tuesday.first("ol", "lane").text())
        self.assertEqual(monday.first("p", "presence").text(), "2026-03-02 • 08:00 - 13:15")
        table = rows_of(monday.first("table", "list"))
        self.assertEqual([cell.text() for cell in table[1]][:4], ["08:00", "10:15", "Editor",
                                                                 "report.txta glance"])
        self.assertEqual(len(table) - 1, sum(map(len, lanes.values())))

    def test_stored_text_is_never_markup(self):
        file = make_page(self.store, "2026-03-02", "--windows")
        page = parse(file)
        self.assertEqual(len(list(page.all("script"))), 1)
        shown = HOSTILE.replace("\u0007", " ")
        for part in (page.first("ol", "lane"), page.first("table", "list"), page.first("section", "windows")):
            self.assertIn(shown, part.text())
        self.assertNotRegex(file.read_text(), r"(?i)https?:|\bsrc=|url\(|@import|<link|<b>Browser")

    def test_heat_map_counts_the_hours_of_the_local_clock(self):
        heat = heat_of(parse(make_page(self.store, "2026-03-02..2026-03-08")))
        self.assertEqual(list(heat), ["Mon 2 Mar", "Tue 3 Mar", "Wed 4 Mar", "Thu 5 Mar", "Fri 6 Mar", "Sat 7 Mar",
                                      "Sun 8 Mar"])
        self.assertEqual(heat["Mon 2 Mar"], {8: 3600, 9: 3600, 10: 2700, 12: 3600, 13: 670.5, 22: 1800, 23: 3600})
        self.assertEqual(heat["Tue 3 Mar"], {0: 3600, 1: 1200, 9: 600})
        # The hour from two to three is left out that night.
        heat = heat_of(parse(make_page(self.store, "2026-03-28..2026-03-31", zone="Europe/Berlin")))
        self.assertEqual(heat["Sun 29 Mar"], {1: 1800, 3: 3600})
        self.assertEqual(heat["Mon 30 Mar"], {})

    def test_longer_ranges_are_gathered_into_weeks_months_and_years(self):
        recordings = [("org.example.Editor", day + "T10:00:00", day + "T11:00:00", "x", False)
                      for day in ("2026-01-05", "2026-01-06", "2026-06-01", "2029-03-31", "2061-01-01")]
        store = make_store({"org.example.Editor": ("Editor", None, None)}, recordings)
        page = parse(make_page(store, "2026-01-05..2026-07-31"))
        heat = heat_of(page)
        self.assertEqual(page.first("table", "heat").first("td").text(), "")
        self.assertEqual(page.first("td", "h2").text(), "17")  # minutes on an average day of the week
        self.assertEqual(len(heat), 22)  # from the first to the last use
        self.assertEqual(heat["5 – 11 Jan 2026"], {10: 7200})
        self.assertEqual(heat["1 Jun 2026"], {10: 3600})
        heat = heat_of(parse(make_page(store, "2026-01-05..2040-12-31")))
        self.assertEqual((len(heat), heat["January 2026"]), (39, {10: 7200}))
        self.assertEqual({name: hours[10] for name, hours in heat_of(parse(make_page(store, "all"))).items()},
                         {"2026": 10800, "2029": 3600, "2061": 3600})

    def test_many_windows_are_summed_up(self):
        recordings = [("org.example.Editor", f"2026-03-02T{8 + i // 60:02}:{i % 60:02}:00",
                       f"2026-03-02T{8 + i // 60:02}:{i % 60:02}:30", f"title {i}", False) for i in range(300)]
        store = make_store({"org.example.Editor": ("Editor", None, None)}, recordings)
        rows = rows_of(parse(make_page(store, "2026-03-02", "--windows")).first("section", "windows"))[1:]
        self.assertEqual((len(rows), rows[-1][0].text()), (201, "100 more titles"))
        self.assertEqual(sum(float(row[1].first("data").attributes["value"]) for row in rows), 9000)

    def test_nothing_recorded(self):
        for store in (self.store, pathlib.Path(tempfile.mkdtemp())):
            for range_text in ("2025-01-01", "2025-01-01..2025-12-31"):
                page = parse(make_page(store, range_text))
                self.assertIn("Nothing was recorded", page.first("main").text())
                self.assertFalse(list(page.all("table")))

    def test_file_is_private_and_replaced_whole(self):
        folder = pathlib.Path(tempfile.mkdtemp())
        file = folder / "page.html"
        file.write_text("old")
        file.chmod(0o644)
        report(self.store, "2026-03-02", "--html", file)
        self.assertEqual(stat.S_IMODE(file.stat().st_mode), 0o600)
        self.assertTrue(file.read_text().startswith("<!DOCTYPE html>"))
        self.assertEqual(os.listdir(folder), ["page.html"])

    def test_a_file_that_cannot_be_written_is_told(self):
        folder = pathlib.Path(tempfile.mkdtemp())
        (folder / "folder").mkdir()
        for file, reason in (("missing/page.html", "cannot be written: No such file"), ("folder", "is no regular file")):
            outcome = report(self.store, "2026-03-02", "--html", folder / file, check=False)
            self.assertEqual(outcome.returncode, 1)
            self.assertIn(f'The file "{folder / file}" {reason}', outcome.stderr)
        self.assertEqual(os.listdir(folder), ["folder"])
        for other in ("--json", "--csv"):
            self.assertEqual(report(self.store, "--html", folder / "x", other, check=False).returncode, 2)


if __name__ == "__main__":
    unittest.main(argv=["report_page_test"])

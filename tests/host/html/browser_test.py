"""Pages of `orvane report --html` as a browser shows them."""

import json
import pathlib
import sys
import unittest

import browser
from pages import durations, make_page, make_store

SCREENSHOTS = pathlib.Path(sys.argv[2])
TITLE = "</script></title><script>document.title='taken'</script>\"' ü 漢字"
APPLICATIONS = {
    "org.example.Editor": ("Editor", "2563ebff", "Work"),
    "org.example.Terminal": ("Terminal", "0b0f19ff", "Work"),
    "org.example.Browser": ("Web Browser", "f97316ff", None),
    "org.example.Mail": ("Mail", "0ea5e9ff", "Talk"),
    "org.example.Chat": ("Chat", "a855f7ff", "Talk"),
    "org.example.Music": ("Music player with a rather long name", "fef3a0ff", None),
    "org.example.Sheets": ("Spreadsheet", None, None),
}
GROUPS = [("Work", "1d4ed8ff"), ("Talk", "0e7490ff")]

# Texts and marks that do not stand out from what lies behind them, as the Web Content Accessibility Guidelines
# count it: 4.5 for text, 3 for a mark or its edge.
TOO_FAINT = """(() => {
  const parts = (color) => color.match(/[\\d.]+/g).map(Number);
  const luminance = (color) => parts(color).slice(0, 3).map((c) => c / 255)
    .map((c) => (c <= 0.04045 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4))
    .reduce((sum, c, i) => sum + c * [0.2126, 0.7152, 0.0722][i], 0);
  const contrast = (a, b) => {
    const [x, y] = [luminance(a), luminance(b)];
    return (Math.max(x, y) + 0.05) / (Math.min(x, y) + 0.05);
  };
  const behind = (element) => {
    for (; element; element = element.parentElement) {
      const color = getComputedStyle(element).backgroundColor;
      if ((parts(color)[3] ?? 1) > 0) return color;
    }
  };
  const faint = [];
  let texts = 0, marks = 0;
  for (const element of document.querySelectorAll('body *:not(script)')) {
    const style = getComputedStyle(element), tip = element.closest('.tip');
    if (tip && getComputedStyle(tip).clipPath !== 'none') continue;  // hidden
    if ([...element.childNodes].some((n) => n.nodeType === 3 && n.data.trim())) {
      ++texts;
      if (contrast(style.color, behind(element)) < 4.5) faint.push(element.outerHTML.slice(0, 99));
    }
    if (element.matches('.lane:not(.idle) > li, .bar i, .swatch')) {
      ++marks;
      const edge = style.boxShadow.match(/rgba?\\([^)]*\\)/)[0], page = behind(element.parentElement);
      const edgeStands = (parts(edge)[3] ?? 1) > 0 && contrast(edge, page) >= 3;
      if (contrast(style.backgroundColor, page) < 3 && !edgeStands) faint.push(element.outerHTML.slice(0, 99));
    }
  }
  return {faint, texts, marks};
})()"""

# What is shown of the element with the focus.
FOCUS = """(() => {
  const item = document.activeElement, style = getComputedStyle(item), tip = item.querySelector('.tip');
  const box = tip && tip.getBoundingClientRect();
  return {lane: item.parentElement.getAttribute('aria-label'), tag: item.tagName, text: item.textContent,
    place: [...item.parentElement.children].indexOf(item), outlined: style.outlineStyle !== 'none' && style.outlineWidth,
    tip: tip && getComputedStyle(tip).clipPath === 'none' && box.width > 60 && box.left >= 0 && box.right <= innerWidth};
})()"""


def minutes(day, start, length):
    return f"{day}T{start // 60:02}:{start % 60:02}:00", f"{day}T{(start + length) // 60:02}:{(start + length) % 60:02}:00"


def recordings():
    """Four weeks; the applications take turns, with a break at noon."""
    names = list(APPLICATIONS)
    for day in range(1, 29):
        date = f"2026-03-{day:02}"
        if day % 7 == 1:
            continue
        at = 8 * 60 + day * 7 % 50
        for turn in range(9 + day % 5):
            name = names[(turn * turn + day) % len(names)] if turn % 3 else names[turn % 2]
            length = 10 + (turn * 37 + day * 11) % 45
            yield name, *minutes(date, at, length), f"window {turn}" if turn else TITLE, False
            at += length + (5 if turn == 2 else 0)
            if turn == 4:
                yield "org.example.Editor", *minutes(date, at, 45), "window 4", True
                at += 45


class ReportInBrowser(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.store = make_store(APPLICATIONS, recordings(), GROUPS)
        cls.pages = {name: make_page(cls.store, range_text, "--windows") for name, range_text in (
            ("day", "2026-03-04"), ("days", "2026-03-04..2026-03-06"), ("week", "2026-03-02..2026-03-08"),
            ("month", "2026-03-01..2026-03-31"))}
        cls.browser = browser.Browser()
        cls.addClassCleanup(cls.browser.close)

    def evaluate(self, expression):
        return self.browser.evaluate(expression)

    def count(self, selector):
        return self.evaluate(f"document.querySelectorAll({json.dumps(selector)}).length")

    def test_content(self):
        self.browser.open(self.pages["day"])
        self.assertEqual(self.evaluate("document.title"), "Wednesday, 4 March 2026 – Orvane")
        self.assertEqual(self.count("script"), 1)
        shown = self.evaluate("[...document.querySelectorAll('.totals tbody tr')].map((row) => "
                              "[row.querySelector('bdi').textContent, row.querySelector('data').value])")
        expected = durations(self.store, "2026-03-04")
        self.assertEqual(shown, [list(row) for row in expected])
        groups = [name for name, _ in GROUPS]
        used = [name for name, _ in expected if name not in groups]
        self.assertCountEqual(
            self.evaluate("[...document.querySelectorAll('.lane')].map((lane) => lane.ariaLabel)"), used + ["Idle"])
        self.assertIn(TITLE, self.evaluate("document.querySelector('.lane').textContent"))
        # The colour of a lane's stretches is the application's own.
        self.assertEqual(self.evaluate("getComputedStyle(document.querySelector('[aria-label=Editor] li'))"
                                       ".backgroundColor"), "rgb(37, 99, 235)")
        self.browser.open(self.pages["month"])
        self.assertEqual((self.count(".heat tbody tr"), self.count(".heat tbody td:not(.num)")), (31, 31 * 24))
        sums = self.evaluate("[[...document.querySelectorAll('.heat td:not(.num) data')], [document.querySelector("
                             "'tfoot data')]].map((list) => list.reduce((sum, data) => sum + Number(data.value), 0))")
        self.assertEqual(sums[0], sums[1])
        self.assertGreater(sums[0], 0)

    def test_nothing_is_loaded(self):
        for file in self.pages.values():
            self.browser.open(file)
            self.assertEqual(self.evaluate("fetch('data:,x').then(() => 'loaded', () => 'refused')"), "refused")
            requests = [event["params"]["request"]["url"] for event in self.browser.events
                        if event.get("method") == "Network.requestWillBeSent"]
            self.assertEqual([url for url in requests if url != "data:,x"], [pathlib.Path(file).as_uri()])
            told = [event["params"] for event in self.browser.events
                    if event.get("method") in ("Log.entryAdded", "Runtime.exceptionThrown")]
            self.assertEqual([entry for entry in told if "data:,x" not in json.dumps(entry)], [])

    def test_contrast_and_width_in_both_schemes(self):
        for name, file in self.pages.items():
            for scheme in ("light", "dark"):
                for width in (1280, 400):
                    self.browser.open(file, width=width, scheme=scheme)
                    if width == 1280:
                        self.browser.screenshot(SCREENSHOTS / f"report-{name}-{scheme}.png")
                    elif name == "day":
                        self.browser.screenshot(SCREENSHOTS / f"report-{name}-{scheme}-narrow.png")
                    self.assertLessEqual(self.evaluate("document.scrollingElement.scrollWidth"), width)
                    self.browser.press("Tab")  # the first stretch shows what it is
                    found = self.evaluate(TOO_FAINT)
                    self.assertEqual(found["faint"], [])
                    self.assertGreater(min(found["texts"], found["marks"]), 15)
                background = self.evaluate("getComputedStyle(document.body).backgroundColor")
                self.assertEqual(background, {"light": "rgb(255, 255, 255)", "dark": "rgb(21, 24, 28)"}[scheme])

    def test_keyboard(self):
        self.browser.open(self.pages["day"])
        lanes = self.evaluate("[...document.querySelectorAll('.lane')].map((lane) => lane.ariaLabel)")

        def press(key, modifiers=0):
            self.browser.press(key, modifiers)
            return self.evaluate(FOCUS)

        focus = press("Tab")
        self.assertEqual((focus["lane"], focus["place"], focus["tip"]), (lanes[0], 0, True))
        self.assertEqual(focus["outlined"], "2px")
        focus = press("ArrowRight")
        self.assertEqual((focus["lane"], focus["place"], focus["tip"]), (lanes[0], 1, True))
        self.browser.screenshot(SCREENSHOTS / "report-day-focus.png")
        focus = press("End")
        self.assertTrue(focus["tip"])
        self.assertEqual(focus["place"], self.count(".lane:first-of-type > li") - 1)
        focus = press("ArrowDown")
        self.assertEqual((focus["lane"], focus["tip"]), (lanes[1], True))
        self.assertEqual(press("Tab")["lane"], lanes[2])
        self.assertEqual(press("Tab", modifiers=8)["lane"], lanes[1])
        self.assertEqual(press("Escape")["tag"], "BODY")

        self.browser.open(self.pages["week"])
        shown = "getComputedStyle(document.querySelector('.heat tbody td data')).opacity"
        self.assertEqual(self.evaluate(shown), "0")
        self.assertEqual(press("Tab")["tag"], "TR")
        self.assertEqual(self.evaluate(shown), "1")
        self.browser.screenshot(SCREENSHOTS / "report-week-focus.png")
        self.assertEqual(press("ArrowDown")["place"], 1)

    def test_pointer(self):
        self.browser.open(self.pages["day"])
        self.browser.hover(".lane li")
        self.assertNotEqual(self.evaluate("getComputedStyle(document.querySelector('.lane .tip')).clipPath"),
                            "inset(50%)")

    def test_screen_reader(self):
        self.browser.open(self.pages["day"])
        self.evaluate("document.querySelector('details').open = true")
        texts = self.browser.accessible_texts()
        for role, name in (("heading", "Timeline"), ("group", "Timeline, Wednesday, 4 March 2026"),
                           ("list", "Editor"), ("list", "Idle"), ("StaticText", TITLE),
                           ("table", "Time by group and application, longest first"),
                           ("table", "Wednesday, 4 March 2026, in order of time"), ("rowheader", "Editor"),
                           ("columnheader", "Time")):
            self.assertIn((role, name), texts)


if __name__ == "__main__":
    if not browser.executable():
        print("no browser: chromium is not installed")
        sys.exit(77)
    unittest.main(argv=["browser_test"])

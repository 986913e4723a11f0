#!/usr/bin/env python3
"""The page that `zarn-shadow display` writes."""

import csv
import io
import math
import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import COMPONENTS
from display_support import BLOCKS, DisplayTest, REFLECTED
from scan_support import CENTRE, TOP, random_events, random_pmts

HOSTILE = ['</script><script>alert(1)</script>', '</noscript></title><img src=x onerror="a">',
           '<!-- zarn-data -->', "a & b's \"c\" <d>", "\u202eright to left", "10" * 5000, ""]


class Pages(DisplayTest):
    def test_the_verdicts_and_details_are_those_of_scan(self):
        geometry = self.reference_tables()
        events, pmts = random_events(9, 800), random_pmts(60, 801)
        columns = "event,pmt,code,item,critical_by,critical_tolerance"
        rows = self.scan(events, pmts, "--columns", columns.partition("pmt,")[2], geometry=geometry)
        rows = list(csv.DictReader(io.StringIO(rows.out.decode(), newline="")))
        page = self.page("--events", "events.csv", "--pmts", "pmts.csv", geometry=geometry)
        self.assertEqual(page.blocks["verdicts"], [int(row["code"]) for row in rows])
        for pair, row in enumerate(rows):
            details = [page.blocks[name][pair]
                       for name in ("angles", "items", "limits", "limit-by")]
            if row["by"] == "no path":
                self.assertTrue(math.isnan(details[0]) and math.isnan(details[2]))
                continue
            self.assertEqual(page.text["itemNames"][details[1]], row["item"])
            if row["by"]:
                self.assertEqual(COMPONENTS[details[3] - 1], row["by"])
            else:
                self.assertEqual(["", *COMPONENTS][details[3]], row["critical_by"])
                self.assertAlmostEqual(details[2], float(row["critical_tolerance"]), places=2)

    def test_reflected_light_is_that_of_scan(self):
        geometry = self.reference_tables()
        events, pmts = [(0.0, 0.0, 7500.0), (6000.0, 1000.0, 0.0)], random_pmts(100, 802)
        rows = self.rows(events, pmts, "--reflections", geometry=geometry)
        page = self.page("--events", "events.csv", "--pmts", "pmts.csv", "--reflections",
                         geometry=geometry)
        wanted = [["", *COMPONENTS].index(row.by) for row in rows if "Reflection" in row.type]
        found = [verdict for verdict in page.blocks["reflected-verdicts"] if verdict != 11]
        self.assertEqual([v for v in found if v <= 6], wanted)
        self.assertTrue(page.text["hasReflections"])
        for name in {**BLOCKS, **REFLECTED}:
            if not name.endswith("positions"):
                self.assertEqual(len(page.blocks[name]), 200, name)

    def test_positions_and_names_are_those_of_the_files(self):
        events = {"a": (1.5, -2.25, 3000.125), "b": (0.0, 0.0, 0.0)}
        pmts = {"7": TOP, "x y": (8300.0, 0.1, 0.0), "7 ": (0.0, 8300.0, 1e-9)}
        self.events(events)
        self.pmts(pmts)
        page = self.page("--events", "events.csv", "--pmts", "pmts.csv")
        self.assertEqual(page.text["eventNames"], list(events))
        self.assertEqual(page.text["pmtNames"], list(pmts))
        self.assertEqual(page.blocks["event-positions"], [x for p in events.values() for x in p])
        self.assertEqual(page.blocks["pmt-positions"], [x for p in pmts.values() for x in p])

    def test_the_text_tells_run_tolerance_wavelength_and_tables(self):
        page = self.page("--at", "0, 0, 3000", "--pmts", self.pmts([TOP]), "--run", 7,
                         "--tolerance", 40, "--wavelength", 500, "--title", "A run")
        text = page.text
        self.assertEqual((text["run"], text["tolerance"], text["wavelength"], text["detector"],
                          text["title"], text["eventNames"]),
                         (7, 40, 500, "tables", "A run", ["0"]))
        self.assertEqual(page.elements.title, "A run")
        self.assertRegex(text["fingerprint"], "^[0-9a-f]{64}$")
        states = [part["state"] for part in text["hardware"]]
        self.assertEqual(states, ["off", "off", "off", "on", "off", "off"])
        self.assertEqual(text["hardware"][3]["spots"],
                         [{"name": "anchor 0", "radius": 60, "at": [0, 0, -5800]}])
        self.assertEqual(text["vessel"], {"innerRadius": 5800, "outerRadius": 5860,
                                          "neckRadius": 700, "neckTop": 5860})

    def test_no_name_is_read_as_html(self):
        plain = self.page("--at", "0,0,0", "--pmts", self.pmts([TOP]))
        events = {f"{i}{name}": CENTRE for i, name in enumerate(HOSTILE)}
        self.events(events)
        self.pmts({f"{i}{name}": TOP for i, name in enumerate(HOSTILE)})
        for title in HOSTILE:
            page = self.page("--events", "events.csv", "--pmts", "pmts.csv", "--title", title)
            self.assertEqual(page.text["eventNames"], list(events))
            self.assertEqual(page.text["title"], title)
            self.assertEqual(page.elements.title, title or "Shadow display")
            tags = [tag for tag in page.tags if tag not in ("tr", "td")]
            self.assertEqual(tags, [tag for tag in plain.tags if tag not in ("tr", "td")])
            self.assertEqual(page.html.count("</script>"), plain.html.count("</script>"))
            for name in events:
                self.assertIn(name, page.elements.words if len(name) < 5000 else
                              "".join(page.elements.words))

    def test_names_that_are_not_text_are_replaced(self):
        self.write("pmts.csv", b"pmt,x,y,z\na\xff\xc3,0,0,8300\n\xed\xa0\x80,0,8300,0\n")
        self.write("events.csv", b"event,x,y,z\n\xfe,0,0,0\n")
        page = self.page("--events", "events.csv", "--pmts", "pmts.csv", "--title", "x")
        for name in page.text["pmtNames"] + page.text["eventNames"]:
            self.assertIn("\ufffd", name)

    def test_without_scripts_the_counts_of_events_are_a_table(self):
        self.scan(random_events(3, 803), random_pmts(50, 804), "--per-event", "counts.csv")
        counts = list(csv.DictReader(io.StringIO(self.read("counts.csv").decode())))
        page = self.page("--events", "events.csv", "--pmts", "pmts.csv")
        words = page.elements.words
        begin = words.index("e0")
        for i, row in enumerate(counts):
            self.assertEqual(words[begin + 9 * i:begin + 9 * i + 3],
                             [row["event"], row["paths"], row["shadowed"]])
        self.assertNotIn("more", page.html.rpartition("</table>")[2].partition("<script")[0])
        self.events([CENTRE] * 510)
        words = self.page("--events", "events.csv", "--pmts", "pmts.csv").elements.words
        self.assertIn("e499", words)
        self.assertNotIn("e500", words)
        self.assertIn("and 10 more", words)

    def test_the_page_does_not_depend_on_the_number_of_threads(self):
        self.events(random_events(20, 805))
        self.pmts(random_pmts(100, 806))
        geometry = self.reference_tables()
        pages = {self.display("--events", "events.csv", "--pmts", "pmts.csv", "-o", "-",
                              "--threads", threads, geometry=geometry).out for threads in (1, 2, 5)}
        self.assertEqual(len(pages), 1)

    def test_a_page_too_large_for_paths_holds_verdicts(self):
        self.write("events.csv", "event,x,y,z\n" + 1000 * "e,0,0,3000\n")
        self.pmts(random_pmts(2500, 807))
        result = self.display("--events", "events.csv", "--pmts", "pmts.csv", "-o", "page.html")
        self.assertIn("zarn-shadow: the page holds no light paths, only verdicts: with paths it "
                      "would be larger than 20 MB\n", result.err)
        page = self.read("page.html")
        self.assertLess(len(page), 20_000_000)
        self.assertIn(b'"content":"verdicts"', page)
        self.assertNotIn(b"zarn-angles", page)

    def test_more_pairs_than_a_page_holds_are_refused(self):
        self.write("events.csv", "event,x,y,z\n" + 40_001 * "e,0,0,3000\n")
        self.pmts(random_pmts(1000, 808))
        self.assertIn("events.csv: a page holds at most 40,000,000 pairs of event and PMT, so "
                      "40000 events with these PMTs; show some of the events",
                      self.refused("--events", "events.csv", "--pmts", "pmts.csv"))


if __name__ == "__main__":
    unittest.main(verbosity=2)

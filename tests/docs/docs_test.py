#!/usr/bin/env python3
"""Commands, code, numbers and links in the documents are correct."""

import json
import math
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import unittest

SOURCE = pathlib.Path(os.environ["ZARN_SOURCE_DIR"])
ZARN_SHADOW = os.environ["ZARN_SHADOW"]
PATH = f"{pathlib.Path(ZARN_SHADOW).parent}:{os.environ['PATH']}"
VERDICT_SHARES = os.environ["ZARN_VERDICT_SHARES"]
DETECTOR = SOURCE / "data" / "reference-detector"
README = (SOURCE / "README.md").read_text()
COMMANDS = (SOURCE / "docs" / "commands.md").read_text()
MAP = (SOURCE / "docs" / "map.md").read_text()
VERDICTS = (SOURCE / "docs" / "verdicts.md").read_text()
PYTHON = (SOURCE / "docs" / "python.md").read_text()
PAGES = [p for p in SOURCE.rglob("*.md")
         if not {"build", ".venv", "node_modules"} & set(p.relative_to(SOURCE).parts)]


def blocks(text, language):
    return re.findall(rf"^```{language}\n(.*?)^```$", text, re.MULTILINE | re.DOTALL)


# Runs the blocks of a page one after another, and tells what each of them prints.
RUN_BLOCKS = """
import contextlib, io, json, sys
printed, names = [], {}
for block in json.load(sys.stdin):
    with contextlib.redirect_stdout(io.StringIO()) as output:
        exec(compile(block, "block", "exec"), names)
    printed.append(output.getvalue())
print(json.dumps(printed))
"""


def commands(text):
    """The command lines of a page, each as a list of words."""
    lines = "\n".join(blocks(text, "sh")).replace("\\\n", " ").splitlines()
    examples = re.findall(r"^Example:\n((?:  .*\n)+)", text.replace("\\\n", " "), re.MULTILINE)
    lines += "".join(examples).splitlines()
    return [words for words in (shlex.split(line, comments=True) for line in lines) if words]


def with_data(folder):
    """A folder with the data/ that the commands of the pages use."""
    (pathlib.Path(folder) / "data").symlink_to(SOURCE / "data")
    return folder


def unindented(text):
    return [line.strip() for line in text.splitlines() if line.strip()]


class Documents(unittest.TestCase):
    def test_code_is_quoted_from_an_example(self):
        examples = [unindented(p.read_text()) for p in SOURCE.glob("examples/*.[cC]*")]
        for page in PAGES:
            for block in blocks(page.read_text(), "cpp"):
                lines = unindented(block)
                found = any(lines == example[i:i + len(lines)]
                            for example in examples for i in range(len(example)))
                self.assertTrue(found, f"{page}: not in examples/:\n{block}")

    def test_links_have_targets(self):
        for page in PAGES:
            for link in re.findall(r"\]\(([^)#]+)[^)]*\)", page.read_text()):
                self.assertTrue("://" in link or (page.parent / link).exists(),
                                f"{page}: {link}")

    def test_the_help_texts_are_current(self):
        shown = {}
        for block in blocks(COMMANDS + MAP, "text"):
            line, text = block.split("\n", 1)
            shown[line] = text.strip()
        self.assertEqual(sorted(shown), [f"$ zarn-shadow {c} --help"
                                         for c in ("check", "display", "explain", "map", "scan",
                                                   "tables")])
        for line, text in shown.items():
            said = subprocess.run([ZARN_SHADOW, *line.split()[2:]],
                                  capture_output=True, text=True, check=True).stdout
            self.assertEqual(text, said.strip())

    def test_the_explanation_shown_is_that_of_the_command(self):
        (explain,) = (words for words in commands("".join(re.findall(
            r"^```sh\n.*?^```\n", COMMANDS, re.MULTILINE | re.DOTALL))) if "explain" in words)
        (shown,) = blocks(COMMANDS, "output")
        with tempfile.TemporaryDirectory() as folder:
            said = subprocess.run([ZARN_SHADOW, *explain[1:]], cwd=with_data(folder),
                                  capture_output=True, text=True, check=True).stdout
        for line in shown.splitlines():
            self.assertIn(line, said.splitlines())

    def test_what_is_shown_of_tables_is_what_the_command_prints(self):
        shown = blocks(COMMANDS, "console")
        self.assertGreater(len(shown), 1)
        with tempfile.TemporaryDirectory() as folder:
            (pathlib.Path(with_data(folder)) / "examples").symlink_to(SOURCE / "examples")
            for block in shown:
                lines, wanted = re.fullmatch(r"((?:\$ [^\n]*\n)+)(.*)", block,
                                             re.DOTALL).groups()
                said = subprocess.run(["bash", "-c", re.sub(r"^\$ ", "", lines, flags=re.M)],
                                      cwd=folder, env={**os.environ, "PATH": PATH},
                                      capture_output=True, text=True)
                self.assertEqual(said.stdout + said.stderr, wanted)

    def test_the_drawings_are_current(self):
        shown = {p.name: p.read_text() for p in (SOURCE / "docs").glob("*.svg")}
        del shown["performance.svg"]  # shows times, which differ between runs
        for script, program in (("draw-light-paths.py", ZARN_SHADOW),
                                ("draw-verdicts.py", ZARN_SHADOW),
                                ("draw-maps.py", ZARN_SHADOW),
                                ("draw-flow.py", VERDICT_SHARES)):
            with tempfile.TemporaryDirectory() as folder:
                subprocess.run([SOURCE / "docs" / script, program, folder], check=True)
                drawn = {p.name: p.read_text() for p in pathlib.Path(folder).iterdir()}
            self.assertNotEqual(drawn, {})
            for name, text in drawn.items():
                # Not assertEqual, which would print both.
                self.assertTrue(text == shown.pop(name, None),
                                f"docs/{name} is not what docs/{script} draws now")
        self.assertEqual(list(shown), [])

    def test_the_colours_of_the_drawings_are_those_of_the_palette(self):
        palette = (SOURCE / "display" / "palette.json").read_text()
        for drawing in (SOURCE / "docs").glob("*.svg"):
            if drawing.name != "performance.svg":
                used = set(re.findall(r"[\": ](#[0-9a-f]{6})\b", drawing.read_text()))
                self.assertEqual({c for c in used if f'"{c}"' not in palette}, set(), drawing)

    def test_every_command_shown_is_valid(self):
        for page in PAGES:
            for words in commands(page.read_text()):
                with self.subTest(page=page.name, command=shlex.join(words)):
                    self.check_command(words)

    def check_command(self, words):
        """Run commands that take seconds; check only that the others exist."""
        if words[0] == "zarn-shadow":
            with tempfile.TemporaryDirectory() as folder:
                result = subprocess.run([ZARN_SHADOW, *words[1:]], cwd=with_data(folder),
                                        capture_output=True, text=True)
            self.assertEqual(result.returncode, 0, result.stderr)
        elif words[0] == "zarn-shadow-cluster":
            pass  # tests/cluster runs them
        elif words[0] == "pip":
            self.assertEqual(words[1], "install")
        elif words[0] == "cmake":
            presets = json.loads((SOURCE / "CMakePresets.json").read_text())
            kind = {"--preset": "configure", "--build": "build", "--workflow": "workflow",
                    "--install": None}[words[1]]
            if kind is not None:
                self.assertIn(words[words.index("--preset") + 1],
                              [preset["name"] for preset in presets[f"{kind}Presets"]])
        else:
            self.assertTrue(os.access(SOURCE / words[0], os.X_OK))

    def test_the_counts_shown_are_those_of_the_source_scan(self):
        (demo,) = blocks(README, "text")
        self.assertEqual(demo.split(), self.counts("150"))
        shares = re.findall(r"^\| (\w+) \| ([\d.]+ %) \| ([\d.]+ %) \|$", VERDICTS, re.MULTILINE)
        at_0, at_150 = (dict(zip(words, words[2:])) for words in
                        (self.counts("0"), self.counts("150")))
        self.assertEqual(len(shares), 7)
        for component, *shown in shares:
            name = "shadowed" if component == "any" else component
            self.assertEqual([float(share[:-2]) for share in shown],
                             [float(at_0[name]), float(at_150[name])], component)
        any_at_0, any_at_150 = (f"{float(at['shadowed']):.1f} %" for at in (at_0, at_150))
        self.assertIn(f"blocks {any_at_0} at a tolerance of 0, and {any_at_150} at 150 mm",
                      " ".join(VERDICTS.split()))
        self.assertIn(f"at 0 the hardware itself blocks {any_at_0}", " ".join(README.split()))

    @staticmethod
    def counts(tolerance):
        """The words of the table that the source scan prints, up to the times."""
        said = subprocess.run(
            [ZARN_SHADOW, "scan", "--events", SOURCE / "data" / "source-scan.csv", "--pmts",
             SOURCE / "data" / "pmts.csv", "--geometry", DETECTOR, "--tolerance", tolerance,
             "-o", "/dev/null"], capture_output=True, text=True, check=True).stderr
        words = said[said.index("pairs"):].split()
        return words[:words.index("seconds")]

    def test_the_lengths_shown_follow_from_the_tables(self):
        tables = {(entry["table"], entry["index"]): entry["fields"]
                  for file in DETECTOR.glob("*.json") for entry in json.loads(file.read_text())}
        rope = tables["SOLID", "hold_down_rope"]
        cylinder = math.hypot(rope["rope_x"][1], rope["rope_y"][1], rope["rope_z"][1])
        support = tables["GEO_LOCATIONS", "hold_up_rope_anchors"]
        outside = math.hypot(support["x"][0], support["y"][0], support["z"][0])
        boss = tables["SOLID", "neck_boss"]
        foot = tables["GEO", "av"]["neck_boss_z"] - boss["half_height1"] - boss["half_height2"]
        limit = math.degrees(math.acos(foot / tables["SOLID", "acrylic_vessel_inner"]["r_sphere"]))
        plate = 2 * tables["SOLID", "belly_plate_vintar"]["octahedron_half_height"]
        anchor = tables["SOLID", "ncd_anchor"]["half_z"]
        page = " ".join(VERDICTS.split())
        for words in (
                f"radius {cylinder:,.0f} mm",
                f"not above {math.sqrt(8500**2 - cylinder**2):,.0f} mm",
                f"a rope of {rope['r_rope']:g} mm radius blocks {rope['r_rope'] + 150:g} mm",
                f"radius {outside:,.0f} mm",
                f"not above {math.sqrt(8500**2 - outside**2):,.0f} mm",
                "a rope of {0:g} mm radius blocks {1:g} mm".format(
                    *(tables["SOLID", "hold_up_rope"]["r_rope"] + t for t in (0, 150))),
                f"asin({cylinder:,.0f} mm / distance of the start) apart: "
                f"{math.degrees(math.asin(cylinder / 7000)):.0f} degrees for a start 7 m",
                f"a square of {plate:,.0f} mm", f"the square has {plate + 300:,.0f} mm",
                f"{anchor:g} mm become {anchor + 150:g} mm",
                f"= {foot:,.0f} mm", f"polar angle, {limit:.2f} degrees"):
            self.assertIn(words, page)

    def test_a_path_away_from_all_ropes_is_blocked_as_shown(self):
        start, end = re.search(r"from\(([-\d.,]+)\)to\(([-\d.,]+)\)",
                               "".join(VERDICTS.split())).groups()
        with tempfile.TemporaryDirectory() as folder:
            (pathlib.Path(folder) / "pmts.csv").write_text("pmt,x,y,z\n0," + end)
            verdicts = subprocess.run(
                [ZARN_SHADOW, "scan", f"--at={start}", "--pmts", "pmts.csv",
                 "--geometry", DETECTOR],
                cwd=folder, capture_output=True, text=True, check=True).stdout
        self.assertIn(",Water,1,SupportRope\n", verdicts)

    def test_the_verdicts_in_a_ROOT_file_are_read_as_shown(self):
        (program,) = blocks(COMMANDS, "python")
        python = next((p for p in (SOURCE / ".venv" / "bin" / "python", sys.executable)
                       if subprocess.run([p, "-c", "import ROOT"], capture_output=True)
                       .returncode == 0), None)
        if python is None:
            self.skipTest("no ROOT for Python")
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run([ZARN_SHADOW, "scan", "--at=0,0,0", "--pmts",
                            SOURCE / "data" / "pmts.csv", "--geometry", DETECTOR, "-o",
                            "verdicts.root"], cwd=folder, capture_output=True, check=True)
            result = subprocess.run([python, "-c", program], cwd=folder, capture_output=True,
                                    text=True)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertGreater(int(result.stdout), 0)

    @unittest.skipUnless("ZARN_PYTHON" in os.environ, "built without the Python package")
    def test_the_Python_shown_prints_what_is_shown(self):
        for page, text, needs in (("README.md", README, "numpy"),
                                  ("python.md", PYTHON, "pandas, pyarrow, matplotlib, ROOT")):
            shown = re.findall(r"^```python\n(.*?)^```\n(?:\n```output\n(.*?)^```$)?", text,
                               re.MULTILINE | re.DOTALL)
            self.assertNotEqual(shown, [])
            with self.subTest(page=page), tempfile.TemporaryDirectory() as folder:
                if subprocess.run([os.environ["ZARN_PYTHON"], "-c", f"import {needs}"],
                                  capture_output=True).returncode != 0:
                    self.skipTest(f"{page} needs {needs}: script/setup --test")
                done = subprocess.run(
                    [os.environ["ZARN_PYTHON"], "-c", RUN_BLOCKS], cwd=with_data(folder),
                    input=json.dumps([block for block, _ in shown]), capture_output=True,
                    text=True, env={**os.environ, "PATH": PATH})
                self.assertEqual(done.returncode, 0, done.stderr)
                for (block, wanted), printed in zip(shown, json.loads(done.stdout), strict=True):
                    self.assertEqual(printed, wanted, block)

    def test_the_positions_and_paths_have_the_verdicts_shown(self):
        events, pmts, scanned, paths, checked = blocks(COMMANDS, "csv")
        with tempfile.TemporaryDirectory() as folder:
            (pathlib.Path(folder) / "events.csv").write_text(events)
            (pathlib.Path(folder) / "pmts.csv").write_text(pmts)
            for arguments, text, verdicts in (
                    (["scan", "--events", "events.csv", "--pmts", "pmts.csv"], None, scanned),
                    (["check", "-"], paths, checked)):
                result = subprocess.run(
                    [ZARN_SHADOW, *arguments, "--geometry", str(DETECTOR)],
                    input=text, cwd=folder, capture_output=True, text=True)
                self.assertEqual((result.returncode, result.stdout), (0, verdicts),
                                 result.stderr)


if __name__ == "__main__":
    unittest.main(verbosity=2)

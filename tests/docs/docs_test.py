#!/usr/bin/env python3
"""What the documents quote is true."""

import os
import pathlib
import re
import subprocess
import tempfile
import unittest

SOURCE = pathlib.Path(os.environ["ZARN_SOURCE_DIR"])
ZARN_SHADOW = os.environ["ZARN_SHADOW"]
COMMANDS = (SOURCE / "docs" / "commands.md").read_text()
PAGES = [p for p in SOURCE.rglob("*.md")
         if not {"build", ".venv"} & set(p.relative_to(SOURCE).parts)]


def blocks(text, language):
    return re.findall(rf"^```{language}\n(.*?)^```$", text, re.MULTILINE | re.DOTALL)


def unindented(text):
    return [line.strip() for line in text.splitlines() if line.strip()]


class Documents(unittest.TestCase):
    def test_code_is_quoted_from_an_example_that_is_built_and_run(self):
        examples = [unindented(p.read_text()) for p in SOURCE.glob("examples/*.cpp")]
        for page in PAGES:
            for block in blocks(page.read_text(), "cpp"):
                lines = unindented(block)
                found = any(lines == example[i:i + len(lines)]
                            for example in examples for i in range(len(example)))
                self.assertTrue(found, f"{page}: not in examples/:\n{block}")

    def test_links_lead_somewhere(self):
        for page in PAGES:
            for link in re.findall(r"\]\(([^)#]+)[^)]*\)", page.read_text()):
                self.assertTrue("://" in link or (page.parent / link).exists(),
                                f"{page}: {link}")

    def test_every_command_line_help_is_shown_as_it_is(self):
        shown = {}
        for block in blocks(COMMANDS, "text"):
            line, text = block.split("\n", 1)
            shown[line] = text.strip()
        self.assertEqual(sorted(shown), [f"$ zarn-shadow {c} --help" for c in ("check", "scan")])
        for line, text in shown.items():
            said = subprocess.run([ZARN_SHADOW, *line.split()[2:]],
                                  capture_output=True, text=True, check=True).stdout
            self.assertEqual(text, said.strip())

    def test_the_drawing_shows_what_the_command_finds(self):
        with tempfile.NamedTemporaryFile(suffix=".svg") as drawn:
            subprocess.run([SOURCE / "docs" / "draw-light-paths.py", ZARN_SHADOW, drawn.name],
                           check=True)
            self.assertEqual(pathlib.Path(drawn.name).read_text(),
                             (SOURCE / "docs" / "light-paths.svg").read_text())

    def test_the_positions_and_paths_shown_have_the_verdicts_shown(self):
        events, pmts, scanned, paths, checked = blocks(COMMANDS, "csv")
        with tempfile.TemporaryDirectory() as folder:
            (pathlib.Path(folder) / "events.csv").write_text(events)
            (pathlib.Path(folder) / "pmts.csv").write_text(pmts)
            for arguments, text, verdicts in (
                    (["scan", "--events", "events.csv", "--pmts", "pmts.csv"], None, scanned),
                    (["check", "-"], paths, checked)):
                result = subprocess.run(
                    [ZARN_SHADOW, *arguments, "--geometry",
                     str(SOURCE / "data" / "reference-detector")],
                    input=text, cwd=folder, capture_output=True, text=True)
                self.assertEqual((result.returncode, result.stdout), (0, verdicts),
                                 result.stderr)


if __name__ == "__main__":
    unittest.main(verbosity=2)

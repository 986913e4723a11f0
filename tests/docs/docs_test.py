#!/usr/bin/env python3
"""What the documents quote is true."""

import os
import pathlib
import re
import subprocess
import unittest

SOURCE = pathlib.Path(os.environ["ZARN_SOURCE_DIR"])
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

    def test_the_readmes_light_paths_have_the_verdicts_it_shows(self):
        paths, verdicts = blocks((SOURCE / "README.md").read_text(), "csv")
        result = subprocess.run(
            [os.environ["ZARN_SHADOW"], "check", "-", "--geometry",
             str(SOURCE / "data" / "reference-detector")],
            input=paths, capture_output=True, text=True)
        self.assertEqual((result.returncode, result.stdout), (0, verdicts), result.stderr)

    def test_the_readme_shows_the_help_as_it_is(self):
        shown = [b for b in blocks((SOURCE / "README.md").read_text(), "text")
                 if b.startswith("$ zarn-shadow check --help")]
        said = subprocess.run([os.environ["ZARN_SHADOW"], "check", "--help"],
                              capture_output=True, text=True, check=True).stdout
        self.assertEqual([b.split("\n", 1)[1].strip() for b in shown], [said.strip()])


if __name__ == "__main__":
    unittest.main(verbosity=2)

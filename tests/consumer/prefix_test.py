#!/usr/bin/env python3
"""The installed files work from any folder and without environment scripts."""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

BUILD = pathlib.Path(os.environ["ZARN_BUILD_DIR"])
SOURCE = pathlib.Path(os.environ["ZARN_SOURCE_DIR"])
ROOT = os.environ["ZARN_ROOT"]
PYTHONS = (SOURCE / ".venv" / "bin" / "python", pathlib.Path(sys.executable))
PATH_TO_PMT = "46.1046 ns, shadowed: 0"


def run(*command):
    """What a command prints in an empty environment."""
    with tempfile.TemporaryDirectory() as home:
        done = subprocess.run(command, capture_output=True, text=True, cwd=home,
                              env={"PATH": "/usr/bin:/bin", "HOME": home})
    if done.returncode != 0 or "Error in" in done.stderr:  # ROOT's, which goes on
        raise AssertionError(f"{command} ended with {done.returncode}: {done.stderr}")
    return done.stdout


def knows_root(python):
    return "True" in run(python, "-c", "from importlib import util\n"
                                       "print(util.find_spec('ROOT') is not None)")


class Prefix(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        # A copy, because an installed folder may be moved.
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.prefix = pathlib.Path(folder.name, "moved")
        shutil.copytree(BUILD / "tests" / "consumer" / "prefix", cls.prefix, symlinks=True)
        cls.library = next(cls.prefix.glob("lib*/**/libzarn_root.so"))
        cls.tables = cls.prefix / "share" / "zarn" / "reference-detector"

    def test_every_library_is_found(self):
        files = [*self.library.parent.glob("libzarn_*.so"), self.prefix / "bin" / "zarn-shadow"]
        self.assertGreater(len(files), 9)
        for file in files:
            for line in run("ldd", file).splitlines():
                self.assertNotIn("not found", line, file)
                if "libzarn_" in line:
                    self.assertIn(f"=> {self.prefix}/", line, file)

    def test_the_dictionary_names_no_folder_of_the_build(self):
        files = [*self.library.parent.glob("libzarn_root*.rootmap"),
                 *self.library.parent.glob("libzarn_root*.pcm")]
        self.assertEqual(len(files), 2)
        for file in files:
            self.assertNotIn(bytes(BUILD), file.read_bytes(), file)

    def test_the_command_runs(self):
        self.assertRegex(run(self.prefix / "bin" / "zarn-shadow", "--version"), r"^\S+ [\d.]+")

    def test_a_macro_loads_one_library(self):
        macro = self.prefix / "PathToPMT.C"
        text = (SOURCE / "examples" / macro.name).read_text()
        self.assertEqual(text.count("PREFIX/lib/libzarn_root.so"), 1)
        macro.write_text(text.replace("PREFIX/lib/libzarn_root.so", str(self.library)))
        said = run(ROOT, "-l", "-b", "-q", f'{macro}("{self.tables}")')
        self.assertIn(PATH_TO_PMT, said)

    def test_pyroot_loads_one_library(self):
        python = next((p for p in PYTHONS if p.exists() and knows_root(p)), None)
        if python is None:
            self.skipTest("no ROOT for Python")
        self.assertIn(PATH_TO_PMT, run(python, "-W", "ignore", "-c", f"""
import ROOT
assert ROOT.gSystem.Load("{self.library}") == 0
assert ROOT.gSystem.Load("{self.library}") == 1  # it stays loaded
ZARN = ROOT.ZARN
ZARN.LoadJsonTables(ZARN.DB.Get(), "{self.tables}")
calculator = ZARN.DU.ShadowingCalculator()
calculator.BeginOfRun()
path = ZARN.DU.LightPathCalculator()
path.BeginOfRun()
path.CalcByPosition(ROOT.TVector3(0, 0, 3000), ROOT.TVector3(8300, 0, 0))
print(ROOT.ZARN.warn.IsOn(), ROOT.ZARN.DU.kAVToWater, ROOT.ZARN.DU.eVerdict.kNeckBoss)
print(f"{{path.GetTimeOfFlight():.4f}} ns, shadowed: {{calculator.CheckForShadowing(path):d}}")
"""))

    def test_every_class_of_the_dictionary_is_known(self):
        linked = re.findall(r"pragma link C\+\+ (?:class|struct|enum) (.*?)[-+]?;",
                            (SOURCE / "root" / "LinkDef.h").read_text())
        self.assertGreater(len(linked), 40)
        names = ", ".join(f'"{name}"' for name in linked)
        macro = self.prefix / "missing.C"
        macro.write_text(f"""
R__LOAD_LIBRARY({self.library})
void missing() {{
  for (const char* name : {{{names}}}) {{
    const TClass* known = TClass::GetClass(name);
    const bool isKnown = known ? known->HasDictionary() : TEnum::GetEnum(name) != nullptr;
    if (!isKnown) std::cout << "unknown: " << name << "\\n";
  }}
  std::cout << "all tried\\n";
}}
""")
        said = run(ROOT, "-l", "-b", "-q", macro)
        self.assertIn("all tried", said)
        self.assertNotIn("unknown", said)


if __name__ == "__main__":
    unittest.main()

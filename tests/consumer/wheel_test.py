#!/usr/bin/env python3
"""The wheel holds the package and nothing else, and works in a new environment.

The environment is empty but for the wheel and links to ROOT and NumPy. The build folder
is kept, so that the next run compiles only what has changed.
"""

import os
import pathlib
import re
import subprocess
import sys
import sysconfig
import tempfile
import unittest
import venv
import zipfile

SOURCE = pathlib.Path(os.environ["ZARN_SOURCE_DIR"])
WORK = pathlib.Path(os.environ["ZARN_WHEEL_DIR"])
ROOMS = ("db", "du", "fast", "geometry", "hardware", "io", "lightpath", "log", "rdf",
         "scan", "sql")
PIP = [sys.executable, "-m", "pip", "--quiet", "--disable-pip-version-check"]


def build():
    """The path of the wheel, built from the source tree with the packages of .venv."""
    settings = {"build-dir": WORK / "build",
                "cmake.define.CMAKE_CXX_COMPILER": os.environ["CXX"],
                "cmake.define.ROOT_DIR": os.environ["ZARN_ROOT_DIR"],
                "cmake.define.CMAKE_COMPILE_WARNING_AS_ERROR":
                    os.environ["ZARN_WARNING_AS_ERROR"]}
    folder = WORK / "dist"
    for old in folder.glob("*.whl"):
        old.unlink()
    subprocess.run([*PIP, "wheel", "--no-build-isolation", "--no-deps", "--wheel-dir", folder,
                    *[f"--config-settings={key}={value}" for key, value in settings.items()],
                    SOURCE], check=True)
    (wheel,) = folder.glob("*.whl")
    return wheel


def install(wheel):
    """The Python of a new environment with the wheel, and its folder of packages."""
    environment = WORK / "environment"
    venv.create(environment, clear=True)
    python = environment / "bin" / "python"
    packages = pathlib.Path(sysconfig.get_path(
        "platlib", "venv", {"base": environment, "platbase": environment}))
    for name in ("ROOT", "root.libs", "cppyy", "numpy", "numpy.libs"):
        (packages / name).symlink_to(pathlib.Path(sysconfig.get_path("platlib"), name))
    subprocess.run([*PIP, "--python", python, "install", "--no-deps", "--no-index", wheel],
                   check=True)
    return python, packages / "zarn"


def run_path_of(library):
    """Where a library looks for others, as its dynamic section says."""
    text = subprocess.run(["readelf", "--dynamic", library], check=True, capture_output=True,
                          text=True, env=os.environ | {"LC_ALL": "C"}).stdout
    (run_path,) = re.findall(r"\(RUNPATH\).*\[(.*)\]", text)
    return run_path


class Wheel(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.wheel = build()
        cls.python, cls.package = install(cls.wheel)

    def run_python(self, code):
        return subprocess.run([self.python, "-c", code], check=True, capture_output=True,
                              text=True, cwd=SOURCE).stdout

    def test_wheel_holds_python_files_module_libraries_and_headers(self):
        with zipfile.ZipFile(self.wheel) as archive:
            names = set(archive.namelist())
        headers = {n for n in names if n.startswith("zarn/include/zarn/")}
        self.assertIn("zarn/include/zarn/du/ShadowingCalculator.hpp", headers)
        self.assertEqual({pathlib.Path(n).suffix for n in headers}, {".hpp"})
        information = {n for n in names if re.match(r"zarn-[0-9.]+\.dist-info/", n)}
        version = re.search(r"project\(zarn VERSION (\d+\.\d+)",
                            (SOURCE / "CMakeLists.txt").read_text()).group(1)
        suffix = sysconfig.get_config_var("EXT_SUFFIX")
        self.assertEqual(
            names - headers - information,
            {str(p.relative_to(SOURCE / "python")) for p in (SOURCE / "python").rglob("zarn/**/*")
             if p.suffix in (".py", ".typed")}
            | {f"zarn/lib/libzarn_{room}.so.{version}" for room in ROOMS}
            | {f"zarn/lib/libzarn_root{end}" for end in (".so", ".rootmap", "_rdict.pcm")}
            | {f"zarn/{module}{end}" for module in ("_core", "_sql") for end in (suffix, ".pyi")}
            | {"zarn/palette.json"})

    def test_wheel_is_small(self):
        self.assertLess(self.wheel.stat().st_size, 2_200_000)

    def test_libraries_are_found_beside_the_package(self):
        modules = list(self.package.glob("_*.so"))
        self.assertEqual(len(modules), 2)
        for module in modules:
            self.assertEqual(run_path_of(module), "$ORIGIN/lib:$ORIGIN/../ROOT/lib")
        for library in (self.package / "lib").glob("*.so*"):
            self.assertEqual(run_path_of(library), "$ORIGIN:$ORIGIN/../../ROOT/lib")

    def test_files_do_not_name_the_folders_of_the_build(self):
        places = [os.fsencode(place) for place in (SOURCE, WORK, sys.prefix, sys.base_prefix)
                  if place != "/usr"]
        with zipfile.ZipFile(self.wheel) as archive:
            for name in archive.namelist():
                with self.subTest(name):
                    content = archive.read(name)
                    self.assertFalse([place for place in places if place in content])

    def test_package_judges_paths(self):
        printed = self.run_python(
            "import zarn\n"
            "calc = zarn.Calculator('data/reference-detector')\n"
            "result = calc.scan([[0, 0, 3000]], [[8300, 0, 0], [0, 8300, 0]])\n"
            "print(*[zarn.Verdict(code).label for code in result.codes[0]], zarn.__file__)")
        self.assertEqual(printed, f"clear AVPipe {self.package / '__init__.py'}\n")

    def test_package_reads_databases(self):
        with tempfile.TemporaryDirectory() as folder:
            database = f"sqlite:{folder}/tables.db"
            subprocess.run([os.environ["ZARN_SHADOW"], "tables", "import",
                            SOURCE / "data" / "reference-detector", database, "--author", "tests",
                            "--reason", "a test"], check=True, capture_output=True)
            printed = self.run_python(
                "import zarn\n"
                f"print(zarn.Calculator('{database}').fingerprint\n"
                "      == zarn.Calculator('data/reference-detector').fingerprint)")
        self.assertEqual(printed, "True\n")

    def test_package_and_root_load_the_same_libraries(self):
        printed = self.run_python(
            "import zarn, ROOT\n"
            f"ROOT.gSystem.Load('{self.package / 'lib' / 'libzarn_root.so'}')\n"
            "ROOT.ZARN.LoadJsonTables(ROOT.ZARN.DB.Get(), 'data/reference-detector')\n"
            "calculator = ROOT.ZARN.DU.ShadowingCalculator()\n"
            "calculator.BeginOfRun()\n"
            "print(calculator.GetInnerAVRadius())\n"
            "maps = [line.split()[-1] for line in open('/proc/self/maps')]\n"
            "for name in ('libCore', 'libzarn_db'):\n"
            "    print(len({path for path in maps if name in path}))")
        self.assertEqual(printed, "5800.0\n1\n1\n")

    def test_package_adds_verdicts_to_frames(self):
        printed = self.run_python(
            "import zarn.rdf, ROOT\n"
            "frame = ROOT.RDataFrame(1)\n"
            "for name, value in (('event_x', 0), ('event_y', 0), ('event_z', 3000),\n"
            "                    ('pmt_x', 0), ('pmt_y', 8300), ('pmt_z', 0)):\n"
            "    frame = frame.Define(name, f'double({value})')\n"
            "calc = zarn.Calculator('data/reference-detector')\n"
            "codes = zarn.rdf.define_scan(frame, calc).AsNumpy(['code'])['code']\n"
            "print(*[zarn.Verdict(code).label for code in codes])")
        self.assertEqual(printed, "AVPipe\n")

    def test_the_command_for_clusters_says_what_it_needs(self):
        command = pathlib.Path(self.python).parent / "zarn-shadow-cluster"
        done = subprocess.run([command, "--help"], capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (
            2, "", "zarn-shadow-cluster: needs the package pyarrow: "
            'pip install "zarn[cluster]"\n'))

    def test_import_is_quick(self):
        """Without ROOT's modules, and in less than 0.3 s of processor time."""
        code = ("import sys, time; begin = time.process_time(); import zarn\n"
                "assert 'ROOT' not in sys.modules\n"
                "print(time.process_time() - begin)")
        self.assertLess(min(float(self.run_python(code)) for _ in range(3)), 0.3)


if __name__ == "__main__":
    unittest.main()

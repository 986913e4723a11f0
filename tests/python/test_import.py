"""What `import zarn` costs, and what it does not import."""

from support import run_python


def test_only_what_is_needed_is_imported():
    done = run_python(
        "import sys, zarn\n"
        "print({'ROOT', 'cppyy', 'pandas', 'pyarrow', 'awkward', 'tqdm', 'matplotlib', 'scipy',\n"
        "       'dask', 'distributed', 'zarn._sql'}\n"
        "      & set(sys.modules))")
    assert done.stdout == "set()\n"


def test_it_takes_less_than_0_3_seconds_of_processor_time():
    def measure():
        return float(run_python(
            "import time; start = time.process_time(); import zarn\n"
            "print(time.process_time() - start)").stdout)

    assert any(measure() < 0.3 for _ in range(3))


def test_everything_public_is_there_and_described():
    done = run_python(
        "import zarn\n"
        "for name in zarn.__all__: assert getattr(zarn, name) is not None\n"
        "for kind in (zarn.Calculator, zarn.Counts, zarn.ScanResult, zarn.Explanation,\n"
        "             zarn.Verdict):\n"
        "    for name, what in vars(kind).items():\n"
        "        if not name.startswith('_') and (callable(what) or isinstance(what, property)):\n"
        "            assert what.__doc__, (kind, name)\n")
    assert done.stderr == ""

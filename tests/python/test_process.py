"""What `import zarn` leaves of the process, and how the process ends."""

import pytest
from support import REFERENCE, run_python


def test_signals_stay_with_whoever_had_them():
    done = run_python(
        "import os, signal\n"
        "got = []\n"
        "names = ('SIGALRM', 'SIGCHLD', 'SIGUSR1', 'SIGUSR2', 'SIGWINCH', 'SIGURG', 'SIGTERM')\n"
        "for name in names:\n"
        "    signal.signal(getattr(signal, name), lambda number, _: got.append(number))\n"
        "import zarn\n"
        "for name in names:\n"
        "    os.kill(os.getpid(), getattr(signal, name))\n"
        "    assert got.pop() == getattr(signal, name), name\n")
    assert done.stderr == ""


@pytest.mark.parametrize("call", [
    "calc.check(paths[:100])", "calc.check(paths)", "calc.with_tolerance(10.0)",
    "calc.scan([[0, 0, 0]] * 1000, pmts)", "zarn.Calculator(sys.argv[1])"])
def test_the_process_ends_although_a_daemon_is_in_a_call(call):
    done = run_python(
        "import sys, threading, time\n"
        "import numpy as np, zarn\n"
        "calc = zarn.Calculator(sys.argv[1])\n"
        "pmts = np.full((1000, 3), 4800.0)\n"
        "paths = np.resize(calc.light_paths([[0, 0, 0]], pmts), 200_000)\n"
        "def work():\n"
        f"    while True: {call}\n"
        "for _ in range(3): threading.Thread(target=work, daemon=True).start()\n"
        "time.sleep(0.2)\n"
        "print('at the end')\n", REFERENCE)
    assert done.stdout == "at the end\n"


def test_types_that_another_thread_changes_do_no_harm():
    run_python(
        "import sys, threading, time\n"
        "import numpy as np, zarn\n"
        "calc = zarn.Calculator(sys.argv[1])\n"
        "names = [a + b for a in ('start_', 'end_', 'initial_') for b in 'xyz']\n"
        "columns = {name: np.broadcast_to(7000.0, 20_000_000) for name in names}\n"
        "columns['type'] = np.full(20_000_000, zarn.PathType.WATER, np.int32)\n"
        "work = threading.Thread(target=calc.check, args=[columns])\n"
        "work.start(); time.sleep(0.15)\n"
        "columns['type'][5_000_000:] = zarn.PathType.INNER_AV_TO_WATER\n"
        "work.join()\n", REFERENCE)

"""Helpers for the tests of zarn-shadow's subcommands.

ZARN_SHADOW is the program, ZARN_DATA_DIR the folder with the reference
detector and the examples. Each test runs in its own folder, in which
no temporary file may remain at the end.
"""

import csv
import io
import json
import math
import os
import pathlib
import pty
import re
import resource
import signal
import subprocess
import tempfile
import threading
import time
import unittest

PROGRAM = os.environ["ZARN_SHADOW"]
DATA = pathlib.Path(os.environ["ZARN_DATA_DIR"])
REFERENCE = DATA / "reference-detector"

# s; long enough for sanitizers and busy machines, so that only a hang reaches it.
TIMEOUT = 300

# A sanitizer keeps memory of its own, and makes the program slow.
measures_memory = unittest.skipIf({"ASAN_OPTIONS", "TSAN_OPTIONS"} & set(os.environ),
                                  "memory is measured without a sanitizer")

# A background job or nohup may ignore these, and child processes inherit that.
signal.signal(signal.SIGINT, signal.default_int_handler)
signal.signal(signal.SIGHUP, signal.SIG_DFL)

COMPONENTS = ("AVHDRope", "SupportRope", "BellyPlate", "NCDAnchor", "AVPipe",
              "NeckBoss")

INNER_RADIUS = 5800.0
OUTER_RADIUS = 5860.0


# --- Light paths as `check` reads them ---------------------------------------

VECTORS = ("start", "end", "initial", "final", "av1", "av2", "av3", "av4")
COORDINATES = [f"{vector}_{axis}" for vector in VECTORS for axis in "xyz"]
COLUMNS = ["type", *COORDINATES]
HEADER = ",".join(COLUMNS)


def line(cells):
    """A line of CSV without the line end."""
    text = io.StringIO(newline="")
    csv.writer(text, lineterminator="\r\n").writerow(cells)
    return text.getvalue()[:-2]


def at(radius, azimuth, z):
    """A point by its distance from the axis and its azimuth in degrees."""
    phi = math.radians(azimuth)
    return (radius * math.cos(phi), radius * math.sin(phi), z)


def towards(polar, azimuth, radius=OUTER_RADIUS):
    """A point on a sphere by its two angles in degrees."""
    theta = math.radians(polar)
    return at(radius * math.sin(theta), azimuth, radius * math.cos(theta))


# --- Geometry whose verdicts can be computed by hand -------------------------

def entry(table_name, index, fields, **more):
    return {"table": table_name, "index": index, "fields": fields, **more}


def xyz(points, prefix=""):
    return {prefix + axis: [float(p[i]) for p in points] for i, axis in enumerate("xyz")}


VESSEL = [entry("SOLID", "acrylic_vessel_inner", {"r_sphere": INNER_RADIUS}),
          entry("SOLID", "acrylic_vessel_outer",
                {"r_sphere": OUTER_RADIUS, "r_neck": 700.0})]

INNER_AV = entry("GEO", "inner_av", {"ncd_anchor_definition": "ncd_anchor",
                                     "ncd_anchor_locations": "ncd_anchors",
                                     "belly_plate_locations": "belly_plates"})

# Its foot is at 4760 - (70 + 50) = 4640 and meets the inner sphere 3480 from the
# axis (3480, 4640, 5800 are 3, 4, 5 times 1160).
NECK_BOSS = [entry("GEO", "av", {"neck_boss_z": 4760.0}),
             entry("SOLID", "neck_boss", {"half_height1": 70.0, "half_height2": 50.0})]
UNDER_THE_BOSS = (3479.0, 0.0, 4640.0)
BESIDE_THE_BOSS = (3481.0, 0.0, 4640.0)

# One anchor at the bottom; it reaches 60 mm plus the tolerance.
ANCHOR = [INNER_AV, entry("SOLID", "ncd_anchor", {"half_z": 60.0, "r_max": 40.0}),
          entry("GEO_LOCATIONS", "ncd_anchors", xyz([(0, 0, -5800)]))]

PIPES = [entry("SOLID", f"av_pipe-{name}",
               {"r_max": 25.0, **xyz([(0, 5960, 0), (0, 5960, -1000)])})
         for name in ("1", "2", "3", "4", "labs", "6", "labr")]

PLATE_SOLID = entry("SOLID", "belly_plate_vintar", {"octahedron_half_height": 600.0})
# One plate at azimuth 0. Its half-width is atan(600 / 5860), which is 5.846
# degrees, and the tolerance of 150 adds 150 / 5860 radians, or 1.467 degrees.
PLATE = [INNER_AV, PLATE_SOLID,
         entry("GEO_LOCATIONS", "belly_plates", xyz([(5860, 0, 0)]))]

# One location at azimuth 0: ropes at plus and minus 400 / 5860 radians (3.911
# degrees), 15 and the tolerance wide: 165 / 5920 radians are 1.597 degrees.
SUPPORT_ROPES = [PLATE_SOLID,
                 entry("GEO", "hold_up_ropes", {"solid_definition": "hold_up_rope",
                                                "locations": "hold_up_anchors"}),
                 entry("SOLID", "hold_up_rope", {"r_rope": 15.0, "z_rope": 6090.0}),
                 entry("GEO_LOCATIONS", "hold_up_anchors", xyz([(5920, 0, 5)]))]

# One rope, at roll 0. Its legs stand at the azimuth of its fifth point, 154, and
# opposite its second, 8 + 180; 162 / 5880 radians to each side are 1.579 degrees.
HOLD_DOWN_ROPES = [
    entry("GEO", "hold_down_ropes", {"solid_definition": "hold_down_rope",
                                     "locations": "hold_down_rolls"}),
    entry("SOLID", "hold_down_rope",
          {"r_rope": 12.0, **xyz([at(5880, 8, -6138), at(5880, 8, 5),
                                  at(3000, 8, 5022), at(3000, 154, 5022),
                                  at(5880, 154, 5), at(5880, 154, -6138)], "rope_")}),
    entry("GEO_LOCATIONS", "hold_down_rolls", {"roll": [0.0]})]

def anchor_reach(half_z, **more):
    return entry("SOLID", "ncd_anchor", {"half_z": half_z, "r_max": 40.0}, **more)


# --- Running the command -----------------------------------------------------

class Result:
    def __init__(self, status, out, err):
        self.status = status
        self.out = out
        self.bytes_err = err
        self.err = err.decode(errors="replace")

    def verdicts(self):
        """The component that blocks each path, "" for none; checks the format of
        the output of `check`."""
        text = self.out.decode()
        assert text.endswith("\n"), "the last line has no end"
        header, *lines = csv.reader(io.StringIO(text, newline=""), strict=True)
        assert header[:1] + header[-2:] == ["row", "shadowed", "by"], header
        assert header[1:-2] in ([], ["event"], ["pmt"], ["event", "pmt"]), header
        found = []
        for number, cells in enumerate(lines):
            row, shadowed, by = cells[0], *cells[-2:]
            assert len(cells) == len(header), cells
            assert int(row) == number and row == str(number), cells
            assert by in ("", *COMPONENTS), cells
            assert shadowed == ("1" if by else "0"), cells
            found.append(by)
        return found

    def counts(self):
        """The table at the end as a dictionary of labels."""
        found = {}
        for text in self.err.splitlines():
            match = re.fullmatch(r" *(\w+(?:[/ ]\w+)?) +(not loaded|nothing to test|[\d,.]+)(?: +([\d.]+) %)?",
                                 text)
            if match:
                found[match[1]] = (match[2], match[3])
        return found


class CommandTest(unittest.TestCase):
    maxDiff = 4000

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="zarn-test-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.addCleanup(self.assert_no_temporaries)

    def assert_no_temporaries(self):
        self.assertEqual(self.temporaries(), [])

    def temporaries(self):
        return sorted(p for p in self.folder.rglob(".*zarn-tmp*"))

    def write(self, name, content):
        file = self.folder / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_bytes(content.encode() if isinstance(content, str) else content)
        return file

    def tables(self, *entries, name="tables.json"):
        return self.write(name, json.dumps([*VESSEL, *entries]))

    @staticmethod
    def command(paths, geometry, *options):
        return [PROGRAM, "check", str(paths), "--geometry", str(geometry),
                *map(str, options)]

    def run_command(self, arguments, status=0, stdin=b"", **more):
        """Run to the end and require an exit status, or one of several."""
        more.setdefault("stdout", subprocess.PIPE)
        more.setdefault("stderr", subprocess.PIPE)
        more.setdefault("cwd", self.folder)
        done = subprocess.run([str(a) for a in arguments], input=stdin,
                              timeout=TIMEOUT, check=False, **more)
        result = Result(done.returncode, done.stdout or b"", done.stderr or b"")
        wanted = status if isinstance(status, tuple) else (status,)
        self.assertIn(result.status, wanted, f"{arguments}\n{result.err[-3000:]}")
        self.assertNotIn("Sanitizer", result.err)
        return result

    def check(self, paths, *options, geometry=None, **more):
        if geometry is None:
            geometry = self.tables(*ANCHOR)
        return self.run_command(self.command(paths, geometry, *options), **more)

    def limited(self, size):
        """Limit the size of files to @p size, to simulate a full disk."""
        return lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))

    # Processes that are observed while they run.

    def start(self, arguments, **more):
        for stream in ("stdin", "stdout", "stderr"):
            more.setdefault(stream, subprocess.PIPE)
        more.setdefault("cwd", self.folder)
        process = subprocess.Popen([str(a) for a in arguments], **more)

        def end():
            if process.poll() is None:
                process.kill()
            process.wait()
            for stream in (process.stdin, process.stdout, process.stderr):
                if stream is not None:
                    try:
                        stream.close()
                    except BrokenPipeError:
                        pass
        self.addCleanup(end)
        return process

    def wait_for(self, condition, what):
        deadline = time.monotonic() + TIMEOUT
        while not condition():
            self.assertLess(time.monotonic(), deadline, f"not seen in time: {what}")
            time.sleep(0.001)

    def wait_until_it_sleeps(self, process):
        """Wait until all threads of the process have been sleeping for a while."""
        asleep = 0
        tasks = pathlib.Path(f"/proc/{process.pid}/task")

        def is_asleep():
            nonlocal asleep
            self.assertIsNone(process.poll(), "the process ended")
            try:
                states = [(tasks / task / "stat").read_text().rpartition(")")[2].split()[0]
                          for task in os.listdir(tasks)]
            except (FileNotFoundError, ProcessLookupError):  # a thread has just ended
                states = []
            asleep = asleep + 1 if set(states) == {"S"} else 0
            return asleep > 100
        self.wait_for(is_asleep, "sleep")

    # Queues, buffers and memory kept by the allocator.
    SLACK_KB = 8 * 1024

    def peak(self, process):
        """The peak memory of the process, kB."""
        status = pathlib.Path(f"/proc/{process.pid}/status").read_text()
        return int(re.search(r"VmHWM:\s+(\d+) kB", status)[1])

    def feed(self, process, text):
        process.stdin.write(text.encode())
        process.stdin.flush()

    def feed_endlessly(self, process, header, rows):
        """Feed rows from another thread until the process ends."""
        def run():
            try:
                process.stdin.write((header + "\n").encode())
                while True:
                    process.stdin.write(rows)
            except (BrokenPipeError, ValueError):
                pass
        thread = threading.Thread(target=run, daemon=True)
        thread.start()

        def end():
            if process.poll() is None:
                process.kill()
            thread.join(TIMEOUT)
        self.addCleanup(end)

    def assert_ends(self, process, status, timeout=TIMEOUT):
        try:
            found = process.wait(timeout)
        except subprocess.TimeoutExpired:
            self.fail(f"still running; status {status} was expected")
        err = process.stderr.read().decode(errors="replace") if process.stderr else ""
        self.assertEqual(found, status, err[-3000:])
        return err

    def run_on_terminal(self, arguments, read_after=0, feed=None):
        """Run with a terminal as standard error; return the output and what the
        terminal shows. Output is not read before @p read_after, so that the run
        takes at least that long on any machine."""
        master, slave = pty.openpty()
        self.addCleanup(os.close, master)
        shown = bytearray()

        def read():
            try:
                while data := os.read(master, 65536):
                    shown.extend(data)
            except OSError:  # the other end is closed
                pass
        reader = threading.Thread(target=read, daemon=True)
        reader.start()
        process = self.start(arguments, stderr=slave,
                             stdin=subprocess.PIPE if feed else subprocess.DEVNULL)
        os.close(slave)
        time.sleep(read_after)
        if feed:
            feed(process)
        out = process.stdout.read()
        self.assertEqual(process.wait(TIMEOUT), 0, bytes(shown[-2000:]))
        reader.join(TIMEOUT)
        return out, bytes(shown).decode()

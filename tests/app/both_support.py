"""Drivers for `check` and `scan`: each row of input (a light path or an event)
gives one row of verdicts. Tests of behaviour that both share use these drivers
and run once for each."""


from command_support import ANCHOR, HEADER
from light_support import FROM_INSIDE
from check_support import CheckTest, NEAR_ANCHOR
from scan_support import BOTTOM, OPTICS, ScanTest, VERDICT_HEADER


class CheckDriver(CheckTest):
    COMMAND = "check"
    INPUT_HEAD = HEADER + "\n"
    OUTPUT_HEAD = b"row,shadowed,by\n"
    COUNTED = "paths"  # first label of the table at the end

    def row(self, number):
        return NEAR_ANCHOR + "\n"

    def verdict(self, number):
        return b"%d,1,NCDAnchor\n" % number

    def arguments(self, rows, *options, geometry=None):
        geometry = geometry or self.tables(*OPTICS, *ANCHOR)
        return self.command(rows, geometry, *options)


class ScanDriver(ScanTest):
    COMMAND = "scan"
    INPUT_HEAD = "event,x,y,z\n"
    OUTPUT_HEAD = (VERDICT_HEADER + "\n").encode()
    COUNTED = "pairs"

    def row(self, number):
        return f"e{number},0,0,0\n"

    def verdict(self, number):
        return f"e{number},p0,{FROM_INSIDE},1,NCDAnchor\n".encode()

    def arguments(self, rows, *options, geometry=None):
        geometry = geometry or self.tables(*OPTICS, *ANCHOR)
        return self.scan_command(rows, self.pmts([BOTTOM]), geometry, *options)


class BothTest:
    """Helpers for tests of both; comes before a driver in the list of bases."""
    MANY = 40_000  # rows whose verdicts fill a pipe and the program's buffer

    def text(self, count=1):
        return self.INPUT_HEAD + "".join(self.row(i) for i in range(count))

    def wanted(self, count=1):
        return self.OUTPUT_HEAD + b"".join(self.verdict(i) for i in range(count))

    def input(self, count=1, name=None):
        return self.write(name or f"rows-{count}.csv", self.text(count))

    def run_on(self, rows, *options, geometry=None, **more):
        return self.run_command(self.arguments(rows, *options, geometry=geometry), **more)

    def read(self, name):
        return (self.folder / name).read_bytes()

    def start_writing(self, out="out.csv", count=2, threads=1, **more):
        """A run that has started its output and waits for more rows."""
        process = self.start(self.arguments("-", "-o", out, "--threads", threads), **more)
        self.feed(process, self.text(count))
        self.wait_for(self.temporaries, "a temporary file")
        self.wait_until_it_sleeps(process)
        return process

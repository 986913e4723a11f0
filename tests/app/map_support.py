"""Helpers for the tests of `zarn-shadow map`."""

import csv
import io
import math
import xml.etree.ElementTree as ElementTree

from command_support import ANCHOR, PROGRAM
from scan_support import OPTICS, ScanTest

EVENT = (4600.0, 0.0, 3000.0)  # in the reference detector some of its light is reflected
SMALL = ("--size", "200x200")  # few pixels, so that a map of all directions is quick
FORMATS = {".svg": b"<?xml", ".pdf": b"%PDF-", ".png": b"\x89PNG\r\n\x1a\n"}


def words_of(svg):
    """All words of a picture, one text after the other."""
    return [" ".join("".join(text.itertext()).split())
            for text in ElementTree.fromstring(svg).iter("{http://www.w3.org/2000/svg}text")]


def at(position):
    return "--at=" + ",".join(map(repr, position))


def angles(position, seen_from=(0.0, 0.0, 0.0)):
    """Azimuth and polar angle of a direction."""
    x, y, z = (a - b for a, b in zip(position, seen_from))
    return math.atan2(y, x), math.atan2(math.hypot(x, y), z)


class MapTest(ScanTest):
    def map(self, *options, geometry=None, **more):
        geometry = geometry or self.tables(*OPTICS, *ANCHOR)
        result = self.run_command(
            [PROGRAM, "map", "--geometry", geometry, *options], **more)
        if result.status == 0:
            self.assertNotIn("uninitialised", result.err)
        return result

    def data(self, *options, **more):
        """The rows of --data, each a dictionary, and the result of the command."""
        result = self.map(*options, "--data", "data.csv", **more)
        text = self.read("data.csv").decode()
        return list(csv.DictReader(io.StringIO(text, newline=""), strict=True)), result

    def refused(self, *options, **more):
        """The message on bad use or input, which changes no file."""
        before = self.snapshot()
        result = self.map(*options, status=2, **more)
        self.assertEqual(result.out, b"")
        after = self.snapshot()
        for name in list(after):  # the tables of this call
            if name.endswith("tables.json"):
                before[name] = after[name]
        self.assertEqual(after, before)
        return result.err

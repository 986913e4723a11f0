"""Helpers for the tests of `zarn-shadow display`."""

import base64
import html.parser
import json
import struct
import zlib

from command_support import ANCHOR, PROGRAM
from scan_support import OPTICS, ScanTest

# Blocks of numbers, with the format of a number.
BLOCKS = {"pmt-positions": "d", "event-positions": "d", "verdicts": "B", "angles": "f",
          "items": "H", "limits": "f", "limit-by": "B"}
REFLECTED = {"reflected-" + name: format for name, format in list(BLOCKS.items())[2:]}


class Elements(html.parser.HTMLParser):
    """What a reader of HTML finds: the tags, and the text of each element with an id."""

    def __init__(self, text):
        super().__init__()
        self.tags, self.texts, self.types, self.title, self.words = [], {}, {}, "", []
        self.inside = None
        self.feed(text)
        self.close()

    def handle_starttag(self, tag, attributes):
        self.tags.append(tag)
        self.inside = dict(attributes).get("id", tag)
        if tag == "script":
            self.types[self.inside] = dict(attributes).get("type")

    def handle_endtag(self, tag):
        self.inside = None

    def handle_data(self, data):
        if self.inside == "title":
            self.title += data
        elif self.inside in ("td", "th", "p"):
            self.words.append(data)
        elif self.inside is not None:
            self.texts[self.inside] = self.texts.get(self.inside, "") + data


class Page:
    """A page, read as the browser reads it."""

    def __init__(self, content):
        self.html = content.decode()
        self.elements = Elements(self.html)
        self.text = json.loads(self.elements.texts["zarn-page"])
        self.blocks = {}
        for name, format in {**BLOCKS, **REFLECTED}.items():
            if f"zarn-{name}" not in self.elements.texts:
                continue
            assert self.elements.types[f"zarn-{name}"] == "text/plain", name
            packed = base64.b64decode(self.elements.texts[f"zarn-{name}"], validate=True)
            numbers = zlib.decompress(packed)
            self.blocks[name] = [n for n, in struct.iter_unpack("<" + format, numbers)]

    @property
    def tags(self):
        return self.elements.tags


class DisplayTest(ScanTest):
    def setUp(self):
        super().setUp()
        result = self.run_command([PROGRAM, "display", "--at=0,0,0", "--pmts", "", "--geometry",
                                   ""], status=2)
        if "display" in result.err:
            self.assertEqual(result.err, "zarn-shadow: this build has no display: Node.js was "
                             "missing. script/setup in the sources installs it; then run cmake "
                             "and build again\n")
            self.skipTest("this build has no display")

    def display(self, *options, geometry=None, **more):
        geometry = geometry or self.tables(*OPTICS, *ANCHOR)
        return self.run_command([PROGRAM, "display", "--geometry", geometry, *options], **more)

    def page(self, *options, **more):
        """The page that the command writes to standard output."""
        return Page(self.display(*options, "-o", "-", **more).out)

    def refused(self, *options, **more):
        """The message on bad use or input, which changes no file."""
        geometry = more.pop("geometry", None) or self.tables(*OPTICS, *ANCHOR)
        before = self.snapshot()
        result = self.display(*options, geometry=geometry, status=2, **more)
        self.assertEqual(result.out, b"")
        self.assertEqual(self.snapshot(), before)
        return result.err

#!/usr/bin/env python3
"""Draw docs/python-source-scan.png: the picture of an example, smaller and in few colours.

Needs the package zarn, pandas and matplotlib:

    PYTHONPATH=build/release/python .venv/bin/python docs/draw-python.py [OUTPUT_FOLDER]
"""

import pathlib
import subprocess
import sys
import tempfile

from PIL import Image

DOCS = pathlib.Path(__file__).resolve().parent
EXAMPLE = DOCS.parent / "examples" / "python" / "source_scan.py"


def main(output=DOCS):
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([sys.executable, EXAMPLE, folder], cwd=DOCS.parent, check=True,
                       stdout=subprocess.DEVNULL)
        picture = Image.open(pathlib.Path(folder) / "source-scan.png").convert("RGB")
    small = picture.resize((1000, 660), Image.Resampling.LANCZOS)
    small.quantize(32, dither=Image.Dither.NONE).save(
        pathlib.Path(output) / "python-source-scan.png", optimize=True)


if __name__ == "__main__":
    main(*sys.argv[1:])

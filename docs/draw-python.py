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
    height = round(1000 * picture.height / picture.width)
    small = picture.resize((1000, height), Image.Resampling.LANCZOS)
    # By coverage: the colours of the legend fill few pixels.
    small.quantize(128, Image.Quantize.MAXCOVERAGE, dither=Image.Dither.NONE).save(
        pathlib.Path(output) / "python-source-scan.png", optimize=True)


if __name__ == "__main__":
    main(*sys.argv[1:])

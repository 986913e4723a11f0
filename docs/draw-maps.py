#!/usr/bin/env python3
"""Draw the sky maps of map.md: map-*.svg.

    docs/draw-maps.py ZARN-SHADOW [FOLDER]

runs the command on the reference detector and writes the maps beside this script, or
to FOLDER. Each has the colours of both themes, as the other drawings have.
"""

import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
DATA = HERE.parent / "data"
DETECTOR = DATA / "reference-detector"
PMTS = ["--pmts", DATA / "pmts.csv"]
TURN = 3.0  # degrees, of the ropes in the tables compared

MAPS = {
    "map-pmts": ["--at", "0,0,3000", *PMTS],
    "map-directions": ["--at", "4600,0,3000", "--radius", "8300"],
    "map-events": ["--events", DATA / "source-scan.csv", *PMTS],
    "map-changes": ["--at", "0,0,3000", *PMTS, "--compare", "surveyed"],
}
COLOUR = re.compile(r'(fill|stroke)="(#[0-9a-f]{6})"')
IMAGE = re.compile(r"<image [^>]*>")


def write_surveyed(folder):
    """The tables of the reference detector, with the hold-down ropes turned."""
    shutil.copytree(DETECTOR, folder)
    file = folder / "hold_down_ropes.json"
    entries = json.loads(file.read_text())
    for entry in entries:
        if entry["index"] == "hold_down_rope_rolls":
            entry["fields"]["roll"] = [roll + TURN for roll in entry["fields"]["roll"]]
    file.write_text(json.dumps(entries))


def of_both_themes(light, dark):
    """One map out of two that differ only in colours and images."""
    def without(text):
        return COLOUR.sub("", IMAGE.sub("", text))

    if without(light) != without(dark):
        sys.exit("draw-maps: the themes differ in more than colours")
    pairs = dict.fromkeys(zip(COLOUR.findall(light), COLOUR.findall(dark)))
    if len({bright for bright, _ in pairs}) != len(pairs):
        sys.exit("draw-maps: two colours of the dark theme are one of the light theme")
    rules = [f'[{kind}="{colour}"] {{ {kind}: {other} }}'
             for (kind, colour), (_, other) in pairs]
    style = ["<style>", "@media (prefers-color-scheme: dark) {", *rules, "}", "</style>"]
    images = IMAGE.findall(dark)
    if images:
        style[1:1] = [".dark { display: none }"]
        style[-2:-2] = [".light { display: none }", ".dark { display: inline }"]
        light = IMAGE.sub(lambda found: found[0].replace("<image ", '<image class="light" ')
                          + images.pop(0).replace("<image ", '<image class="dark" '), light)
    return light.replace("<rect ", "\n".join(style) + "\n<rect ", 1)


def main():
    output = pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else HERE
    with tempfile.TemporaryDirectory() as folder:
        write_surveyed(pathlib.Path(folder) / "surveyed")
        command = pathlib.Path(sys.argv[1]).resolve()
        for name, arguments in MAPS.items():
            light, dark = (
                subprocess.run([command, "map", "--geometry", DETECTOR, *arguments,
                                "--theme", theme], cwd=folder, check=True,
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                               text=True).stdout
                for theme in ("light", "dark"))
            (output / f"{name}.svg").write_text(of_both_themes(light, dark))


if __name__ == "__main__":
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    main()

#!/usr/bin/env python3
"""Draw how a light path becomes a verdict: flow.svg, and verdicts-shares.svg, which
says how many paths are decided where.

    docs/draw-flow.py VERDICT-SHARES [FOLDER]

runs the program (built with the tests, in tests/docs/) on data/ and writes the
drawings beside this script, or to FOLDER.
"""

import pathlib
import subprocess
import sys

sys.dont_write_bytecode = True  # the source folder stays clean

from drawing import Drawing

HERE = pathlib.Path(__file__).resolve().parent


def box(drawing, x, y, width, height, title, *lines):
    drawing.rect(x, y, width, height, radius=6, fill="panel", stroke="vessel", pen=1.4)
    drawing.text(x + width / 2, y + 22, title, size=14, bold=True, anchor="middle")
    for i, line in enumerate(lines):
        drawing.text(x + width / 2, y + 42 + 18 * i, line, anchor="middle")


def draw_flow():
    drawing = Drawing(880, 436, "How a light path becomes a verdict")

    drawing.text(20, 24, "Once a run", colour="secondText")
    box(drawing, 20, 34, 140, 58, "Geometry tables", "JSON, per run")
    box(drawing, 190, 34, 150, 58, "ZARN::DB", "run, pass")
    box(drawing, 370, 34, 190, 58, "BeginOfRun", "one model each, or off")
    drawing.arrow((160, 63), (190, 63))
    drawing.arrow((340, 63), (370, 63))
    drawing.arrow((465, 92), (465, 176))
    drawing.text(474, 138, "built when it saves time", size=12)
    drawing.arrow((560, 63), (685, 63), (685, 146))

    drawing.text(20, 176, "One path a call", colour="secondText")
    box(drawing, 20, 190, 140, 58, "Light path", "computed, or yours")
    box(drawing, 190, 190, 150, 58, "Water segments", "by the path\u2019s type")
    box(drawing, 370, 176, 190, 86, "Map, tables, algebra", "decide the cases that",
        "they can prove")
    drawing.rect(610, 146, 150, 146, radius=6, fill="panel", stroke="vessel", pen=1.4)
    drawing.text(685, 168, "Formulas", size=14, bold=True, anchor="middle")
    for i, name in enumerate(("hold-down ropes", "support ropes", "belly plates", "NCD anchors",
                              "AV pipes", "neck boss")):
        drawing.text(627, 190 + 18 * i, f"{i + 1}  {name}")
    box(drawing, 790, 190, 80, 76, "Verdict", "none, or", "by what")
    drawing.arrow((160, 219), (190, 219))
    drawing.arrow((340, 219), (370, 219))
    drawing.arrow((560, 219), (610, 219))
    drawing.text(585, 212, "open", size=12, anchor="middle")
    drawing.arrow((760, 219), (790, 219))
    drawing.arrow((500, 262), (500, 312), (830, 312), (830, 266))
    drawing.text(508, 306, "decided", size=12)

    drawing.text(20, 336, "Many paths a call", colour="secondText")
    box(drawing, 20, 350, 140, 58, "Light paths", "records or columns")
    box(drawing, 190, 350, 150, 58, "Blocks of 256", "sorted by type")
    box(drawing, 370, 350, 190, 58, "The same, vectorised", "in single precision")
    box(drawing, 790, 350, 80, 58, "Verdicts", "in order")
    drawing.arrow((160, 379), (190, 379))
    drawing.arrow((340, 379), (370, 379))
    drawing.arrow((560, 379), (790, 379))
    drawing.text(570, 372, "decided", size=12)
    drawing.arrow((420, 350), (420, 262))
    drawing.text(412, 306, "open", size=12, anchor="end")
    drawing.text(440, 428, "ZARN::warn: messages of the set-up, and of paths that cannot be judged",
                 size=12, anchor="middle")
    return drawing


def measured(program):
    """How many paths there are, and how many each step of the two ways decides."""
    lines = subprocess.run([program, HERE.parent / "data"], capture_output=True, text=True,
                           check=True).stdout.splitlines()
    counts = {words[0]: [int(word) for word in words[1:]] for words in map(str.split, lines)}
    return counts["paths"][0], counts["single"], counts["batch"]


def share(count, total):
    percent = 100 * count / total
    return f"{percent:.1f} %" if percent >= 1 else f"{percent:.2f} %"


SINGLE = (("Map", "a cell of the vessel", "knows the answer"),
          ("Azimuth tables", "a cell of azimuth", "knows the ropes"),
          ("Algebra", "the few parts near,", "by products"),
          ("Formula", "of one component,", "in full"))
BATCH = (("Map and tables", "in single precision,", "many paths at a time"),
         ("Algebra", "the few points and", "plates of the cell"),
         ("Single call", "as above, in double", "precision"),
         ("Formula", "of one component,", "in full"))


def draw_shares(paths, single, batch):
    drawing = Drawing(700, 340, "What decides the verdicts on the source scan")
    drawing.text(20, 24, f"The {paths:,} light paths of the source scan, by what decides them",
                 size=14, bold=True)
    for top, words, steps, counts in ((40, "One path a call", SINGLE, single),
                                      (190, "Many paths a call", BATCH, batch)):
        drawing.text(20, top + 14, words, colour="secondText")
        for i, ((title, *lines), count) in enumerate(zip(steps, counts)):
            x, y = 20 + 170 * i, top + 24
            box(drawing, x, y, 150, 106, title, *lines)
            drawing.text(x + 75, y + 84, share(count, paths), size=15, bold=True, anchor="middle")
            drawing.rect(x + 10, y + 92, 130, 6, fill="hairline")
            drawing.rect(x + 10, y + 92, 130 * count / paths, 6, fill="accent")
            if i > 0:
                drawing.arrow((x - 20, y + 53), (x, y + 53))
    return drawing


def main():
    folder = pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else HERE
    (folder / "flow.svg").write_text(draw_flow().svg())
    (folder / "verdicts-shares.svg").write_text(draw_shares(*measured(sys.argv[1])).svg())


if __name__ == "__main__":
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    main()

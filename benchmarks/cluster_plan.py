#!/usr/bin/env python3
"""Tables of what cluster_benchmark.py measured, and a plan for a large campaign from it.

benchmarks/cluster_plan.py docs/scale.json [--pairs 1e12]            print them
benchmarks/cluster_plan.py docs/scale.json --update docs/scale.md    write them there
"""

import argparse
import json
import pathlib

BEGIN, END = "<!-- from cluster_plan.py -->\n", "<!-- end -->\n"
# As in zarn.cluster: what bounds a part.
SECONDS_OF_PART, BYTES_OF_PART = 15.0, 64 << 20
HOUR, DAY = 3600, 86400
# Limits that are not measured, to say when they are reached.
FILES_OF_FOLDER = 1e5
MEMORY_OF_CLIENT = 64e9


def number(value):
    """Three digits, with commas or a power of ten."""
    if value >= 1e6 or 0 < value < 0.001:
        digits, power = f"{value:.2e}".split("e")
        return f"{digits} x 10^{int(power)}"
    return f"{value:.3g}" if value < 100 else f"{float(f'{value:.3g}'):,.0f}"


def size(value):
    for unit, name in ((1e15, "PB"), (1e12, "TB"), (1e9, "GB"), (1e6, "MB"), (1e3, "kB")):
        if value >= unit:
            return f"{number(value / unit)} {name}"
    return f"{number(value)} B"


def table(head, *rows):
    align = ["---"] + ["--:"] * (len(head) - 1)
    lines = ("| " + " | ".join(map(str, row)) + " |" for row in (head, align, *rows))
    return "\n".join(lines) + "\n"


class Measured:
    """The figures, and what follows from them for one pair."""

    def __init__(self, found):
        self.found = found
        self.steps = found["steps"]
        self.pairs = found["events"] * found["pmts"]
        # Of a whole campaign on one worker: more than the sum of the steps.
        self.one, self.two = found["campaigns"]
        self.seconds = self.one["seconds"] / self.pairs
        self.bytes = self.one["bytes"] / self.pairs

    def steps_table(self):
        steps = {name: 1e9 * self.steps[f"seconds_{name}"] for name in
                 ("judged", "encoded", "written")}
        total = sum(steps.values())
        names = {"judged": "light paths and verdicts", "encoded": "columns and Parquet",
                 "written": "to disk, with fsync"}
        return table(("Step", "ns a pair", "share"), *(
            (names[name], number(ns), f"{ns / total:.0%}") for name, ns in steps.items()))

    def bytes_table(self):
        columns = self.steps["bytes"]
        total = sum(columns.values())
        return table(("Column", "bytes a pair", "share"), *(
            (f"`{name}`", number(value), f"{value / total:.1%}")
            for name, value in columns.items()))

    def campaigns_table(self):
        return table(
            ("Worker processes", "s", "pairs a second", "speed-up", "memory of a worker",
             "client and scheduler, core s", "all parts checked again, s"),
            *((c["workers"], number(c["seconds"]), number(self.pairs / c["seconds"]),
               f"{self.one['seconds'] / c['seconds']:.2f}", size(c["bytes_of_worker"]),
               number(c["client_and_scheduler_core_seconds"]),
               number(c["seconds_to_check_all"])) for c in (self.one, self.two)))


class Plan:
    """A campaign of some pairs."""

    def __init__(self, measured, pairs):
        self.measured, self.pairs = measured, pairs
        found, self.pmts = measured.found, measured.found["pmts"]
        self.events = pairs / self.pmts
        self.pairs_of_part = min(
            SECONDS_OF_PART / measured.seconds, BYTES_OF_PART / measured.bytes)
        self.parts = pairs / self.pairs_of_part
        self.seconds_of_part = self.pairs_of_part * measured.seconds
        self.core_seconds = pairs * measured.seconds
        self.messages = (self.events * found["task"]["of_an_event"]
                         + self.parts * found["task"]["each"])
        self.reading = found["reading"]
        self.merge = found["merge"]

    def merge_of(self, kind):
        figures = self.merge[kind]
        return (f"{number(self.pairs * figures['seconds'] / HOUR)} h, "
                f"{size(self.pairs * figures['bytes'])}, {size(figures['memory'])} of memory")

    def table(self):
        m, hours = self.measured, self.core_seconds / HOUR
        part = size(self.pairs_of_part * m.bytes)
        events = (f"{number(self.events * self.reading['seconds'])} s, "
                  f"{size(self.events * self.reading['memory'])} of memory")
        return table(
            ("What", "how much"),
            (f"events, each with {number(self.pmts)} PMTs", number(self.events)),
            ("cores x time", f"{number(hours)} core hours"),
            ("time with 10, 100, 1,000 cores",
             ", ".join(f"{number(hours / cores)} h" for cores in (10, 100, 1000))),
            ("storage of the parts", size(self.pairs * m.bytes)),
            ("parts", f"{number(self.parts)} of {number(self.pairs_of_part / self.pmts)} "
             f"events, {number(self.seconds_of_part)} s and {part} each"),
            ("written by 100 cores", f"{size(100 * m.bytes / m.seconds)} a second"),
            ("memory of a worker process", size(m.one["bytes_of_worker"])),
            ("through the scheduler: events", size(self.messages)),
            ("scheduler, time for its tasks",
             f"{number(self.parts / m.found['tasks_a_second'])} s"),
            ("client: reading the events from CSV", events),
            ("checking all parts when it goes on",
             f"{number(self.pairs * m.steps['seconds_checked'] / HOUR)} core hours"),
            ("merge to Parquet, one process", self.merge_of("parquet")),
            ("merge to an RNTuple, one process", self.merge_of("root")))

    def limits_table(self):
        m, found = self.measured, self.measured.found
        rows = [
            (DAY / self.merge["parquet"]["seconds"], "a merge to Parquet takes a day",
             "do not merge: read the folder as one table"),
            (DAY / self.merge["root"]["seconds"], "a merge to an RNTuple takes a day",
             "merge to Parquet, or read the folder as one table"),
            (MEMORY_OF_CLIENT / self.reading["memory"] * self.pmts,
             "the events fill the client's memory",
             "campaigns of some of the events, each in a folder"),
            (FILES_OF_FOLDER * self.pairs_of_part, "too many parts in a folder",
             "campaigns of some of the events, each in a folder"),
        ]
        rows = [(number(pairs) + " pairs", what, way) for pairs, what, way in sorted(rows)]
        cores = found["tasks_a_second"] * self.seconds_of_part
        rows.append((number(cores) + " cores", "the scheduler has no time for more tasks",
                     "several clusters, each with a campaign of some of the events"))
        return table(("At", "what breaks", "the way round"), *rows)


def power_of_ten(value):
    return f"10^{len(f'{value:.0f}') - 1}" if f"{value:.0f}".strip("0") == "1" else number(value)


def page(measured, pairs):
    """The tables as Markdown."""
    plan = Plan(measured, pairs)
    found = measured.found
    return f"""Measured on {found['cores']} cores of the processor "{found['processor']}", with a load of \
{found['load']:.1f} before the measurement.

### Where time and bytes go

{measured.steps_table()}
{measured.bytes_table()}
### One and two worker processes

{number(found['events'])} events x {number(found['pmts'])} PMTs = {number(measured.pairs)} pairs, \
{measured.one['parts']} and {measured.two['parts']} parts:

{measured.campaigns_table()}
## A plan for {power_of_ten(pairs)} pairs

{plan.table()}
### What breaks first

If a merge may take a day, a client has {size(MEMORY_OF_CLIENT)} of memory, and a folder
{number(FILES_OF_FOLDER)} files:

{plan.limits_table()}"""


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("measured", type=pathlib.Path)
    parser.add_argument("--pairs", type=float, default=1e12)
    parser.add_argument("--update", type=pathlib.Path, help="page with the marks")
    arguments = parser.parse_args()
    text = page(Measured(json.loads(arguments.measured.read_text())), arguments.pairs)
    if arguments.update is None:
        print(text, end="")
        return
    before, rest = arguments.update.read_text().split(BEGIN)
    after = rest.split(END)[1]
    arguments.update.write_text(before + BEGIN + text + END + after)


if __name__ == "__main__":
    main()

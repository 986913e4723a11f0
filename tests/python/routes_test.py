#!/usr/bin/env python3
"""Every way to a verdict gives the same one, for a million pairs of an event and a PMT:
the command, C++, Python, ROOT's data frames and a cluster."""

import csv
import os
import pathlib
import subprocess
import tempfile
import unittest

import distributed
import numpy as np
import pyarrow.csv
import pyarrow.parquet
import ROOT
import zarn
import zarn.cluster
import zarn.rdf

DATA = pathlib.Path(os.environ["ZARN_DATA_DIR"])
REFERENCE = DATA / "reference-detector"
PMTS = DATA / "pmts.csv"
EVENTS = 125  # with 8,000 PMTs each
THREADS = (1, 2, 7)

#: The calls of a user of the library, compiled by ROOT's interpreter.
CALLS = """
void JudgeEach(const ZARN::DU::ShadowingCalculator& calculator,
               const ZARN::DU::LightPath* paths, std::size_t count, unsigned char* codes) {
  for (std::size_t i = 0; i < count; ++i) {
    codes[i] = static_cast<unsigned char>(calculator.FindShadowing(paths[i]));
  }
}
void JudgeRecords(const ZARN::DU::ShadowingCalculator& calculator,
                  const ZARN::DU::LightPath* paths, std::size_t count, unsigned char* codes) {
  std::vector<ZARN::DU::eShadowingComponent> found(count);
  calculator.FindShadowing(paths, count, found.data());
  std::transform(found.begin(), found.end(), codes,
                 [](auto by) { return static_cast<unsigned char>(by); });
}
std::vector<ZARN::DU::LightPath> Records(const int* types, const double* numbers,
                                         std::size_t count) {
  std::vector<ZARN::DU::LightPath> paths(count);
  for (auto& path : paths) {
    path.LightPathType = static_cast<ZARN::DU::eLightPathType>(*types++);
    for (auto* vector : {&path.StartPos, &path.EndPos, &path.InitialDirection,
                         &path.FinalDirection, &path.AVPoint1, &path.AVPoint2,
                         &path.AVPoint3, &path.AVPoint4}) {
      vector->SetXYZ(numbers[0], numbers[1], numbers[2]);
      numbers += 3;
    }
  }
  return paths;
}
"""
VECTORS = ("start", "end", "initial", "final", "av1", "av2", "av3", "av4")
COORDINATES = [f"{vector}_{axis}" for vector in VECTORS for axis in "xyz"]


def positions_of(file):
    return np.loadtxt(file, delimiter=",", skiprows=1, usecols=(1, 2, 3))


def draw_events():
    """Positions in the vessel, its wall and the water."""
    random = np.random.default_rng(20260401)
    directions = random.normal(size=(EVENTS, 3))
    directions /= np.linalg.norm(directions, axis=1, keepdims=True)
    return directions * (7000 * np.cbrt(random.uniform(size=(EVENTS, 1))))


def column(file, tree, name):
    """A column of a ROOT file, in the order of its entries."""
    return ROOT.RDataFrame(tree, str(file)).AsNumpy([name])[name]


class Routes(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        cls.calc = zarn.Calculator(REFERENCE)
        cls.events, cls.pmts = draw_events(), positions_of(PMTS)
        with open(cls.folder / "events.csv", "w", newline="") as file:
            writer = csv.writer(file)
            writer.writerow(["event", "x", "y", "z"])
            writer.writerows([i, *map(float, event)] for i, event in enumerate(cls.events))

        # What the others are compared with: the light paths that the command computes one
        # by one, and the verdicts of the package on all pairs.
        cls.run_command("scan", "--events", "events.csv", "--pmts", PMTS, "-o", "scan.root",
                        "--columns", "code", "--paths", "paths.root")
        cls.of_pairs = cls.calc.scan(cls.events, cls.pmts).codes.reshape(-1)
        cls.of_paths = cls.of_pairs[cls.of_pairs < zarn.Verdict.TOTAL_REFLECTION]
        frame = ROOT.RDataFrame("paths", str(cls.folder / "paths.root"))
        cls.paths = frame.AsNumpy(COORDINATES)
        types = {kind.label: kind.value for kind in zarn.PathType}
        names = frame.AsNumpy(["type"])["type"]
        cls.paths["type"] = np.array([types[str(name)] for name in names], np.int32)

    @classmethod
    def run_command(cls, *arguments):
        done = subprocess.run(
            [os.environ["ZARN_SHADOW"], *map(str, arguments), "--geometry", REFERENCE],
            cwd=cls.folder, capture_output=True, text=True)
        if done.returncode != 0:
            raise AssertionError(done.stderr)

    def assert_same(self, found, wanted):
        """The same numbers; without a list of a million differences."""
        self.assertEqual(len(found), len(wanted))
        differ = np.flatnonzero(np.asarray(found) != wanted)
        self.assertEqual(len(differ), 0, f"first at {differ[:1]}")

    def test_there_are_a_million_pairs_with_every_verdict(self):
        self.assertEqual(len(self.of_pairs), 1_000_000)
        self.assertLessEqual(set(range(7)), set(self.of_pairs))
        self.assertGreater(len(self.of_paths), 500_000)

    def test_scan_of_csv_and_root_files(self):
        self.assert_same(column(self.folder / "scan.root", "verdicts", "code"), self.of_pairs)
        axes = {axis: np.ascontiguousarray(self.events[:, i]) for i, axis in enumerate("xyz")}
        ROOT.RDF.FromNumpy({"event": np.arange(EVENTS), **axes}).Snapshot(
            "events", str(self.folder / "events.root"))
        self.run_command("scan", "--events", "events.root", "--pmts", PMTS, "-o",
                         "again.root", "--columns", "code", "--threads", 2)
        self.assert_same(column(self.folder / "again.root", "verdicts", "code"), self.of_pairs)

    def test_check_of_csv_tree_and_ntuple(self):
        self.run_command("scan", "--events", "events.csv", "--pmts", PMTS,
                         "-o", "/dev/null", "--paths", "paths.csv")
        ROOT.RDataFrame("paths", str(self.folder / "paths.root")).Snapshot(
            "tree", str(self.folder / "tree.root"), ["type", *COORDINATES])
        for name in ("paths.csv", "tree.root", "paths.root"):
            with self.subTest(name=name):
                self.run_command("check", name, "--columns", "code", "-o", "codes.csv")
                found = pyarrow.csv.read_csv(self.folder / "codes.csv")["code"].to_numpy()
                self.assert_same(found, self.of_paths)

    def test_calls_of_the_library_one_by_one_and_in_batches(self):
        self.assertTrue(ROOT.gInterpreter.Declare(CALLS))
        numbers = np.ascontiguousarray(
            np.stack([self.paths[name] for name in COORDINATES], axis=1))
        records = ROOT.Records(self.paths["type"], numbers.reshape(-1), len(numbers))
        calculator = ROOT.ZARN.DU.ShadowingCalculator()
        ROOT.ZARN.LoadJsonTables(ROOT.ZARN.DB.Get(), str(REFERENCE))
        calculator.BeginOfRun()
        for judge in (ROOT.JudgeEach, ROOT.JudgeRecords):
            with self.subTest(judge=judge.__name__):
                codes = np.full(len(numbers), 255, np.uint8)
                judge(calculator, records.data(), len(codes), codes)
                self.assert_same(codes, self.of_paths)

    def test_check_of_the_package(self):
        self.assert_same(self.calc.check(self.paths), self.of_paths)

    def test_data_frames_with_any_number_of_threads(self):
        file = str(self.folder / "paths.root")
        pair = {"row": np.arange(len(self.of_pairs))}
        for name, positions in (("event", np.repeat(self.events, len(self.pmts), axis=0)),
                                ("pmt", np.tile(self.pmts, (EVENTS, 1)))):
            for i, axis in enumerate("xyz"):
                pair[f"{name}_{axis}"] = np.ascontiguousarray(positions[:, i])

        def in_order(frame):
            found = frame.AsNumpy(["row", "code"])
            return found["code"][np.argsort(found["row"])]

        for threads in THREADS:
            with self.subTest(threads=threads):
                if threads > 1:
                    ROOT.EnableImplicitMT(threads)
                try:
                    plain = ROOT.RDataFrame("paths", file).Define("row", "rdfentry_")
                    if threads == 1:
                        found = zarn.rdf.define_shadowing(plain, self.calc)
                        self.assert_same(in_order(found), self.of_paths)
                    self.assert_same(in_order(zarn.rdf.from_paths(file, self.calc)),
                                     self.of_paths)
                    read = zarn.rdf.from_paths(file)
                    self.assert_same(in_order(zarn.rdf.define_shadowing(read, self.calc)),
                                     self.of_paths)
                    pairs = ROOT.RDF.FromNumpy(pair)
                    self.assert_same(in_order(zarn.rdf.define_scan(pairs, self.calc)),
                                     self.of_pairs)
                finally:
                    ROOT.DisableImplicitMT()

    def test_a_cluster(self):
        with distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True,
                                      dashboard_address=None) as cluster:
            with distributed.Client(cluster) as client:
                zarn.cluster.scan(client, self.calc, self.events, self.pmts,
                                  out=self.folder / "parts", progress=False)
        zarn.cluster.merge(self.folder / "parts", self.folder / "merged.parquet")
        merged = pyarrow.parquet.read_table(self.folder / "merged.parquet")
        self.assert_same(merged["code"].to_numpy(), self.of_pairs)


if __name__ == "__main__":
    unittest.main()

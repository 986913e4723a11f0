#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/PathSet.hpp"
#include "benchmarks/Ways.hpp"
#include "db/DB.hpp"
#include "db/JsonTables.hpp"
#include "du/ShadowingCalculator.hpp"
#include "tests/support/Tables.hpp"

/// Cost of a verdict against the number of hold-down ropes, and of anchors:
/// geometries with one of the two alone, whose tolerance shrinks as the number
/// grows, so that about the same share of paths is shadowed.
namespace ZARN::Benchmarks {
namespace {

using Testing::Tables;
using Testing::VesselTables;

/// Paths that, with all that they touch in the largest geometries, stay in the
/// second cache; and so many that they do not.
constexpr std::size_t kPaths = 1024;
constexpr std::size_t kManyPaths = 16384;
constexpr double kPi = 3.141592653589793;

/// Mixed paths, drawn in the reference detector.
const std::vector<DU::LightPath>& ThePaths() {
  static const std::vector<DU::LightPath> paths =
      PathSource().Draw(kMixed, kManyPaths);
  return paths;
}

/// The rope of the reference detector.
const DU::AVHDRopeModel& TheRope() {
  static const DU::AVHDRopeModel rope = [] {
    DU::ShadowingCalculator calculator;
    calculator.BeginOfRun();
    return calculator.GetAVHDRopes();
  }();
  return rope;
}

/// Copies of the rope at rolls all around.
void AddRopes(int count, Tables& tables) {
  std::vector<double> rollDegrees;
  rollDegrees.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) rollDegrees.push_back(360.0 * i / count);
  tables.Set("GEO", "hold_down_ropes", "solid_definition", std::string("rope"));
  tables.Set("GEO", "hold_down_ropes", "locations", std::string("rolls"));
  tables.Set("SOLID", "rope", "r_rope", TheRope().AVHDRopeRadius);
  tables.SetPositions("SOLID", "rope", TheRope().AVHDRopePositions, "rope_");
  tables.Set("GEO_LOCATIONS", "rolls", "roll", rollDegrees);
}

Tables RopeTables(int count) {
  Tables tables = VesselTables();
  AddRopes(count, tables);
  return tables;
}

constexpr double kAnchorHalfHeight = 60.0;

/// Evenly spread over the outer sphere along a spiral.
void AddAnchors(int count, Tables& tables) {
  constexpr double kRadius = 5860.0;
  const double goldenAngle = kPi * (3.0 - std::sqrt(5.0));
  std::vector<TVector3> positions;
  for (int i = 0; i < count; ++i) {
    const double z = 1.0 - (2.0 * i + 1.0) / count;
    const double rho = std::sqrt(1.0 - z * z);
    const double phi = goldenAngle * i;
    positions.emplace_back(kRadius * rho * std::cos(phi),
                           kRadius * rho * std::sin(phi), kRadius * z);
  }
  tables.Set("GEO", "inner_av", "ncd_anchor_definition", std::string("anchor"));
  tables.Set("GEO", "inner_av", "ncd_anchor_locations", std::string("places"));
  tables.Set("SOLID", "anchor", "half_z", kAnchorHalfHeight);
  tables.Set("SOLID", "anchor", "r_max", 40.0);
  tables.SetPositions("GEO_LOCATIONS", "places", positions);
}

Tables AnchorTables(int count) {
  Tables tables = VesselTables();
  AddAnchors(count, tables);
  return tables;
}

/// On a circle around the z axis.
std::vector<TVector3> Ring(int count, double radius, double z) {
  std::vector<TVector3> positions;
  for (int i = 0; i < count; ++i) {
    const double phi = 2.0 * kPi * i / count;
    positions.emplace_back(radius * std::cos(phi), radius * std::sin(phi), z);
  }
  return positions;
}

/// So many of each part.
Tables ManyPartsTables(int count) {
  Tables tables = VesselTables();
  AddRopes(count, tables);
  AddAnchors(count, tables);
  tables.Set("GEO", "hold_up_ropes", "solid_definition",
             std::string("up_rope"));
  tables.Set("GEO", "hold_up_ropes", "locations", std::string("ring"));
  tables.Set("SOLID", "up_rope", "r_rope", 15.0);
  tables.Set("SOLID", "up_rope", "z_rope", 6090.0);
  tables.SetPositions("GEO_LOCATIONS", "ring", Ring(count, 5920.0, 5.0));
  tables.Set("SOLID", "belly_plate_vintar", "octahedron_half_height", 600.0);
  tables.Set("GEO", "inner_av", "belly_plate_locations", std::string("plates"));
  tables.SetPositions("GEO_LOCATIONS", "plates", Ring(count, 5860.0, 40.0));
  return tables;
}

double BytesInUse() {
  const auto memory = mallinfo2();
  return static_cast<double>(memory.uordblks + memory.hblkhd);
}

/// The making of layers for many parts, and what they take, by tolerance.
void TimeManyParts(benchmark::State& state) {
  constexpr int kParts = 1000;
  ManyPartsTables(kParts).Load();
  DU::ShadowingCalculator calculator;
  calculator.SetAllGeometryTolerances(1.0);  // for few points on the plates
  calculator.BeginOfRun();
  const auto tolerance = static_cast<double>(state.range(0));
  double bytes = 0.0;
  for ([[maybe_unused]] auto _ : state) {
    calculator.SetAllGeometryTolerances(tolerance);
    const double before = BytesInUse();
    calculator.MakeLayers();
    bytes = BytesInUse() - before;
  }
  state.counters["bytes"] = bytes;
}

/// A geometry in both calculators.
struct Geometry {
  /// The tables are in the database.
  Geometry(double tolerance, std::size_t plainPaths) {
    calculator.BeginOfRun();
    calculator.SetAllGeometryTolerances(tolerance);
    calculator.MakeLayers();

    many = FirstOnes(kManyPaths);
    some = FirstOnes(kPaths);
    for (PathSet* const paths : {many.get(), some.get()}) {
      for (const DU::LightPath& path : paths->Records()) {
        paths->expected.push_back(calculator.FindShadowing(path));
      }
    }
    plain.SetAllGeometryTolerances(tolerance);
    few = FirstOnes(plainPaths);
    for (const DU::LightPath& path : few->Records()) {
      few->expected.push_back(plain.FindShadowing(path));
    }
    const auto endOfSame =
        some->expected.begin() + static_cast<std::ptrdiff_t>(plainPaths);
    RequireEqual("geometry of another size", few->expected,
                 {some->expected.begin(), endOfSame});
  }

  DU::ShadowingCalculator calculator;
  PlainCalculator plain;
  std::unique_ptr<PathSet> many;
  std::unique_ptr<PathSet> some;
  std::unique_ptr<PathSet> few;  // for the plain reference

 private:
  static std::unique_ptr<PathSet> FirstOnes(std::size_t count) {
    const auto begin = ThePaths().begin();
    return std::make_unique<PathSet>(std::vector<DU::LightPath>(
        begin, begin + static_cast<std::ptrdiff_t>(count)));
  }
};

/// A size of one of the two, and what is asked there.
struct Case {
  const char* kind;
  Tables (*makeTables)(int count);
  int count;
  double tolerance;        ///< mm
  std::size_t plainPaths;  ///< of how many the plain reference is asked
};

// Tolerances at which 16 % of the paths are shadowed, as by the ten ropes of
// the reference detector at 150 mm.
constexpr std::array kCases = {
    Case{"ropes", RopeTables, 1, 1074.0, kPaths},
    Case{"ropes", RopeTables, 5, 255.5, kPaths},
    Case{"ropes", RopeTables, 10, 150.0, kPaths},
    Case{"ropes", RopeTables, 100, 2.27, 512},
    Case{"ropes", RopeTables, 480, -6.6, 128},
    Case{"ropes", RopeTables, 1000, -7.08, 128},
    Case{"ropes", RopeTables, 4000, -9.12, 64},
    Case{"anchors", AnchorTables, 10, 1618.0, kPaths},
    Case{"anchors", AnchorTables, 100, 486.0, kPaths},
    Case{"anchors", AnchorTables, 1000, 116.0, kPaths},
    Case{"anchors", AnchorTables, 10'000, -7.41, kPaths},
    Case{"anchors", AnchorTables, 100'000, -43.25, kPaths}};

/// The geometry of a case; that of the case before is given up, for the largest
/// take a gigabyte.
Geometry& GeometryOf(const Case& wanted) {
  static const Case* current = nullptr;
  static std::unique_ptr<Geometry> geometry;
  if (current != &wanted) {
    geometry = nullptr;
    wanted.makeTables(wanted.count).Load();
    geometry = std::make_unique<Geometry>(wanted.tolerance, wanted.plainPaths);
    current = &wanted;
  }
  return *geometry;
}

void AddAll() {
  // Before the reference detector's tables go.
  ThePaths();
  TheRope();
  benchmark::RegisterBenchmark("parts/1000", TimeManyParts)
      ->Arg(0)
      ->Arg(150)
      ->Unit(benchmark::kMillisecond);
  for (const Case& c : kCases) {
    const std::string name =
        std::string(c.kind) + "/" + std::to_string(c.count) + "/";
    const auto some = [&c]() -> const PathSet& { return *GeometryOf(c).some; };
    const auto calculator = [&c]() -> const DU::ShadowingCalculator& {
      return GeometryOf(c).calculator;
    };
    AddWay(name + "single", some, SingleCalls(calculator));
    AddWay(name + "batch", some, ColumnBatch(calculator));
    AddWay(
        name + "many", [&c]() -> const PathSet& { return *GeometryOf(c).many; },
        SingleCalls(calculator));
    AddWay(
        name + "plain", [&c]() -> const PathSet& { return *GeometryOf(c).few; },
        [&c](const PathSet& paths, auto* verdicts) {
          PlainCalculator& plain = GeometryOf(c).plain;
          for (const DU::LightPath& path : paths.Records()) {
            *verdicts++ = plain.FindShadowing(path);
          }
        });
  }
}

}  // namespace
}  // namespace ZARN::Benchmarks

int main(int argc, char** argv) {
  return ZARN::Benchmarks::RunBenchmarks(argc, argv, ZARN::Benchmarks::AddAll);
}

#include "du/fast/ShadowingBatch.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

#include "tests/du/Detector.hpp"
#include "tests/du/Formulas.hpp"
#include "tests/du/Neighbours.hpp"
#include "tests/du/PathColumns.hpp"
#include "tests/du/PathsAtHardware.hpp"
#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::DU {
namespace {

using eComponent = eShadowingComponent;
using Testing::InRun;
using Testing::kInfinity;
using Testing::kNaN;
using Testing::Only;
using Testing::PackedPaths;
using Testing::PathColumns;
using Testing::PathsAtHardware;
using Testing::VariedDetector;
using Verdicts = std::vector<BatchVerdict>;

/// A filter and its batch.
struct Judges {
  explicit Judges(const ShadowingCalculator& detector,
                  const ShadowingLayers& layers = {})
      : filter(detector.GetHardware(), layers), batch(filter) {}

  Verdicts OnRecords(const std::vector<LightPath>& paths) const {
    Verdicts verdicts(paths.size());
    for (std::size_t i = 0; i < paths.size(); i += kBatchPaths) {
      batch.Judge(filter, PathsInRecords(paths.data() + i),
                  std::min(kBatchPaths, paths.size() - i), verdicts.data() + i);
    }
    return verdicts;
  }
  Verdicts OnColumns(const std::vector<LightPath>& paths) const {
    const PathColumns columns(paths);
    Verdicts verdicts(paths.size());
    for (std::size_t i = 0; i < paths.size(); i += kBatchPaths) {
      batch.Judge(filter, PathsInColumns(columns.Arrays(), i),
                  std::min(kBatchPaths, paths.size() - i), verdicts.data() + i);
    }
    return verdicts;
  }

  ShadowingFilter filter;
  ShadowingBatch batch;
};

/// Expect every kernel to give the same verdicts for records and columns, and
/// each verdict to be that of the formulas or open; return the share of open
/// ones.
double ExpectRightOrOpen(const ShadowingCalculator& detector,
                         const std::vector<LightPath>& paths,
                         const ShadowingLayers& layers = {}) {
  Judges judges(detector, layers);
  const Verdicts verdicts = judges.OnRecords(paths);
  for (const eKernel kernel : AvailableKernels()) {
    SCOPED_TRACE(static_cast<int>(kernel));
    judges.batch.UseKernel(kernel);
    EXPECT_EQ(judges.OnRecords(paths), verdicts);
    EXPECT_EQ(judges.OnColumns(paths), verdicts);
  }
  int open = 0;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    if (verdicts[i] == kOpenVerdict) {
      ++open;
    } else {
      EXPECT_EQ(static_cast<eComponent>(verdicts[i]),
                Testing::FindByFormulas(detector, paths[i]))
          << "path " << i << " of type " << paths[i].LightPathType;
    }
  }
  return open / static_cast<double>(paths.size());
}

TEST(ShadowingBatch, IsNeverWrongAboutPathsAtTheHardware) {
  EXPECT_LT(ExpectRightOrOpen(VariedDetector(),
                              PathsAtHardware(VariedDetector(), 50).Make(8000)),
            0.5);
}

TEST(ShadowingBatch, LeavesFewOrdinaryPathsOfEachTypeOpen) {
  // From anywhere on the vessel, or in the water, outwards.
  Testing::Random random(51);
  for (int type = kUninitialised + 1; type < kNumberOfLightPathTypes; ++type) {
    std::vector<LightPath> paths(1000);
    for (LightPath& path : paths) {
      path = Testing::AllAt(static_cast<eLightPathType>(type),
                            5860.0 * random.Direction());
      path.AVPoint4 = 5860.0 * random.Direction();
      path.StartPos = random.Uniform(6000, 8500) * random.Direction();
      path.EndPos = random.Uniform(6000, 8500) * random.Direction();
      const auto outwards = [&](const TVector3& point) {
        return (point.Unit() + 0.7 * random.Direction()).Unit();
      };
      path.InitialDirection = type == kWater
                                  ? (path.EndPos - path.StartPos).Unit()
                                  : -outwards(path.AVPoint1);
      path.FinalDirection = outwards(
          type == kWaterThroughInnerAV ? path.AVPoint4 : path.AVPoint1);
    }
    EXPECT_LT(ExpectRightOrOpen(VariedDetector(), paths), 0.15) << type;
  }
}

TEST(ShadowingBatch, IsNeverWrongForEachComponentAlone) {
  const auto paths = PathsAtHardware(VariedDetector(), 52).Make(2000);
  for (const eComponent component : kShadowingComponents) {
    SCOPED_TRACE(NameOf(component));
    EXPECT_LT(ExpectRightOrOpen(InRun(Only({component})), paths), 0.5);
  }
}

TEST(ShadowingBatch, IsNeverWrongWithAnyLayerOff) {
  const auto paths = PathsAtHardware(VariedDetector(), 53).Make(1000);
  for (int off = 1; off < 8; ++off) {
    SCOPED_TRACE(off);
    ExpectRightOrOpen(VariedDetector(), paths,
                      {(off & 1) == 0, (off & 2) == 0, (off & 4) == 0});
  }
}

TEST(ShadowingBatch, IsNeverWrongForAnyTolerance) {
  const auto paths = PathsAtHardware(VariedDetector(), 54).Make(700);
  ShadowingCalculator detector = VariedDetector();
  for (const double tolerance : {-1000.0, -15.0, -12.0, 0.0, 1e-170, 50.0,
                                 3000.0, 1e5, 1e300, HUGE_VAL, std::nan("")}) {
    SCOPED_TRACE(tolerance);
    detector.SetAllGeometryTolerances(tolerance);
    ExpectRightOrOpen(detector, paths);
  }
}

TEST(ShadowingBatch, IsNeverWrongForBadNumbers) {
  auto paths = PathsAtHardware(VariedDetector(), 55).Make(3000);
  std::size_t i = 0;
  for (LightPath& path : paths) {
    constexpr std::array kMembers = {
        &LightPath::AVPoint1,       &LightPath::AVPoint2,
        &LightPath::AVPoint4,       &LightPath::StartPos,
        &LightPath::EndPos,         &LightPath::InitialDirection,
        &LightPath::FinalDirection, &LightPath::AVPoint3};
    constexpr std::array kFactors = {0.0,   1e-170, 1e-45, 1e-30,     0.999,
                                     1.001, 1e5,    1e20,  kInfinity, kNaN,
                                     1e38,  4e38,   1e200};
    TVector3& vector = path.*kMembers[i % kMembers.size()];
    const double factor = kFactors[i % kFactors.size()];
    if (i % 3 == 0) {
      vector *= factor;
    } else {
      vector[static_cast<int>(i / 8 % 3)] *= factor;
    }
    ++i;
  }
  EXPECT_LT(ExpectRightOrOpen(VariedDetector(), paths), 0.9);
}

TEST(ShadowingBatch, JudgesAnyNumberOfPathsAndNoMore) {
  const Judges judges(VariedDetector());
  const auto paths = PathsAtHardware(VariedDetector(), 56).Make(kBatchPaths);
  const Verdicts all = judges.OnRecords(paths);
  const PathColumns columns(paths);
  constexpr BatchVerdict kUntouched = 200;
  for (const std::size_t count : {0U, 1U, 2U, 7U, 8U, 15U, 16U, 17U, 255U}) {
    SCOPED_TRACE(count);
    Verdicts expected(kBatchPaths, kUntouched);
    std::copy_n(all.begin(), count, expected.begin());
    Verdicts verdicts(kBatchPaths, kUntouched);
    judges.batch.Judge(judges.filter, PathsInRecords(paths.data()), count,
                       verdicts.data());
    EXPECT_EQ(verdicts, expected);
    verdicts.assign(kBatchPaths, kUntouched);
    judges.batch.Judge(judges.filter, PathsInColumns(columns.Arrays()), count,
                       verdicts.data());
    EXPECT_EQ(verdicts, expected);
    // Starting somewhere inside the columns.
    const std::size_t first = kBatchPaths - count;
    judges.batch.Judge(judges.filter, PathsInColumns(columns.Arrays(), first),
                       count, verdicts.data());
    EXPECT_TRUE(std::equal(all.begin() + static_cast<std::ptrdiff_t>(first),
                           all.end(), verdicts.begin()));
  }
}

TEST(ShadowingBatch, NoticesOnePathOfAnotherTypeAtAnyPlace) {
  const Judges judges(VariedDetector());
  const std::vector<LightPath> paths(20, Testing::FreePath());
  const Verdicts alike = judges.OnRecords(paths);
  ASSERT_NE(alike.front(), kOpenVerdict);
  for (std::size_t i = 0; i < paths.size(); ++i) {
    SCOPED_TRACE(i);
    std::vector<LightPath> mixed = paths;
    mixed[i].LightPathType = kUninitialised;
    Verdicts expected = alike;
    expected[i] = kOpenVerdict;
    EXPECT_EQ(judges.OnRecords(mixed), expected);
    EXPECT_EQ(judges.OnColumns(mixed), expected);
  }
}

TEST(ShadowingBatch, LeavesUnusualTypesOpenAmongOthers) {
  const Judges judges(VariedDetector());
  auto paths = PathsAtHardware(VariedDetector(), 57).Make(200);
  const Verdicts before = judges.OnRecords(paths);
  std::size_t next = 0;
  for (const int type :
       {int{kUninitialised}, -1, int{kNumberOfLightPathTypes}, 99,
        std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    paths[next].LightPathType = static_cast<eLightPathType>(type);
    next += 7;
  }
  for (const Verdicts& verdicts :
       {judges.OnRecords(paths), judges.OnColumns(paths)}) {
    for (std::size_t i = 0; i < paths.size(); ++i) {
      const bool isUnusual = i % 7 == 0 && i < next;
      EXPECT_EQ(verdicts[i], isUnusual ? kOpenVerdict : before[i]) << i;
    }
  }
}

TEST(ShadowingBatch, ReadsOnlyTheColumnsThatItsTypesUse) {
  const Judges judges(VariedDetector());
  auto paths = PathsAtHardware(VariedDetector(), 58).Make(kBatchPaths);
  const auto expectSameWithout =
      [&](eLightPathType type,
          const std::vector<VectorArrays LightPathArrays::*>& unused) {
        for (LightPath& path : paths) path.LightPathType = type;
        const PathColumns columns(paths);
        LightPathArrays arrays = columns.Arrays();
        for (const auto member : unused) arrays.*member = {};
        Verdicts verdicts(paths.size());
        judges.batch.Judge(judges.filter, PathsInColumns(arrays), paths.size(),
                           verdicts.data());
        EXPECT_EQ(verdicts, judges.OnRecords(paths));
      };
  using A = LightPathArrays;
  expectSameWithout(kWater, {&A::FinalDirection, &A::AVPoint1, &A::AVPoint2,
                             &A::AVPoint3, &A::AVPoint4});
  expectSameWithout(kInnerAVToWater,
                    {&A::InitialDirection, &A::StartPos, &A::EndPos,
                     &A::AVPoint1, &A::AVPoint3, &A::AVPoint4});
  expectSameWithout(kWaterReflection, {&A::StartPos, &A::EndPos, &A::AVPoint2,
                                       &A::AVPoint3, &A::AVPoint4});
}

TEST(ShadowingBatch, ReadsColumnsThatAreFieldsOfPackedRecords) {
  // As in a packed structured array: no number is aligned.
  const Judges judges(VariedDetector());
  const auto paths = PathsAtHardware(VariedDetector(), 59).Make(kBatchPaths);
  const PackedPaths packed(paths);
  Verdicts verdicts(paths.size());
  judges.batch.Judge(judges.filter, PathsInColumns(packed.Arrays()),
                     paths.size(), verdicts.data());
  EXPECT_EQ(verdicts, judges.OnRecords(paths));
}

TEST(ShadowingBatch, HasAKernelForEveryProcessor) {
  const std::vector<eKernel> kernels = AvailableKernels();
  ASSERT_FALSE(kernels.empty());
  EXPECT_EQ(kernels.front(), eKernel::kBaseline);
  EXPECT_TRUE(std::is_sorted(kernels.begin(), kernels.end()));
}

TEST(ShadowingBatch, BlocksNothingBeforeTheFirstRun) {
  const auto paths = PathsAtHardware(VariedDetector(), 60).Make(500);
  const ShadowingCalculator empty;
  EXPECT_LT(ExpectRightOrOpen(empty, paths), 1.0);
}

TEST(ShadowingBatch, WorksWithACopyOfTheFilterThatItWasBuiltFrom) {
  const auto paths = PathsAtHardware(VariedDetector(), 61).Make(kBatchPaths);
  std::optional<ShadowingFilter> filter;
  filter.emplace(VariedDetector().GetHardware(), ShadowingLayers());
  const ShadowingBatch batch(*filter);
  const ShadowingFilter copy = *filter;
  filter.reset();
  Verdicts verdicts(paths.size());
  batch.Judge(copy, PathsInRecords(paths.data()), paths.size(),
              verdicts.data());
  EXPECT_EQ(verdicts, Judges(VariedDetector()).OnRecords(paths));
}

/// Paths that cross the vessel at a few heights, and between two of them.
std::vector<LightPath> PathsAtHeights(const ShadowingCalculator& detector,
                                      const std::vector<double>& heights,
                                      std::uint64_t seed, std::size_t count) {
  Testing::Random random(seed);
  auto paths = PathsAtHardware(detector, seed).Make(count);
  const double radius = detector.GetOuterAVRadius();
  for (LightPath& path : paths) {
    if (path.LightPathType == kWater) path.LightPathType = kAVToWater;
    for (const auto member : kAVPoints) {
      TVector3& point = path.*member;
      const double z = random.Pick(heights);
      point.SetPerp(std::sqrt(radius * radius - z * z));
      point.SetZ(z);
    }
  }
  return paths;
}

/// A height, its neighbours in both precisions, and the numbers at the distance
/// of its margins for single precision and for rays.
std::vector<double> HeightsAround(double height) {
  std::vector<double> heights = {height, Testing::Above(height),
                                 Testing::Below(height)};
  const auto single = static_cast<float>(height);
  constexpr float kFloatInfinity = std::numeric_limits<float>::infinity();
  for (const float towards : {-kFloatInfinity, kFloatInfinity}) {
    float next = single;
    for (int i = 0; i < 3; ++i) {
      heights.push_back(double{next});
      // The number halfway is rounded to one or the other.
      const float after = std::nextafter(next, towards);
      heights.push_back(0.5 * (double{next} + double{after}));
      next = after;
    }
  }
  const double band = kSinglePrecisionBand * std::max(1.0, std::abs(height));
  for (const double margin : {band, kHeightError + band}) {
    for (const double part : {0.1, 0.5, 0.9, 1.0, 1.1, 2.0, 100.0}) {
      heights.push_back(height - part * margin);
      heights.push_back(height + part * margin);
    }
  }
  return heights;
}

TEST(ShadowingBatch, IsNeverWrongAboutCrossingsWhereOneKindOfRopesEnds) {
  const double ends =
      VariedDetector().GetAVHDRopes().AVHDRopeEndPoints.front().Z();
  const double feet =
      VariedDetector().GetSupportRopes().SupportRopePositions.front().Z();
  for (const double height : {ends, feet}) {
    SCOPED_TRACE(height);
    const double open = ExpectRightOrOpen(
        VariedDetector(),
        PathsAtHeights(VariedDetector(), HeightsAround(height), 87, 8000));
    EXPECT_GT(open, 0.1);
    EXPECT_LT(open, 0.99);
  }
}

TEST(ShadowingBatch, MeetsNoVerticalRopesBetweenTheirEndsAndFeet) {
  const double ends =
      VariedDetector().GetAVHDRopes().AVHDRopeEndPoints.front().Z();
  const double feet =
      VariedDetector().GetSupportRopes().SupportRopePositions.front().Z();
  ASSERT_LT(ends + 1.0, feet);
  std::vector<double> heights;
  for (double z = ends + 0.1; z < feet - 0.05; z += 0.1) heights.push_back(z);
  // Nothing is left to the ropes' formulas, whatever the direction.
  EXPECT_EQ(
      ExpectRightOrOpen(VariedDetector(),
                        PathsAtHeights(VariedDetector(), heights, 88, 4000)),
      0.0);
}

TEST(ShadowingBatch, IsNeverWrongWhereBothKindsOfRopesAreMet) {
  Testing::Tables tables = Testing::VariedTables();
  tables.SetPositions("GEO_LOCATIONS", "rope_anchors",
                      {{-400, 5906, -900}, {5920, 0, 5}, {-4186, -4186, 5}});
  const ShadowingCalculator detector = InRun(tables);
  const double ends = detector.GetAVHDRopes().AVHDRopeEndPoints.front().Z();
  const double feet =
      detector.GetSupportRopes().SupportRopePositions.front().Z();
  ASSERT_GT(ends, feet);
  for (const double height : {ends, feet}) {
    ExpectRightOrOpen(
        detector, PathsAtHeights(detector, HeightsAround(height), 89, 4000));
  }
  std::vector<double> heights;
  for (double z = feet - 100; z < ends + 100; z += 1.0) heights.push_back(z);
  const double open =
      ExpectRightOrOpen(detector, PathsAtHeights(detector, heights, 90, 8000));
  EXPECT_GT(open, 0.3);
  EXPECT_LT(open, 1.0);
}

TEST(ShadowingBatch, TestsNoSurfaceRopesBelowTheirEnds) {
  // The edge of a plate is at the end of a rope, so the map is unsure there.
  // Directions along the vessel miss the vertical rope.
  Testing::Tables tables =
      Only({eComponent::kAVHDRope, eComponent::kBellyPlate});
  TVector3 plate(0, 5860, 40);
  plate.RotateZ(-750.0 / 5860.0);
  tables.SetPositions("GEO_LOCATIONS", "plates", {plate});
  const ShadowingCalculator detector = InRun(tables);
  const double ends = detector.GetAVHDRopes().AVHDRopeEndPoints.front().Z();
  Testing::Random random(91);
  std::vector<LightPath> paths(4000);
  for (LightPath& path : paths) {
    TVector3 point(0, 5860, ends - random.Uniform(0.001, 150));
    point.RotateZ(random.Uniform(-0.003, 0.003));
    point.SetMag(5860);
    TVector3 direction(random.Chance(0.5) ? 1 : -1, random.Uniform(0, 0.2), 0);
    direction.SetZ(random.Uniform(-0.1, 0.1));
    path = Testing::OneCrossing(point, direction.Unit());
  }
  EXPECT_LT(ExpectRightOrOpen(detector, paths), 0.9);
  const ShadowingFilter filter(detector.GetHardware(), {});
  const auto isFreeBesideTheSurface = [&](const LightPath& path) {
    return filter.SurfacePoints().HasPointNear(path.AVPoint1) &&
           Testing::FindByFormulas(detector, path) == eComponent::kNone;
  };
  EXPECT_GT(std::count_if(paths.begin(), paths.end(), isFreeBesideTheSurface),
            100);
}

}  // namespace
}  // namespace ZARN::DU

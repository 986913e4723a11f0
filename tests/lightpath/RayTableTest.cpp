#include "lightpath/RayTable.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "lightpath/LightPathCalculator.hpp"
#include "lightpath/PMTArray.hpp"
#include "tests/lightpath/Vessels.hpp"
#include "tests/property/Random.hpp"

namespace ZARN::Testing {
namespace {

constexpr int kTableCells = 64;

/// Places that a table and a single calculation can both give.
struct Ends {
  TVector3 last;  // point, in outer radii
  TVector3 lastDirection;
  TVector3 first;
  TVector3 back;
};

double DistanceBetween(const Ends& a, const Ends& b) {
  return std::max({(a.last - b.last).Mag(),
                   (a.lastDirection - b.lastDirection).Mag(),
                   (a.first - b.first).Mag(), (a.back - b.back).Mag()});
}

/// What a comparison found.
struct Found {
  int rays = 0;
  int known = 0;       // with a bound below 1e-8
  int empty = 0;       // surely without a path
  double worst = 0.0;  // error by bound
};

class TableComparison {
 public:
  TableComparison(const DU::ConcentricMedia& media, DU::eKernel kernel)
      : media_(media),
        calculator_(CalculatorFor(media)),
        kernel_(DU::RayKernelOf(kernel)) {}

  void Compare(const TVector3& eventPos, const std::vector<TVector3>& positions,
               DU::eLight light, DU::eSteps steps) {
    const DU::PMTArray pmts(positions);
    for (const DU::PMTArray::Group& group : pmts.Groups()) {
      const DU::RayTable table(
          light, media_, eventPos.Mag(),
          {group.lowest, 0.5 * (group.lowest + group.highest), group.highest},
          kTableCells);
      for (std::size_t i = group.begin; i < group.end; ++i) {
        Compare(table, eventPos, pmts, i, light, steps);
      }
    }
  }

  /// The same for PMTs at the ends of the table's ranges, at the distance
  /// @p lowest and at a distance that is larger by the share @p width.
  void CompareAtEnds(const TVector3& eventPos, double lowest, double width,
                     DU::eLight light) {
    const double highest = lowest * (1.0 + width);
    const DU::RayTable table(light, media_, eventPos.Mag(),
                             {lowest, 0.5 * (lowest + highest), highest},
                             kTableCells);
    const TVector3 towards = eventPos.Unit();
    const TVector3 across = towards.Orthogonal().Unit();
    std::vector<TVector3> positions;
    for (const double end : {table.LeastNear(), table.MostFar(),
                             table.LeastEmpty(), table.MostEmpty()}) {
      for (double step = 1e-16; step < 1e-5; step *= 10.0) {
        for (const double x : {end - step, end + step}) {
          if (std::abs(x) > 1.0) continue;
          const TVector3 direction =
              x * towards + std::sqrt(1.0 - x * x) * across;
          positions.push_back(lowest * direction);
          positions.push_back(highest * direction);
        }
      }
    }
    const DU::PMTArray pmts(positions);
    for (std::size_t i = 0; i < pmts.X().size(); ++i) {
      Compare(table, eventPos, pmts, i, light, DU::eSteps::kMany);
    }
  }

  Found found;

 private:
  void Compare(const DU::RayTable& table, const TVector3& eventPos,
               const DU::PMTArray& pmts, std::size_t i, DU::eLight light,
               DU::eSteps steps) {
    const TVector3 towards = eventPos * (1.0 / eventPos.Mag());
    const double x =
        TVector3(pmts.X()[i], pmts.Y()[i], pmts.Z()[i]).Dot(towards);
    Calculate(eventPos, pmts.At(pmts.Order()[i]), light);
    if (x > table.LeastNear()) {
      CompareRay(*table.Near(), towards, pmts, i, steps);
    } else if (x < table.MostFar()) {
      CompareRay(*table.Far(), towards, pmts, i, steps);
    } else if (x > table.LeastEmpty() && x < table.MostEmpty()) {
      ++found.empty;
      EXPECT_FALSE(calculator_.HasPath()) << Exact(eventPos);
    }
  }

  void Calculate(const TVector3& eventPos, const TVector3& pmtPos,
                 DU::eLight light) {
    if (light == DU::eLight::kDirect) {
      calculator_.CalcByPosition(eventPos, pmtPos);
    } else {
      calculator_.CalcReflectionByPosition(eventPos, pmtPos);
    }
  }

  void CompareRay(const DU::RayRange& range, const TVector3& towards,
                  const DU::PMTArray& pmts, std::size_t pmt, DU::eSteps steps) {
    if (range.type == DU::kWater) {
      EXPECT_EQ(calculator_.GetLightPathType(), DU::kWater);
      return;
    }
    ++found.rays;
    DU::RayBlock& block = *block_;
    const DU::RayPMTs traced = {&pmts.X()[pmt], &pmts.Y()[pmt], &pmts.Z()[pmt],
                                &pmts.InverseRadius()[pmt]};
    const DU::RayOrigin origin = {towards.X(), towards.Y(), towards.Z()};
    kernel_.trace(range.branch, origin, steps, traced, block, 1);
    kernel_.traceBack(range.branch, origin, traced, block, 1);
    const double bound = block.bound.at[0];
    if (!(bound < 1e-3)) return;
    if (bound < 1e-8) ++found.known;
    ASSERT_EQ(calculator_.GetLightPathType(), range.type);
    const Ends exact = EndsOf(calculator_.GetLightPath());
    Ends ends = {{block.pointX.at[0], block.pointY.at[0], block.pointZ.at[0]},
                 {block.directionX.at[0], block.directionY.at[0],
                  block.directionZ.at[0]},
                 exact.first,
                 exact.back};
    if (range.type == DU::kWaterThroughInnerAV ||
        range.type == DU::kWaterReflection) {
      ends.first = {block.firstX.at[0], block.firstY.at[0], block.firstZ.at[0]};
      ends.back = {block.backX.at[0], block.backY.at[0], block.backZ.at[0]};
    }
    found.worst = std::max(found.worst, DistanceBetween(exact, ends) / bound);
  }

  Ends EndsOf(const DU::LightPath& path) const {
    const auto last = [&] {
      switch (path.LightPathType) {
        case DU::kInnerAVToWater:
          return path.AVPoint2;
        case DU::kAVThroughInnerAVToWater:
          return path.AVPoint3;
        case DU::kWaterThroughInnerAV:
          return path.AVPoint4;
        default:
          return path.AVPoint1;
      }
    };
    const double scale = 1.0 / media_.OuterRadius;
    return {last() * scale, path.FinalDirection, path.AVPoint1 * scale,
            -path.InitialDirection};
  }

  DU::ConcentricMedia media_;
  DU::LightPathCalculator calculator_;
  const DU::RayKernel& kernel_;
  std::unique_ptr<DU::RayBlock> block_ = std::make_unique<DU::RayBlock>();
};

/// Distances from the centre where rays are hard to follow, for any vessel.
std::vector<double> RadiiForTables(const DU::ConcentricMedia& media,
                                   Random& random) {
  const double inner = media.InnerRadius;
  const double outer = media.OuterRadius;
  // Where total reflection begins.
  const double index = media.RefractiveIndex[2] * outer;
  std::vector<double> radii = {1e-9 * inner, 0.01 * inner, 0.5 * inner,
                               index / media.RefractiveIndex[0],
                               index / media.RefractiveIndex[1]};
  for (const double surface : {inner, outer}) {
    for (const double step : {1e-9, 1e-5, 0.01}) {
      radii.push_back(surface * (1.0 - step));
      radii.push_back(surface * (1.0 + step));
    }
    radii.push_back(surface);
  }
  for (int i = 0; i < 8; ++i) {
    radii.push_back(outer * random.Uniform(0.0, 1.4));
    radii.push_back(index / media.RefractiveIndex[0] *
                    random.Uniform(0.97, 1.01));
  }
  return radii;
}

/// PMTs in all directions, also nearly in line with the event and the centre.
std::vector<TVector3> PMTsForTables(const TVector3& eventPos, double lowest,
                                    double highest, int count, Random& random) {
  std::vector<TVector3> positions;
  for (int i = 0; i < count; ++i) {
    TVector3 direction = random.Direction();
    if (random.Chance(0.1)) {
      direction *= std::pow(10.0, random.Uniform(-8.0, 0.0));
      direction += random.Chance(0.5) ? eventPos.Unit() : -eventPos.Unit();
    }
    positions.push_back(direction.Unit() * random.Uniform(lowest, highest));
  }
  return positions;
}

class RayTables : public testing::TestWithParam<DU::eKernel> {};

TEST_P(RayTables, FollowEveryRayWithinItsBound) {
  Random random(20260301);
  Found all;
  for (const Vessel& vessel : Vessels()) {
    SCOPED_TRACE(vessel.Name);
    TableComparison comparison(vessel.Media, GetParam());
    const double outer = vessel.Media.OuterRadius;
    for (const double radius : RadiiForTables(vessel.Media, random)) {
      SCOPED_TRACE(radius);
      const TVector3 eventPos = random.Direction() * radius;
      const double at = outer * random.Uniform(1.001, 2.0);
      comparison.Compare(
          eventPos, PMTsForTables(eventPos, at, at * (1 + 1e-7), 40, random),
          DU::eLight::kDirect, DU::eSteps::kOne);
      comparison.Compare(
          eventPos, PMTsForTables(eventPos, at, at * (1 + 1e-7), 40, random),
          DU::eLight::kDirect, DU::eSteps::kMany);
      comparison.Compare(eventPos,
                         PMTsForTables(eventPos, at, 1.3 * at, 60, random),
                         DU::eLight::kDirect, DU::eSteps::kMany);
      // One PMT far away makes the groups of the others wide.
      std::vector<TVector3> inWideGroups =
          PMTsForTables(eventPos, at, 1.3 * at, 60, random);
      inWideGroups.push_back(random.Direction() * (8.0 * at));
      comparison.Compare(eventPos, inWideGroups, DU::eLight::kDirect,
                         DU::eSteps::kMany);
      comparison.Compare(
          eventPos, PMTsForTables(eventPos, at, at * (1 + 1e-7), 20, random),
          DU::eLight::kReflected, DU::eSteps::kOne);
    }
    all.rays += comparison.found.rays;
    all.known += comparison.found.known;
    all.empty += comparison.found.empty;
    EXPECT_LE(comparison.found.worst, 1.0);
  }
  // Otherwise the comparison says nothing.
  EXPECT_GT(all.rays, 20000);
  EXPECT_GT(all.known, all.rays / 2);
  EXPECT_GT(all.empty, 1000);
}

TEST_P(RayTables, FollowRaysInRandomMedia) {
  Random random(7);
  for (int i = 0; i < 150; ++i) {
    const DU::ConcentricMedia media = RandomMedia(random);
    TableComparison comparison(media, GetParam());
    const TVector3 eventPos =
        random.Direction() * (media.OuterRadius * random.Uniform(0.0, 1.5));
    const double at = media.OuterRadius * random.Uniform(1.0001, 2.0);
    comparison.Compare(eventPos,
                       PMTsForTables(eventPos, at, at * (1 + 1e-7), 60, random),
                       DU::eLight::kDirect, DU::eSteps::kMany);
    EXPECT_LE(comparison.found.worst, 1.0) << i;
  }
}

TEST_P(RayTables, AreRightUpToTheEndsOfTheirRanges) {
  Random random(8);
  Found all;
  for (const Vessel& vessel : Vessels()) {
    SCOPED_TRACE(vessel.Name);
    TableComparison comparison(vessel.Media, GetParam());
    for (const double radius : RadiiForTables(vessel.Media, random)) {
      SCOPED_TRACE(radius);
      const TVector3 eventPos = random.Direction() * radius;
      for (const double width : {0.0, 1e-6, 1e-5, 1e-3}) {
        const double at = vessel.Media.OuterRadius * random.Uniform(1.001, 2.0);
        comparison.CompareAtEnds(eventPos, at, width, DU::eLight::kDirect);
        comparison.CompareAtEnds(eventPos, at, width, DU::eLight::kReflected);
      }
    }
    all.rays += comparison.found.rays;
    all.known += comparison.found.known;
    all.empty += comparison.found.empty;
    EXPECT_LE(comparison.found.worst, 1.0);
  }
  EXPECT_GT(all.known, 10000);
  EXPECT_GT(all.empty, 10000);
}

INSTANTIATE_TEST_SUITE_P(OfAllKernels, RayTables,
                         testing::ValuesIn(DU::AvailableKernels()));

TEST(RayTable, KnowsMostRaysOfARealVessel) {
  Random random(3);
  const DU::ConcentricMedia media = Vessels().front().Media;
  for (const double radius : {0.0, 2000.0, 5000.0, 5700.0, 5830.0, 7000.0}) {
    TableComparison comparison(media, DU::WidestKernel());
    const TVector3 eventPos = random.Direction() * std::max(radius, 1e-9);
    comparison.Compare(eventPos,
                       PMTsForTables(eventPos, 8400.0, 8400.001, 4000, random),
                       DU::eLight::kDirect, DU::eSteps::kMany);
    // A tenth of the PMTs are nearly in line with the event and the centre.
    EXPECT_GT(comparison.found.known, 0.9 * comparison.found.rays) << radius;
  }
}

TEST(RayTable, IsEmptyForPMTsAtTheVessel) {
  const DU::ConcentricMedia media = Vessels().front().Media;
  const DU::RayTable table(DU::eLight::kDirect, media, 1000.0,
                           {5860.0, 5861.0, 5862.0}, kTableCells);
  EXPECT_FALSE(table.Near().has_value());
  EXPECT_FALSE(table.Far().has_value());
  EXPECT_FALSE(table.LeastEmpty() < table.MostEmpty());
}

}  // namespace
}  // namespace ZARN::Testing

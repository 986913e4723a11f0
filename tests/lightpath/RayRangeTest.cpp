#include "lightpath/RayRange.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>

#include "lightpath/RaySearch.hpp"
#include "lightpath/RayTable.hpp"
#include "tests/lightpath/Vessels.hpp"
#include "tests/property/Random.hpp"

namespace ZARN::Testing {
namespace {

constexpr int kCells = 64;

/// The cell of PMTs at an angle with this cosine to the event, as the kernels
/// find it.
const DU::RayCell& CellOf(const DU::RayBranch& branch, double x) {
  const double y = branch.sense * x;
  const double along =
      branch.isFolded ? std::sqrt(std::max(y - branch.fold, 0.0)) : y;
  const double place = (along - branch.first) * branch.scale;
  return branch
      .cells[static_cast<std::size_t>(std::clamp(place, 0.0, kCells - 1.0))];
}

/// The cosine of an angle in a range: anywhere, or next to a border of cells.
double DrawCosine(const DU::RayBranch& branch, Random& random) {
  double place = random.Uniform(0.0, kCells);
  if (random.Chance(0.7)) {
    place = std::round(place) + (random.Chance(0.5) ? 1 : -1) *
                                    std::pow(10.0, random.Uniform(-9.0, -1.0));
  }
  const double along = branch.first + place / branch.scale;
  const double y = branch.isFolded ? branch.fold + along * along : along;
  return branch.sense * y;
}

/// Holds the bounds of cells against exact rays.
class SlopeComparison {
 public:
  void Compare(const DU::ConcentricMedia& media, double eventRadius,
               const DU::PMTRadii& pmts, Random& random) {
    const DU::RayTable table(DU::eLight::kDirect, media, eventRadius, pmts,
                             kCells);
    CompareRange(table.Near(), media, eventRadius, pmts, random,
                 [&](double x) { return x > table.LeastNear(); });
    CompareRange(table.Far(), media, eventRadius, pmts, random,
                 [&](double x) { return x < table.MostFar(); });
  }

  int bounded = 0;
  int open = 0;
  double worst = -1.0;  // beyond the bounds, as a share of the inverse slope

 private:
  template <class IsIn>
  void CompareRange(const std::optional<DU::RayRange>& range,
                    const DU::ConcentricMedia& media, double eventRadius,
                    const DU::PMTRadii& pmts, Random& random,
                    const IsIn& isIn) {
    if (!range.has_value() || range->cells.empty()) return;
    constexpr int kDirections = 60;
    for (int i = 0; i < kDirections; ++i) {
      const double x = DrawCosine(range->branch, random);
      if (!(std::abs(x) < 1.0) || !isIn(x)) continue;
      for (const double radius : {pmts.lowest, pmts.middle, pmts.highest}) {
        CompareRay(CellOf(range->branch, x), media,
                   {eventRadius, radius, std::acos(x)});
      }
    }
  }

  void CompareRay(const DU::RayCell& cell, const DU::ConcentricMedia& media,
                  const DU::PathEnds& ends) {
    const DU::JoiningRay ray = DU::FindShortestRay(media, ends).Joining;
    ASSERT_NE(ray.Family, nullptr);
    ++(std::isinf(cell.spread) ? open : bounded);
    const auto middle = static_cast<double>(cell.inverseSlope);
    const auto spread = static_cast<double>(cell.spread);
    const double inverse = std::abs(1.0 / ray.Ray.Slope);
    const double beyond = std::abs(inverse - middle) - spread;
    worst = std::max(worst, beyond / inverse);
  }
};

TEST(RayRange, BoundsTheInverseSlopeOfEveryRayOfACell) {
  constexpr double kRounding = 1e-12;
  Random random(9);
  SlopeComparison comparison;
  for (const Vessel& vessel : Vessels()) {
    SCOPED_TRACE(vessel.Name);
    const double outer = vessel.Media.OuterRadius;
    for (const double width : {0.0, 1e-6, 1e-4, 1e-2, 1e-1}) {
      for (int i = 0; i < 60; ++i) {
        const double at = outer * random.Uniform(1.001, 2.0);
        comparison.Compare(vessel.Media, outer * random.Uniform(0.0, 1.5),
                           {at, at * (1.0 + 0.5 * width), at * (1.0 + width)},
                           random);
      }
      EXPECT_LE(comparison.worst, kRounding) << width;
    }
  }
  EXPECT_GT(comparison.bounded, 100000);
  EXPECT_LT(comparison.open, comparison.bounded / 20);
}

}  // namespace
}  // namespace ZARN::Testing

#include "lightpath/LightPathRow.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <vector>

#include "lightpath/LightPathCalculator.hpp"
#include "lightpath/PathBatch.hpp"
#include "tests/lightpath/RowColumns.hpp"
#include "tests/lightpath/Vessels.hpp"
#include "tests/property/Random.hpp"
#include "tests/support/Repetitions.hpp"
#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::Testing {
namespace {

constexpr double kPromise = DU::PathBatch::kPromise;

bool AreSame(double a, double b) {
  return a == b || (std::isnan(a) && std::isnan(b));
}

/// Number of PMTs of a long row.
constexpr int kPMTs = Repetitions(500, 50);

/// Rows of one vessel, compared with the same paths one by one.
class RowComparison {
 public:
  RowComparison(const DU::ConcentricMedia& media, DU::eKernel kernel)
      : calculator_(CalculatorFor(media)), kernel_(kernel) {}

  void Compare(const TVector3& eventPos,
               const std::vector<TVector3>& positions) {
    SCOPED_TRACE(Exact(eventPos));
    const DU::PMTArray pmts(positions);
    const RowColumns row(pmts.Count());
    const RowColumns single(pmts.Count());
    DU::PathBatch batch(calculator_.GetMedia(), calculator_.GetGroupIndices(),
                        eventPos, pmts);
    batch.UseKernel(kernel_);
    batch.Calc(row.Row());
    CalcOneByOne(calculator_, eventPos, pmts, single.Row());
    for (std::size_t i = 0; i < pmts.Count(); ++i) {
      SCOPED_TRACE(Exact(pmts.At(i)));
      ComparePath(row, single, i);
    }
  }

  int paths = 0;
  int fast = 0;        // not computed as a single path
  double worst = 0.0;  // error by bound

 private:
  void ComparePath(const RowColumns& row, const RowColumns& single,
                   std::size_t i) {
    const double bound = row.Row().Bound[i];
    ASSERT_GE(bound, 0.0);
    ASSERT_LE(bound, kPromise);
    ASSERT_EQ(row.Types()[i], single.Types()[i]);
    ++paths;
    if (bound > 0.0) ++fast;
    for (std::size_t column = 0; column < row.Numbers().size(); ++column) {
      const double found = row.Numbers()[column][i];
      const double exact = single.Numbers()[column][i];
      if (bound == 0.0) {
        ASSERT_TRUE(AreSame(found, exact)) << column;
        continue;
      }
      ASSERT_LE(std::abs(found - exact), bound) << column;
      worst = std::max(worst, std::abs(found - exact) / bound);
    }
  }

  DU::LightPathCalculator calculator_;
  DU::eKernel kernel_;
};

/// PMTs in all directions, a tenth of them almost in line with event and
/// centre.
std::vector<TVector3> PMTs(const TVector3& eventPos, double lowest,
                           double highest, int count, Random& random) {
  const double radius = eventPos.Mag();
  const TVector3 towards =
      radius > 0.0 ? eventPos * (1.0 / radius) : TVector3(0, 0, 1);
  std::vector<TVector3> positions;
  for (int i = 0; i < count; ++i) {
    TVector3 direction = random.Direction();
    if (random.Chance(0.1)) {
      direction *= std::pow(10.0, random.Uniform(-17.0, 0.0));
      direction += random.Chance(0.5) ? towards : -towards;
    }
    positions.push_back(direction.Unit() * random.Uniform(lowest, highest));
  }
  return positions;
}

/// Distances of events from the centre: anywhere, at the surfaces and where
/// total reflection begins.
std::vector<double> EventRadii(const DU::ConcentricMedia& media,
                               Random& random) {
  const double inner = media.InnerRadius;
  const double outer = media.OuterRadius;
  const double index = media.RefractiveIndex[2] * outer;
  std::vector<double> radii = {0.0, 1e-200, 1e-95, 1e-9 * inner, 0.01 * inner};
  for (const double radius : {inner, outer, index / media.RefractiveIndex[0]}) {
    for (const double step : {-1e-5, -1e-12, 0.0, 1e-5}) {
      radii.push_back(radius * (1.0 + step));
    }
  }
  for (int i = 0; i < 3; ++i) {
    radii.push_back(inner * random.Uniform(0.0, 0.85));
    radii.push_back(outer * random.Uniform(0.0, 1.4));
    radii.push_back(index / media.RefractiveIndex[0] *
                    random.Uniform(0.97, 1.01));
  }
  return radii;
}

class LightPathRows : public testing::TestWithParam<DU::eKernel> {};

TEST_P(LightPathRows, AreWithinTheirBoundsOfSinglePaths) {
  Random random(20260401);
  int paths = 0;
  int fast = 0;
  for (const Vessel& vessel : Vessels()) {
    SCOPED_TRACE(vessel.Name);
    RowComparison comparison(vessel.Media, GetParam());
    const double outer = vessel.Media.OuterRadius;
    for (const double radius : EventRadii(vessel.Media, random)) {
      const TVector3 eventPos = random.Direction() * radius;
      const double at = outer * random.Uniform(1.001, 2.0);
      comparison.Compare(eventPos,
                         PMTs(eventPos, at, at * (1 + 1e-7), 40, random));
      comparison.Compare(eventPos, PMTs(eventPos, at, 1.3 * at, kPMTs, random));
      comparison.Compare(eventPos,
                         PMTs(eventPos, 0.9 * outer, 3 * outer, kPMTs, random));
    }
    paths += comparison.paths;
    fast += comparison.fast;
  }
  // Otherwise the comparison says nothing.
  EXPECT_GT(fast, paths / 10);
}

TEST_P(LightPathRows, AreWithinTheirBoundsInRandomMedia) {
  Random random(11);
  int paths = 0;
  int fast = 0;
  for (int i = 0; i < 100; ++i) {
    const DU::ConcentricMedia media = RandomMedia(random);
    SCOPED_TRACE(Exact(media));
    RowComparison comparison(media, GetParam());
    const TVector3 eventPos =
        random.Direction() * (media.OuterRadius * random.Uniform(0.0, 1.1));
    const double at = media.OuterRadius * random.Uniform(1.0001, 2.0);
    comparison.Compare(eventPos,
                       PMTs(eventPos, at, at * (1 + 1e-7), 60, random));
    comparison.Compare(eventPos, PMTs(eventPos, at, 1.1 * at, kPMTs, random));
    paths += comparison.paths;
    fast += comparison.fast;
  }
  EXPECT_GT(fast, paths / 10);
}

TEST_P(LightPathRows, ComputeFewSinglePathsWhereNoLightIsTotallyReflected) {
  Random random(12);
  RowComparison comparison(Vessels().front().Media, GetParam());
  for (int i = 0; i < 30; ++i) {
    const TVector3 eventPos =
        random.Direction() * (5150.0 * std::cbrt(random.Uniform(0.0, 1.0)));
    std::vector<TVector3> positions;
    for (int pmt = 0; pmt < 1000; ++pmt) {
      positions.push_back(random.Direction() * 8400.0);
    }
    comparison.Compare(eventPos, positions);
  }
  EXPECT_GT(comparison.fast, 0.99 * comparison.paths);
  // Rounding errors are far below what the bound allows.
  EXPECT_LT(comparison.worst, 0.2);
}

TEST_P(LightPathRows, AreSinglePathsForImpossiblePairs) {
  Random random(13);
  RowComparison comparison(Vessels().front().Media, GetParam());
  const TVector3 eventPos(1000.0, 2000.0, -3000.0);
  std::vector<TVector3> positions = PMTs(eventPos, 8400.0, 8400.0, 500, random);
  const std::vector<TVector3> impossible = {{kNaN, 0, 0},
                                            {0, kInfinity, 8400},
                                            {0, 0, 0},
                                            {0, 0, 1e-300},
                                            {0, 5000, 0},
                                            {0, 0, 5860},
                                            {8400, -kInfinity, kNaN},
                                            {1e80, 0, 0},
                                            {0, 1e12, 0},
                                            {0, 1e300, 1e300},
                                            eventPos};
  for (std::size_t i = 0; i < impossible.size(); ++i) {
    positions.insert(positions.begin() + static_cast<long>(20 * i),
                     impossible[i]);
  }
  comparison.Compare(eventPos, positions);
  EXPECT_GT(comparison.fast, 200);
  for (const TVector3& event : impossible) comparison.Compare(event, positions);
  comparison.Compare(positions.back(), positions);
  comparison.Compare(eventPos, {});
}

INSTANTIATE_TEST_SUITE_P(OfAllKernels, LightPathRows,
                         testing::ValuesIn(DU::AvailableKernels()));

TEST(LightPathRow, HoldsOnlyWhatIsAskedFor) {
  Random random(14);
  const DU::LightPathCalculator calculator =
      CalculatorFor(Vessels().front().Media);
  const TVector3 eventPos(0, 3000, 1000);
  const DU::PMTArray pmts(PMTs(eventPos, 5000.0, 8400.0, 500, random));
  const RowColumns all(pmts.Count());
  calculator.CalcRow(eventPos, pmts, all.Row());

  std::vector<double> times(pmts.Count());
  DU::LightPathRow row;
  row.TimeOfFlight = times.data();
  calculator.CalcRow(eventPos, pmts, row);
  for (std::size_t i = 0; i < pmts.Count(); ++i) {
    EXPECT_EQ(times[i], all.Row().TimeOfFlight[i]);
  }
  EXPECT_NO_THROW(calculator.CalcRow(eventPos, pmts, {}));
}

TEST(LightPathRow, RequiresARun) {
  const DU::LightPathCalculator calculator;
  EXPECT_THROW(calculator.CalcRow({0, 0, 0}, DU::PMTArray(), {}),
               std::logic_error);
}

}  // namespace
}  // namespace ZARN::Testing

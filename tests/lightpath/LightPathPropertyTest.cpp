#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "TVector3.h"
#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "lightpath/LightPathType.hpp"
#include "tests/lightpath/LightPathFlaws.hpp"
#include "tests/lightpath/LightPathPairs.hpp"
#include "tests/lightpath/Vessels.hpp"
#include "tests/property/Random.hpp"
#include "tests/reference/PlainLightTracer.hpp"

namespace ZARN::Testing {
namespace {

using DU::LightPathCalculator;
using Reference::LaunchScan;
using Reference::TracedRay;
using Reference::TraceRay;

enum class eMeeting { kMisses, kMeets, kTooCloseToTell };

/// Whether the straight line hits the outer sphere, with more digits than the
/// calculator uses.
eMeeting StraightConnection(const DU::ConcentricMedia& media,
                            const TVector3& eventPos, const TVector3& pmtPos) {
  using Long = long double;
  const std::array<Long, 3> a = {eventPos.X(), eventPos.Y(), eventPos.Z()};
  const std::array<Long, 3> b = {pmtPos.X(), pmtPos.Y(), pmtPos.Z()};
  Long square = 0;
  Long along = 0;
  for (std::size_t i = 0; i < 3; ++i) {
    square += (b[i] - a[i]) * (b[i] - a[i]);
    along -= a[i] * (b[i] - a[i]);
  }
  const Long t = std::clamp(along / square, Long(0), Long(1));
  Long distance = 0;
  for (std::size_t i = 0; i < 3; ++i) {
    const Long foot = a[i] + t * (b[i] - a[i]);
    distance += foot * foot;
  }
  distance = std::sqrt(distance);
  const Long outer = media.OuterRadius;
  if (std::abs(distance - outer) < 4e-16L * (outer + std::sqrt(square))) {
    return eMeeting::kTooCloseToTell;
  }
  return distance > outer ? eMeeting::kMisses : eMeeting::kMeets;
}

/// How far rounding of the ends may move the points of a path, mm: more if the
/// points move much faster than the end (near a caustic) or the path nearly
/// grazes a surface. Infinite at the limit of existence of a path.
double RoundingOf(const LightPathCalculator& path,
                  const DU::ConcentricMedia& media) {
  const double radius = path.GetStartPos().Mag();
  const double pmtRadius = path.GetEndPos().Mag();
  const double launch =
      AngleBetween(path.GetStartPos(), path.GetInitialDirection());
  constexpr double kStep = 1e-6;
  const TracedRay low = TraceRay(media, radius, pmtRadius, launch - kStep);
  const TracedRay high = TraceRay(media, radius, pmtRadius, launch + kStep);
  if (low.Type != high.Type) return std::numeric_limits<double>::infinity();
  double obliqueness = 1.0;
  double moved = 0.0;
  for (std::size_t i = 0; i < low.Stretches; ++i) {
    const Reference::PlaneVector& d = low.Directions[i];
    for (const Reference::PlaneVector& p : {low.Points[i], low.Points[i + 1]}) {
      const double cosine =
          std::abs(p.X * d.X + p.Y * d.Y) / std::hypot(p.X, p.Y);
      obliqueness = std::max(obliqueness, 0.1 / cosine);
    }
    moved = std::max(moved, std::hypot(high.Points[i].X - low.Points[i].X,
                                       high.Points[i].Y - low.Points[i].Y));
  }
  const double swept = std::abs(high.SweptAngle - low.SweptAngle);
  return 2e-13 * media.OuterRadius * obliqueness + 1e-14 * moved / swept;
}

/// The largest distance of corresponding points of two paths of one type.
double LargestGap(const std::vector<TVector3>& a,
                  const std::vector<TVector3>& b) {
  if (a.size() != b.size()) return std::numeric_limits<double>::infinity();
  double gap = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    gap = std::max(gap, (a[i] - b[i]).Mag());
  }
  return gap;
}

/// Fails if a test had too few cases. With few pairs there may be none.
void ExpectOneOf(int pairsPerCase, int cases, int pairs) {
  constexpr int kFew = 1000;
  if (pairs < kFew) return;
  EXPECT_GT(cases, pairs / pairsPerCase);
}

class LightPathProperty : public testing::TestWithParam<std::size_t> {
 protected:
  /// One of the vessels; random ones for the last parameter.
  void SetUp() override {
    const std::vector<Vessel> vessels = Vessels();
    isRandom_ = GetParam() == vessels.size();
    pairs_ = std::max(10, PairsInAll() / static_cast<int>(vessels.size() + 1));
    if (!isRandom_) Use(vessels[GetParam()].Media);
  }

  /// Random media change only now and then.
  void ChangeMedia(int pair) {
    constexpr int kPairsPerMedia = 200;
    if (isRandom_ && pair % kPairsPerMedia == 0) Use(RandomMedia(random_));
  }

  Pair Draw() {
    Pair pair = DrawPair(media_, random_);
    if (random_.Chance(0.5)) AimByTracing(pair, media_, random_);
    PlacePmt(pair, random_);
    return pair;
  }

  int Pairs(int share) const { return std::max(10, pairs_ / share); }

  void Use(const DU::ConcentricMedia& media) {
    media_ = media;
    calculator_ = CalculatorFor(media);
  }

  bool isRandom_ = false;
  int pairs_ = 0;
  Random random_{GetParam() * 15485863U + 11U};
  DU::ConcentricMedia media_;
  LightPathCalculator calculator_;
};

TEST_P(LightPathProperty, PathsObeySnellsLawAndReachTheirEnds) {
  int paths = 0;
  int known = 0;
  int untold = 0;
  for (int i = 0; i < pairs_; ++i) {
    ChangeMedia(i);
    const Pair pair = Draw();
    calculator_.CalcByPosition(pair.Event, pair.Pmt);
    const auto replay = [&] {
      return "pair " + std::to_string(i) + ": " +
             Replay(media_, pair.Event, pair.Pmt) + "\n" +
             Describe(calculator_);
    };
    // Rounding of a PMT's position just above the surface changes grazing light
    // by more than the distance of such a ray from the limit of its type.
    const bool isKnown = pair.Known.Type != DU::kUninitialised &&
                         pair.PmtRadius > media_.OuterRadius * (1.0 + 1e-9);
    const bool isInWater = media_.At(pair.Event.Mag()) == DU::eMedium::kWater;
    bool mustBeStraight = false;
    if (isInWater) {
      const eMeeting meeting = StraightConnection(media_, pair.Event, pair.Pmt);
      if (meeting == eMeeting::kTooCloseToTell) ++untold;
      mustBeStraight = meeting == eMeeting::kMisses;
      if (meeting != eMeeting::kTooCloseToTell) {
        ASSERT_EQ(calculator_.GetLightPathType() == DU::kWater, mustBeStraight)
            << replay();
      }
    }
    if (isKnown) {
      ++known;
      ASSERT_TRUE(calculator_.HasPath())
          << replay() << "\nbut " << DU::kLightPathTypeNames[pair.Known.Type]
          << " with launch angle " << Exact(pair.Known.LaunchAngle)
          << " leads there";
      if (calculator_.GetLightPathType() != DU::kWater) {
        const double excess =
            calculator_.GetOpticalLength() - pair.Known.OpticalLength;
        ASSERT_LE(excess,
                  1e-13 * (pair.Known.OpticalLength + 3.0 * pair.PmtRadius))
            << replay() << "\nbut launch angle "
            << Exact(pair.Known.LaunchAngle) << " has a shorter one";
      }
    }
    if (!calculator_.HasPath()) continue;
    ++paths;
    ASSERT_EQ(FlawOf(calculator_, media_, pair.Event, pair.Pmt), "")
        << replay();
  }
  RecordProperty("paths", paths);
  RecordProperty("known", known);
  ExpectOneOf(10, known, pairs_);
  EXPECT_LE(untold, pairs_ / 20);
}

TEST_P(LightPathProperty, OpticalLengthIsStationary) {
  int compared = 0;
  const int pairs = Pairs(20);
  for (int i = 0; i < pairs; ++i) {
    ChangeMedia(i);
    const Pair pair = Draw();
    calculator_.CalcByPosition(pair.Event, pair.Pmt);
    const std::vector<TVector3> corners = CornersOf(calculator_);
    const std::vector<DU::eMedium> media =
        SegmentsOf(calculator_.GetLightPathType());
    double shortest = std::numeric_limits<double>::infinity();
    for (std::size_t k = 0; k < media.size(); ++k) {
      shortest = std::min(shortest, (corners[k + 1] - corners[k]).Mag());
    }
    const double scale = pair.PmtRadius + pair.EventRadius;
    if (media.size() < 2 || shortest < 1e-3 * scale) continue;
    ++compared;
    const double step = 1e-4 * shortest;
    for (std::size_t k = 1; k + 1 < corners.size(); ++k) {
      const double radius = corners[k].Mag();
      const TVector3 normal = corners[k] * (1.0 / radius);
      const TVector3 tangent = normal.Orthogonal().Unit();
      for (const TVector3& aside : {tangent, normal.Cross(tangent)}) {
        const auto length = [&](double moved) {
          const double turn = moved / radius;
          const TVector3 point =
              radius * (std::cos(turn) * normal + std::sin(turn) * aside);
          return media_.IndexIn(media[k - 1]) * (point - corners[k - 1]).Mag() +
                 media_.IndexIn(media[k]) * (corners[k + 1] - point).Mag();
        };
        const double slope = (length(step) - length(-step)) / (2.0 * step);
        ASSERT_LE(std::abs(slope), 3e-7)
            << "at corner " << k << ", pair " << i << ": "
            << Replay(media_, pair.Event, pair.Pmt) << "\n"
            << Describe(calculator_);
        // The same from the directions, by Fermat's principle.
        const bool isFirst = k == 1;
        const bool isLast = k + 2 == corners.size();
        const TVector3 in = isFirst ? calculator_.GetInitialDirection()
                                    : (corners[k] - corners[k - 1]).Unit();
        const TVector3 out = isLast ? calculator_.GetFinalDirection()
                                    : (corners[k + 1] - corners[k]).Unit();
        const double written = media_.IndexIn(media[k - 1]) * in.Dot(aside) -
                               media_.IndexIn(media[k]) * out.Dot(aside);
        ASSERT_LE(std::abs(written), 1e-11)
            << "at corner " << k << ", pair " << i << ": "
            << Replay(media_, pair.Event, pair.Pmt) << "\n"
            << Describe(calculator_);
      }
    }
  }
  RecordProperty("compared", compared);
  const double wall = 1.0 - media_.InnerRadius / media_.OuterRadius;
  if (isRandom_ || wall > 5e-3) ExpectOneOf(20, compared, pairs);
}

TEST_P(LightPathProperty, IsTheSameBackwards) {
  LightPathCalculator back = calculator_;
  int compared = 0;
  const int pairs = Pairs(10);
  for (int i = 0; i < pairs; ++i) {
    ChangeMedia(i);
    if (isRandom_) back = calculator_;
    Pair pair = Draw();
    if (!pair.IsTame || pair.EventRadius < media_.OuterRadius * 1.001) continue;
    calculator_.CalcByPosition(pair.Event, pair.Pmt);
    back.CalcByPosition(pair.Pmt, pair.Event);
    const auto replay = [&] {
      return "pair " + std::to_string(i) + ": " +
             Replay(media_, pair.Event, pair.Pmt) + "\n" +
             Describe(calculator_) + "\n" + Describe(back);
    };
    ASSERT_EQ(back.GetLightPathType(), calculator_.GetLightPathType())
        << replay();
    if (!back.HasPath()) continue;
    const double rounding = RoundingOf(calculator_, media_);
    if (!(rounding < 1e-4)) continue;
    ++compared;
    std::vector<TVector3> corners = CornersOf(back);
    std::reverse(corners.begin(), corners.end());
    ASSERT_LE(LargestGap(CornersOf(calculator_), corners), rounding)
        << replay();
    const double turned =
        (back.GetInitialDirection() + calculator_.GetFinalDirection()).Mag() +
        (back.GetFinalDirection() + calculator_.GetInitialDirection()).Mag();
    ASSERT_LE(turned, 5.0 * rounding / media_.OuterRadius) << replay();
    const double length = calculator_.GetOpticalLength();
    ASSERT_LE(std::abs(back.GetOpticalLength() - length), 1e-14 * length)
        << replay();
  }
  RecordProperty("compared", compared);
  ExpectOneOf(20, compared, pairs);
}

TEST_P(LightPathProperty, PathsRotateWithTheirEnds) {
  LightPathCalculator turned = calculator_;
  int compared = 0;
  const int pairs = Pairs(10);
  for (int i = 0; i < pairs; ++i) {
    ChangeMedia(i);
    if (isRandom_) turned = calculator_;
    const Pair pair = Draw();
    const bool isOnSurface =
        std::abs(pair.EventRadius / media_.OuterRadius - 1.0) < 1e-3 ||
        std::abs(pair.EventRadius / media_.InnerRadius - 1.0) < 1e-3;
    if (!pair.IsTame || isOnSurface) continue;
    const TVector3 axis = random_.Direction();
    const double angle = random_.Uniform(-kPi, kPi);
    const auto turn = [&](TVector3 v) {
      v.Rotate(angle, axis);
      return v;
    };
    calculator_.CalcByPosition(pair.Event, pair.Pmt);
    turned.CalcByPosition(turn(pair.Event), turn(pair.Pmt));
    const auto replay = [&] {
      return "pair " + std::to_string(i) + ": " +
             Replay(media_, pair.Event, pair.Pmt) + "\n" +
             Describe(calculator_) + "\nturned " + Describe(turned);
    };
    ASSERT_EQ(turned.GetLightPathType(), calculator_.GetLightPathType())
        << replay();
    if (!turned.HasPath()) continue;
    const double rounding = RoundingOf(calculator_, media_);
    if (!(rounding < 1e-4)) continue;
    ++compared;
    std::vector<TVector3> corners = CornersOf(calculator_);
    for (TVector3& corner : corners) corner = turn(corner);
    ASSERT_LE(LargestGap(CornersOf(turned), corners), rounding) << replay();
    const double off =
        (turned.GetInitialDirection() - turn(calculator_.GetInitialDirection()))
            .Mag() +
        (turned.GetFinalDirection() - turn(calculator_.GetFinalDirection()))
            .Mag();
    ASSERT_LE(off, 5.0 * rounding / media_.OuterRadius) << replay();
  }
  RecordProperty("compared", compared);
  ExpectOneOf(10, compared, pairs);
}

std::string DescribeRays(const std::vector<TracedRay>& rays) {
  std::string text;
  for (const TracedRay& ray : rays) {
    text += "\n  " + std::string(DU::kLightPathTypeNames[ray.Type]) +
            ", launch angle " + Exact(ray.LaunchAngle) + ", optical length " +
            Exact(ray.OpticalLength);
  }
  return text;
}

TEST_P(LightPathProperty, IsTheShortestIfThereIsAny) {
  constexpr int kLaunches = 20000;
  constexpr int kAnglesPerScan = 40;
  constexpr int kPairsPerPair = 500;  // a scan costs as much as 2,000 paths
  const int scans = std::max(1, Pairs(kPairsPerPair) / kAnglesPerScan);
  int without = 0;
  int untold = 0;
  int ofMany = 0;
  for (int scan = 0; scan < scans; ++scan) {
    if (isRandom_) Use(RandomMedia(random_));
    Pair pair = DrawPair(media_, random_);
    const LaunchScan launches(media_, pair.EventRadius, pair.PmtRadius,
                              kLaunches);
    for (int i = 0; i < kAnglesPerScan; ++i) {
      pair.Angle = random_.Uniform(1e-6, kPi - 1e-6);
      if (random_.Chance(0.5)) AimByTracing(pair, media_, random_);
      PlacePmt(pair, random_);
      calculator_.CalcByPosition(pair.Event, pair.Pmt);
      if (calculator_.GetLightPathType() == DU::kWater) continue;
      if (launches.IsNearAnEnd(pair.Angle, 1e-6)) {
        ++untold;
        continue;
      }
      std::vector<TracedRay> rays = launches.PathsTo(pair.Angle);
      std::sort(rays.begin(), rays.end(), [](const auto& a, const auto& b) {
        return a.OpticalLength < b.OpticalLength;
      });
      const auto replay = [&] {
        return Replay(media_, pair.Event, pair.Pmt) + "\n" +
               Describe(calculator_) + DescribeRays(rays);
      };
      ASSERT_EQ(calculator_.HasPath(), !rays.empty()) << replay();
      if (rays.empty()) {
        ++without;
        continue;
      }
      // Where the swept angle is steep, no launch angle that is a double
      // reaches the PMT; the length changes by n r sin, which is conserved, per
      // angle missed.
      const double shortest = rays.front().OpticalLength;
      const double perAngle =
          media_.IndexIn(DU::eMedium::kWater) * pair.PmtRadius;
      double missed = kTwoPi;
      for (const double way : LaunchScan::WaysAround(pair.Angle)) {
        missed = std::min(missed, std::abs(rays.front().SweptAngle - way));
      }
      ASSERT_NEAR(calculator_.GetOpticalLength(), shortest,
                  perAngle * missed + 1e-13 * (shortest + perAngle))
          << replay();
      const bool isClear = rays.size() == 1 ||
                           rays[1].OpticalLength - shortest > 1e-9 * shortest;
      if (!isClear) continue;
      if (rays.size() > 1) ++ofMany;
      ASSERT_EQ(calculator_.GetLightPathType(), rays.front().Type) << replay();
    }
  }
  RecordProperty("without", without);
  RecordProperty("untold", untold);
  RecordProperty("ofMany", ofMany);
  EXPECT_LE(untold, scans * kAnglesPerScan / 4);
}

INSTANTIATE_TEST_SUITE_P(In, LightPathProperty,
                         testing::Range<std::size_t>(0, Vessels().size() + 1),
                         [](const testing::TestParamInfo<std::size_t>& vessel) {
                           const std::vector<Vessel> vessels = Vessels();
                           return vessel.param < vessels.size()
                                      ? vessels[vessel.param].Name
                                      : std::string("RandomMedia");
                         });

TEST(LightPathOfEqualIndices, IsTheStraightLine) {
  for (const double thinness : {0.5, 0.9, 0.99, 0.99999}) {
    const DU::ConcentricMedia media{5860 * thinness, 5860, {1.4, 1.4, 1.4}};
    LightPathCalculator calculator = CalculatorFor(media);
    Random random(97);
    const int pairs = std::max(100, PairsInAll() / 40);
    for (int i = 0; i < pairs; ++i) {
      Pair pair = DrawPair(media, random);
      // Nearly grazing lines, at a given distance from the centre.
      const bool isAimed = random.Chance(0.5);
      const double limit =
          random.Chance(0.5) ? media.InnerRadius : media.OuterRadius;
      const double distance = limit * (1.0 - LogUniform(random, -15, -1));
      if (isAimed && distance < pair.EventRadius) {
        const double turn =
            random.Chance(0.5) && pair.EventRadius < media.OuterRadius
                ? std::asin(distance / pair.EventRadius)
                : kPi - std::asin(distance / pair.EventRadius);
        pair.Angle = turn - std::asin(distance / pair.PmtRadius);
      }
      PlacePmt(pair, random);
      // Derived values need ends that are farther apart than their rounding
      // error.
      const double apart = (pair.Pmt - pair.Event).Mag();
      if (apart < 1.0 || pair.PmtRadius > 20 * media.OuterRadius) continue;
      calculator.CalcByPosition(pair.Event, pair.Pmt);
      const auto replay = [&] {
        return "pair " + std::to_string(i) + ": " +
               Replay(media, pair.Event, pair.Pmt) + "\n" +
               Describe(calculator);
      };
      ASSERT_TRUE(calculator.HasPath()) << replay();
      ASSERT_EQ(FlawOf(calculator, media, pair.Event, pair.Pmt), "")
          << replay();
      const std::vector<TVector3> corners = CornersOf(calculator);
      for (const TVector3& corner : corners) {
        ASSERT_LE(DistanceFromSegment(corner, pair.Event, pair.Pmt), 1e-9)
            << replay();
      }
      const TVector3 straight = (pair.Pmt - pair.Event) * (1.0 / apart);
      const double rounding = 1e-14 + 1e-15 * pair.PmtRadius / apart;
      ASSERT_LE((calculator.GetInitialDirection() - straight).Mag(),
                10.0 * rounding)
          << replay();
      ASSERT_LE((calculator.GetFinalDirection() - straight).Mag(),
                10.0 * rounding)
          << replay();
      ASSERT_NEAR(calculator.GetOpticalLength(), 1.4 * apart,
                  1e-12 * pair.PmtRadius)
          << replay();
    }
  }
}

}  // namespace
}  // namespace ZARN::Testing

#include "tests/reference/PlainLightTracer.hpp"

#include <algorithm>
#include <cmath>

#include "tests/reference/PlainConstants.hpp"

namespace ZARN::Reference {

namespace {

using DU::eMedium;

double Dot(const PlaneVector& a, const PlaneVector& b) {
  return a.X * b.X + a.Y * b.Y;
}

double Cross(const PlaneVector& a, const PlaneVector& b) {
  return a.X * b.Y - a.Y * b.X;
}

/// Where a line meets a sphere around the origin: whether it does, and the
/// distances along the line from its point to the two crossings.
struct Meeting {
  bool Meets;
  double Near;
  double Far;
};

Meeting LineMeetsSphere(const PlaneVector& point, const PlaneVector& direction,
                        double radius) {
  const double along = -Dot(point, direction);
  const double distance = std::abs(Cross(point, direction));
  if (!(distance < radius)) return {false, 0.0, 0.0};
  const double half = std::sqrt((radius - distance) * (radius + distance));
  return {true, along - half, along + half};
}

/// Snell's law in vector form, at a point of a sphere around the origin.
/// @return false if the light is totally reflected
bool Refract(const PlaneVector& point, double ratio, bool isInwards,
             PlaneVector& direction) {
  const double radius = std::hypot(point.X, point.Y);
  const PlaneVector normal{point.X / radius, point.Y / radius};
  const PlaneVector tangent{-normal.Y, normal.X};
  const double cosine = Dot(normal, direction);
  const double sine = Dot(tangent, direction);
  // Not 1 - (ratio sine)^2, which loses all digits at grazing incidence.
  const double square =
      ratio * ratio * cosine * cosine + (1.0 - ratio) * (1.0 + ratio);
  if (square < 0.0) return false;
  const double newCosine = isInwards ? -std::sqrt(square) : std::sqrt(square);
  const double newSine = ratio * sine;
  direction = {newCosine * normal.X + newSine * tangent.X,
               newCosine * normal.Y + newSine * tangent.Y};
  return true;
}

DU::eLightPathType TypeOf(const TracedRay& ray) {
  const auto went = [&](std::initializer_list<eMedium> media) {
    return std::equal(media.begin(), media.end(), ray.Media.begin(),
                      ray.Media.begin() + ray.Stretches);
  };
  constexpr eMedium kInner = eMedium::kInnerAV;
  constexpr eMedium kWall = eMedium::kAcrylic;
  constexpr eMedium kWater = eMedium::kWater;
  if (went({kInner, kWall, kWater})) return DU::kInnerAVToWater;
  if (went({kWall, kInner, kWall, kWater})) return DU::kAVThroughInnerAVToWater;
  if (went({kWall, kWater})) return DU::kAVToWater;
  if (went({kWater, kWall, kInner, kWall, kWater})) {
    return DU::kWaterThroughInnerAV;
  }
  if (went({kWater, kWall, kWater})) return DU::kWaterThroughAV;
  if (went({kWater})) return DU::kWater;
  return DU::kUninitialised;
}

bool GoesThroughVessel(DU::eLightPathType type) {
  return type != DU::kUninitialised && type != DU::kWater;
}

double Middle(double a, double b) { return a + (b - a) / 2.0; }

}  // namespace

TracedRay TraceRay(const DU::ConcentricMedia& media, double eventRadius,
                   double pmtRadius, double launchAngle) {
  const std::array<double, 3> outerRadius = {media.InnerRadius,
                                             media.OuterRadius, pmtRadius};
  TracedRay ray;
  ray.LaunchAngle = launchAngle;
  PlaneVector point{eventRadius, 0.0};
  PlaneVector direction{std::cos(launchAngle), std::sin(launchAngle)};
  auto medium = static_cast<std::size_t>(media.At(eventRadius));
  ray.Points[0] = point;
  // A ray that moves outwards never turns back.
  bool isInwards = Dot(point, direction) < 0.0;

  while (true) {
    Meeting below{false, 0.0, 0.0};
    if (medium > 0 && isInwards) {
      below = LineMeetsSphere(point, direction, outerRadius[medium - 1]);
    }
    const Meeting above =
        LineMeetsSphere(point, direction, outerRadius[medium]);
    // Rounding can put a point on the sphere just beyond it.
    const double rounding = 1e-12 * outerRadius[medium];
    const bool reaches = above.Meets && above.Far > -rounding;
    if (!below.Meets && !reaches) return ray;
    const double length = std::max(0.0, below.Meets ? below.Near : above.Far);
    const PlaneVector next{point.X + length * direction.X,
                           point.Y + length * direction.Y};
    ray.Media[ray.Stretches] = static_cast<eMedium>(medium);
    ray.Directions[ray.Stretches] = direction;
    ++ray.Stretches;
    ray.Points[ray.Stretches] = next;
    ray.OpticalLength += media.RefractiveIndex[medium] * length;
    ray.SweptAngle +=
        std::atan2(std::abs(Cross(point, next)), Dot(point, next));
    point = next;

    isInwards = below.Meets;
    const bool isAtPmt = !below.Meets && medium == 2;
    if (isAtPmt) {
      ray.Type = TypeOf(ray);
      return ray;
    }
    const std::size_t nextMedium = below.Meets ? medium - 1 : medium + 1;
    const double ratio =
        media.RefractiveIndex[medium] / media.RefractiveIndex[nextMedium];
    if (!Refract(point, ratio, isInwards, direction)) return ray;
    medium = nextMedium;
  }
}

LaunchScan::LaunchScan(const DU::ConcentricMedia& media, double eventRadius,
                       double pmtRadius, int launches)
    : media_(media), eventRadius_(eventRadius), pmtRadius_(pmtRadius) {
  double low = 0.0;
  if (eventRadius >= media.OuterRadius) {
    // Rays from the water that miss the vessel by far need no scan.
    const double rim = kPi - std::asin(media.OuterRadius / eventRadius);
    low = rim - 0.01 * (kPi - rim);
  } else {
    // Families of paths just outside the inner surface, or along it, can be
    // very narrow in the launch angle. They lie around the tangent.
    for (int k = 1; k <= 50; ++k) {
      samples_.push_back(Launch(kHalfPi - std::ldexp(1.0, -k)));
      samples_.push_back(Launch(kHalfPi + std::ldexp(1.0, -k)));
    }
  }
  Spread(low, kPi, launches);
  // The first pass finds only one of two borders that are close together.
  RefineBorders();
  RefineBorders();
  SortSamples();
  FindEnds();
  RefineTurns();
  SortSamples();
}

LaunchScan::Sample LaunchScan::Launch(double launchAngle) const {
  const TracedRay ray = TraceRay(media_, eventRadius_, pmtRadius_, launchAngle);
  return {launchAngle, ray.SweptAngle, ray.Type};
}

double LaunchScan::BlurOf(double launchAngle) {
  return std::min(1e-6, 2e-15 + 1e-14 / std::abs(std::cos(launchAngle)));
}

LaunchScan::End LaunchScan::EndAt(const Sample& sample) const {
  double blur = 0.0;
  for (const double side : {-1.0, 1.0}) {
    const double step = side * BlurOf(sample.LaunchAngle);
    const Sample beside = Launch(sample.LaunchAngle + step);
    if (beside.Type != sample.Type) continue;
    blur = std::max(blur, std::abs(beside.SweptAngle - sample.SweptAngle));
  }
  return {sample.SweptAngle, 2.0 * blur};
}

void LaunchScan::Spread(double low, double high, int launches) {
  for (int i = 0; i <= launches; ++i) {
    samples_.push_back(Launch(low + (high - low) * i / launches));
  }
}

void LaunchScan::SortSamples() {
  std::sort(samples_.begin(), samples_.end(),
            [](const Sample& a, const Sample& b) {
              return a.LaunchAngle < b.LaunchAngle;
            });
}

bool LaunchScan::AreNeighbours(std::size_t i) const {
  return i + 1 < samples_.size() && GoesThroughVessel(samples_[i].Type) &&
         samples_[i].Type == samples_[i + 1].Type;
}

void LaunchScan::RefineBorders() {
  constexpr int kHalvings = 45;
  SortSamples();
  const std::size_t count = samples_.size();
  for (std::size_t i = 0; i + 1 < count; ++i) {
    Sample low = samples_[i];
    Sample high = samples_[i + 1];
    if (low.Type == high.Type) continue;
    while (true) {
      const double middle = Middle(low.LaunchAngle, high.LaunchAngle);
      if (middle == low.LaunchAngle || middle == high.LaunchAngle) break;
      const Sample between = Launch(middle);
      (between.Type == low.Type ? low : high) = between;
    }
    // Towards a grazing end the swept angle gets steep, like a square root:
    // approach it by halving the distance.
    const double below = low.LaunchAngle - samples_[i].LaunchAngle;
    const double above = samples_[i + 1].LaunchAngle - high.LaunchAngle;
    for (int k = 1; k <= kHalvings; ++k) {
      samples_.push_back(Launch(low.LaunchAngle - std::ldexp(below, -k)));
      samples_.push_back(Launch(high.LaunchAngle + std::ldexp(above, -k)));
    }
    samples_.push_back(low);
    samples_.push_back(high);
  }
}

void LaunchScan::FindEnds() {
  for (std::size_t i = 0; i < samples_.size(); ++i) {
    const bool isInside = i > 0 && AreNeighbours(i - 1) && AreNeighbours(i);
    if (!isInside && GoesThroughVessel(samples_[i].Type)) {
      ends_.push_back(EndAt(samples_[i]));
    }
  }
}

void LaunchScan::RefineTurns() {
  const double golden = (std::sqrt(5.0) - 1.0) / 2.0;
  constexpr int kSteps = 60;
  const std::size_t count = samples_.size();
  for (std::size_t i = 0; i + 2 < count; ++i) {
    if (!AreNeighbours(i) || !AreNeighbours(i + 1)) continue;
    const double rise = samples_[i + 1].SweptAngle - samples_[i].SweptAngle;
    const double fall = samples_[i + 1].SweptAngle - samples_[i + 2].SweptAngle;
    if (!(rise * fall > 0.0)) continue;
    const double sign = rise > 0.0 ? 1.0 : -1.0;
    double low = samples_[i].LaunchAngle;
    double high = samples_[i + 2].LaunchAngle;
    Sample left = Launch(high - golden * (high - low));
    Sample right = Launch(low + golden * (high - low));
    for (int step = 0; step < kSteps; ++step) {
      if (sign * left.SweptAngle > sign * right.SweptAngle) {
        high = right.LaunchAngle;
        right = left;
        left = Launch(high - golden * (high - low));
      } else {
        low = left.LaunchAngle;
        left = right;
        right = Launch(low + golden * (high - low));
      }
    }
    samples_.push_back(left);
    ends_.push_back(EndAt(left));
  }
}

std::array<double, 3> LaunchScan::WaysAround(double angle) {
  return {angle, kTwoPi - angle, kTwoPi + angle};
}

std::vector<TracedRay> LaunchScan::PathsTo(double angle) const {
  std::vector<TracedRay> paths;
  for (const double target : WaysAround(angle)) {
    for (std::size_t i = 0; i + 1 < samples_.size(); ++i) {
      const bool isBelow = samples_[i].SweptAngle < target;
      if (isBelow == (samples_[i + 1].SweptAngle < target)) continue;
      if (!AreNeighbours(i)) continue;
      double low = samples_[i].LaunchAngle;
      double high = samples_[i + 1].LaunchAngle;
      while (true) {
        const double middle = Middle(low, high);
        if (middle == low || middle == high) break;
        const bool isMiddleBelow = Launch(middle).SweptAngle < target;
        (isMiddleBelow == isBelow ? low : high) = middle;
      }
      const TracedRay ray = TraceRay(media_, eventRadius_, pmtRadius_, low);
      // A gap of total reflection narrower than the scan shows as a jump; there
      // is no path.
      constexpr double kJump = 1e-5;
      const bool isThere = ray.Type == samples_[i].Type &&
                           std::abs(ray.SweptAngle - target) < kJump;
      if (isThere) paths.push_back(ray);
    }
  }
  return paths;
}

bool LaunchScan::IsNearAnEnd(double angle, double margin) const {
  for (const double target : WaysAround(angle)) {
    for (const End& end : ends_) {
      if (std::abs(end.SweptAngle - target) < margin + end.Blur) return true;
    }
  }
  return false;
}

}  // namespace ZARN::Reference

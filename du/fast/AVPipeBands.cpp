#include "du/fast/AVPipeBands.hpp"

#include <cmath>

#include "du/geometry/Constants.hpp"

namespace ZARN::DU {
namespace {

/// The sine and cosine of an angle in degrees.
struct Direction {
  explicit Direction(double degrees)
      : sine(std::sin(degrees / kDegreesPerRadian)),
        cosine(std::cos(degrees / kDegreesPerRadian)) {}
  double sine;
  double cosine;
};

}  // namespace

/// The bands around 90 degrees of azimuth are 15 degrees wide to either side
/// down to a polar angle of 30 degrees, 10 down to 120 degrees, and then 5.
///
/// A ball lies on one side of a plane or cone if its centre is farther from it
/// than the radius. The distance to a plane through the axis is that from the
/// axis times the sine of the angle between; so is, at least, the distance to a
/// cone around it.
eAnswer AVPipeBands::Judge(const Ball& ball, const Items& /*items*/,
                           Items& /*open*/) const {
  // mm: for coordinates up to 1e5, with a rounding error of 1e-10 here, and of
  // 1e-9 by the formula, whose angles have an error of 1e-13 degrees.
  constexpr double kRounding = 1e-6;
  static const Direction kUpperEnd(30.0);
  static const Direction kLowerEnd(120.0);
  static const Direction kWide(15.0);
  static const Direction kMiddle(10.0);
  static const Direction kNarrow(5.0);
  const double radius = ball.radius + kRounding;
  const auto [x, y, z] = ball.centre;
  const double fromAxis = std::sqrt(x * x + y * y);
  const auto below = [&, z = z](const Direction& cone) {
    return fromAxis * cone.cosine - z * cone.sine;
  };
  const double belowUpper = below(kUpperEnd);
  const double belowLower = below(kLowerEnd);
  // The bands get narrower towards the bottom.
  const Direction& widest = belowLower > radius   ? kNarrow
                            : belowUpper > radius ? kMiddle
                                                  : kWide;
  const Direction& narrowest = belowUpper < -radius   ? kWide
                               : belowLower < -radius ? kMiddle
                                                      : kNarrow;
  const auto inside = [x = std::abs(x), y = y](const Direction& band) {
    return y * band.sine - x * band.cosine;
  };
  return AnswerOf(inside(narrowest) > radius, inside(widest) < -radius);
}

}  // namespace ZARN::DU

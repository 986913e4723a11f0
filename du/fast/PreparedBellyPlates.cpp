#include "du/fast/PreparedBellyPlates.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "du/geometry/Constants.hpp"

namespace ZARN::DU {
namespace {

/// What a ball is widened by. In mm: for coordinates up to 1e5, with a rounding
/// error of 1e-11, and for the quotient of its radius. In rad: for two angles
/// from an arc cosine, with an error of 5e-8 each.
constexpr double kBallRounding = 1e-6;

}  // namespace

PreparedBellyPlates::PreparedBellyPlates(const BellyPlateModel& model,
                                         double tolerance,
                                         double outerAVRadius) {
  const BellyPlateBand band(model, tolerance, outerAVRadius);
  halfHeight_ = band.halfHeight;
  for (const TVector3& centre : model.BellyPlatePositions) {
    const BellyPlateFrame frame(centre, model.BellyPlateHalfHeight,
                                eDiagnostics::kSilent);
    const BellyPlateEdges edges(centre, frame, band);
    Plate plate = {centre, edges.left, edges.right, -1.0, 2.0};
    if (edges.left > 0.0 && edges.right > 0.0) {
      plate.limit = std::min(edges.left, edges.right);
      plate.limitCosine = std::cos(plate.limit);
    }
    plates_.push_back(plate);
  }
}

bool PreparedBellyPlates::IsInside(const Plate& plate, const TVector3& point) {
  const double z = plate.centre.Z();
  const double x = point.X();
  const double y = point.Y();
  // Outside this range the angle of ROOT's vectors may overflow or underflow.
  constexpr double kSmallest = 1e-60;
  constexpr double kLargest = 1e60;
  const double squares = (x * x + y * y + z * z) * plate.centre.Mag2();
  if (squares > kSmallest && squares < kLargest) {
    const double lengths = std::sqrt(squares);
    const double over = x * plate.centre.X() + y * plate.centre.Y() + z * z -
                        plate.limitCosine * lengths;
    if (over > kBand * lengths) return true;
    if (over < -kBand * lengths) return false;
  }
  const double alpha = TVector3(x, y, z).Angle(plate.centre);
  return plate.left > alpha && plate.right > alpha;
}

bool PreparedBellyPlates::HasPlateAt(const TVector3& point) const {
  return IsAsHigh(point) &&
         std::any_of(plates_.begin(), plates_.end(), [&](const Plate& plate) {
           return IsInside(plate, point);
         });
}

bool PreparedBellyPlates::HasPlateAt(const TVector3& point,
                                     Stretch plates) const {
  return IsAsHigh(point) &&
         std::any_of(
             plates_.begin() + plates.Begin(), plates_.begin() + plates.End(),
             [&](const Plate& plate) { return IsInside(plate, point); });
}

BallTest::Items PreparedBellyPlates::AllItems() const {
  Items items(plates_.size());
  std::iota(items.begin(), items.end(), 0U);
  return items;
}

PreparedBellyPlates::eHeight PreparedBellyPlates::HeightOf(
    const Ball& ball) const {
  const double radius = ball.radius + kBallRounding;
  const double z = std::abs(ball.centre.z);
  if (!(z < halfHeight_ + radius)) return eHeight::kOutside;  // also NaN
  return z < halfHeight_ - radius ? eHeight::kInside : eHeight::kUnsure;
}

eAnswer PreparedBellyPlates::JudgePlate(const Plate& plate, const Ball& ball,
                                        eHeight height) {
  const double radius = ball.radius + kBallRounding;
  const TVector3 level(ball.centre.x, ball.centre.y, plate.centre.Z());
  const double distance = level.Mag();
  const double angle = level.Angle(plate.centre);
  // By how much the angle varies within the ball.
  const double spread =
      distance > radius ? std::asin(radius / distance) + kBallRounding : kPi;
  return AnswerOf(height == eHeight::kInside && angle + spread < plate.limit,
                  angle - spread >= plate.limit);
}

eAnswer PreparedBellyPlates::JudgePlates(const Ball& ball,
                                         Stretch plates) const {
  const eHeight height = HeightOf(ball);
  eAnswer answer = eAnswer::kClear;
  if (height == eHeight::kOutside) return answer;
  for (std::uint32_t i = plates.Begin(); i < plates.End(); ++i) {
    answer = Either(answer, JudgePlate(plates_[i], ball, height));
  }
  return answer;
}

eAnswer PreparedBellyPlates::Judge(const Ball& ball, const Items& items,
                                   Items& open) const {
  open.clear();
  const eHeight height = HeightOf(ball);
  if (height == eHeight::kOutside) return eAnswer::kClear;
  for (const std::uint32_t i : items) {
    const eAnswer answer = JudgePlate(plates_[i], ball, height);
    if (answer == eAnswer::kBlocks) return answer;
    if (answer == eAnswer::kUnsure) open.push_back(i);
  }
  return open.empty() ? eAnswer::kClear : eAnswer::kUnsure;
}

void PreparedBellyPlates::AppendEntries(const Items& items,
                                        StretchLists& list) const {
  for (const std::uint32_t i : items) list.Append(i, i + 1);
}

}  // namespace ZARN::DU

// Rolls of the hold-down ropes that are hardly meant.

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "du/geometry/Constants.hpp"
#include "du/tables/FindingText.hpp"
#include "du/tables/TableCheck.hpp"

namespace ZARN::DU {
namespace {

/// Rolls nearer than this are the same, degrees: 5 mm on a vessel of 6 m, less
/// than the radius of a rope.
constexpr double kSameRoll = 0.05;

/// A full turn in degrees.
constexpr double kTurn = 360.0;

/// The difference of two angles, degrees, without full turns: 0 to 180.
double Apart(double a, double b) {
  return std::abs(std::remainder(a - b, kTurn));
}

/// A whole turn in rad is at most 2 pi; rolls of a ring of ropes, in degrees,
/// are not all below 6.3 degrees.
bool LookLikeRadians(const std::vector<double>& rolls) {
  constexpr double kMost = kTwoPi + 0.01;  // rounded to two digits
  return std::all_of(rolls.begin(), rolls.end(),
                     [](double roll) { return std::abs(roll) <= kMost; }) &&
         std::any_of(rolls.begin(), rolls.end(),
                     [](double roll) { return roll != 0.0; });
}

}  // namespace

void FindImplausibleRolls(TableCheck& check) {
  const TableIndex locations = {"hold_down_ropes", "locations"};
  const auto* const found =
      check.Get<std::vector<double>>("GEO_LOCATIONS", locations, "roll");
  if (found == nullptr || found->empty()) return;
  const std::vector<double>& rolls = *found;
  const FindingSubject subject = {eShadowingComponent::kAVHDRope,
                                  "GEO_LOCATIONS", *check.IndexOf(locations),
                                  "roll"};
  const auto tell = [&](const std::string& problem, const std::string& value,
                        const std::string& remedy) {
    check.Tell(eSeverity::kWarning, subject, {problem, value, remedy});
  };
  const bool areFinite =
      std::all_of(rolls.begin(), rolls.end(),
                  [](double roll) { return std::isfinite(roll); });
  if (!areFinite) return;  // told as not finite
  if (LookLikeRadians(rolls)) {
    tell("the rolls look like rad", TextOf(TableField(rolls)),
         "rolls are in degrees");
    return;
  }
  const auto beyond = std::find_if(rolls.begin(), rolls.end(), [](double roll) {
    return std::abs(roll) > kTurn;
  });
  if (beyond != rolls.end()) {
    tell("a roll is more than a full turn", TextOf(*beyond),
         "rolls are in degrees, -360 to 360: were they converted twice?");
    return;
  }
  for (std::size_t i = 0; i < rolls.size(); ++i) {
    for (std::size_t k = 0; k < i; ++k) {
      if (Apart(rolls[i], rolls[k]) >= kSameRoll) continue;
      tell("rolls " + std::to_string(k + 1) + " and " + std::to_string(i + 1) +
               " are the same",
           TextOf(rolls[i]), "write each rope once");
      return;
    }
  }
  const auto alone = std::find_if(rolls.begin(), rolls.end(), [&](double roll) {
    return std::none_of(rolls.begin(), rolls.end(), [&](double other) {
      return kTurn / 2 - Apart(roll, other) < kSameRoll;
    });
  });
  if (alone != rolls.end()) {
    tell("no other roll differs by 180 degrees from this one", TextOf(*alone),
         "legs are expected opposite to each other, so ropes come in pairs");
  }
}

}  // namespace ZARN::DU

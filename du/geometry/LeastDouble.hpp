#pragma once

#include <cstdint>
#include <cstring>
#include <limits>

namespace ZARN::DU {

/// The position of a double in the order of all doubles that are not NaN.
inline std::uint64_t OrderOf(double x) {
  constexpr std::uint64_t kSign = std::uint64_t{1} << 63U;
  std::uint64_t bits = 0;
  std::memcpy(&bits, &x, sizeof(bits));
  return (bits & kSign) != 0 ? ~bits : bits | kSign;
}

/// The double at a position.
inline double DoubleAt(std::uint64_t order) {
  constexpr std::uint64_t kSign = std::uint64_t{1} << 63U;
  const std::uint64_t bits = (order & kSign) != 0 ? order ^ kSign : ~order;
  double x = 0.0;
  std::memcpy(&x, &bits, sizeof(x));
  return x;
}

/// The smallest double in a range for which a condition holds: minus infinity
/// if it holds at @p lowest, plus infinity if it does not at @p highest, or if
/// the range is empty or NaN.
///
/// @param lowest,highest  finite or NaN
/// @param guess  near the result, which makes the search short; any value
/// @param condition  does not hold below a limit, and holds above it. If it
///        changes several times near the limit, the result is one of the
///        changes: it holds there, and not at the next smaller double.
template <class Condition>
double LeastDouble(double lowest, double highest, double guess,
                   const Condition& condition) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  if (!(lowest <= highest) || !condition(highest)) return kInfinity;
  if (condition(lowest)) return -kInfinity;
  std::uint64_t below = OrderOf(lowest);   // the condition does not hold
  std::uint64_t above = OrderOf(highest);  // it holds
  const auto holdsAt = [&](std::uint64_t order) {
    const bool holds = condition(DoubleAt(order));
    (holds ? above : below) = order;
    return holds;
  };
  // From the guess in growing steps beyond the limit; then by halves.
  if (guess > lowest && guess < highest) {
    const bool holds = holdsAt(OrderOf(guess));
    for (std::uint64_t step = 1; step < above - below; step *= 2) {
      if (holdsAt(holds ? above - step : below + step) != holds) break;
    }
  }
  while (above - below > 1) {
    const std::uint64_t middle = below + (above - below) / 2;
    if (condition(DoubleAt(middle))) {
      above = middle;
    } else {
      below = middle;
    }
  }
  return DoubleAt(above) + 0.0;  // not -0
}

}  // namespace ZARN::DU

#pragma once

#include <cmath>
#include <limits>
#include <optional>

namespace ZARN::Testing {

/// The next double above and below.
inline double Above(double x) {
  return std::nextafter(x, std::numeric_limits<double>::infinity());
}
inline double Below(double x) {
  return std::nextafter(x, -std::numeric_limits<double>::infinity());
}

/// Two adjacent doubles.
struct Neighbours {
  double before;
  double after;
};

/// Find neighbours between @p from and @p to at which a condition changes.
///
/// @pre the condition differs at the two ends
template <class Condition>
Neighbours FindChange(double from, double to, const Condition& condition) {
  const bool atFrom = condition(from);
  while (std::nextafter(from, to) != to) {
    double middle = from + 0.5 * (to - from);
    if (middle == from || middle == to) middle = std::nextafter(from, to);
    (condition(middle) == atFrom ? from : to) = middle;
  }
  return {from, to};
}

/// Find a number at which a rounded quantity is exactly the limit. Not every
/// number is a value of the formula, so the doubles around the point where the
/// quantity crosses the limit are tried one by one.
///
/// @pre the limit lies between the values at @p from and @p to
template <class Quantity>
std::optional<double> FindExact(double from, double to,
                                const Quantity& quantity, double limit) {
  const Neighbours change =
      FindChange(from, to, [&](double x) { return quantity(x) < limit; });
  double up = change.after;
  double down = change.before;
  constexpr int kTries = 10000;
  for (int i = 0; i < kTries; ++i) {
    if (quantity(up) == limit) return up;
    if (quantity(down) == limit) return down;
    up = std::nextafter(up, to);
    down = std::nextafter(down, from);
  }
  return std::nullopt;
}

}  // namespace ZARN::Testing

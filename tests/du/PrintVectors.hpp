#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <ios>
#include <limits>
#include <ostream>
#include <vector>

#include "TVector3.h"

/// Lets GoogleTest print a vector with all its digits, since vectors are
/// compared exactly. In the namespace of TVector3, where GoogleTest looks for
/// it.
inline void PrintTo(const TVector3& v, std::ostream* output) {
  const std::streamsize before =
      output->precision(std::numeric_limits<double>::max_digits10);
  *output << "(" << v.X() << ", " << v.Y() << ", " << v.Z() << ")";
  output->precision(before);
}

namespace ZARN::Testing {

/// Expect two long lists to be equal to the last bit, and show the first
/// difference.
inline void ExpectSamePoints(const std::vector<TVector3>& actual,
                             const std::vector<TVector3>& expected) {
  EXPECT_EQ(actual.size(), expected.size());
  const auto end = actual.begin() + static_cast<std::ptrdiff_t>(std::min(
                                        actual.size(), expected.size()));
  const auto [own, other] =
      std::mismatch(actual.begin(), end, expected.begin());
  if (own == end) return;
  EXPECT_EQ(*own, *other) << "at element " << own - actual.begin();
}

}  // namespace ZARN::Testing

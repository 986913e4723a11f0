#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstddef>

#include "TVector3.h"
#include "du/geometry/Answer.hpp"
#include "tests/du/PrintVectors.hpp"

namespace ZARN::Testing {

/// Compares the answers of a filter with those of the formula.
class AnswerTally {
 public:
  /// @param place  that was judged, shown if the answer is wrong
  void Add(DU::eAnswer answer, bool isBlocked, const TVector3& place) {
    ++counts_[static_cast<std::size_t>(answer)];
    if (answer == DU::eAnswer::kUnsure) return;
    if ((answer == DU::eAnswer::kBlocks) == isBlocked) return;
    if (wrong_++ == 0) firstWrong_ = place;
  }

  std::size_t Count(DU::eAnswer answer) const {
    return counts_[static_cast<std::size_t>(answer)];
  }
  std::size_t Count() const { return counts_[0] + counts_[1] + counts_[2]; }

  void ExpectNoneWrong() const {
    EXPECT_EQ(wrong_, 0U) << "of " << Count() << ", first at "
                          << PrintToString(firstWrong_);
  }

  /// Expect that no sure answer is wrong, that both sure answers occur, and
  /// that few are unsure: a filter that leaves everything open would be
  /// useless.
  void Expect(double mostUnsure) const {
    ExpectNoneWrong();
    EXPECT_GT(Count(DU::eAnswer::kBlocks), 0U);
    EXPECT_GT(Count(DU::eAnswer::kClear), 0U);
    EXPECT_LE(static_cast<double>(Count(DU::eAnswer::kUnsure)),
              mostUnsure * static_cast<double>(Count()))
        << "of " << Count();
  }

 private:
  static std::string PrintToString(const TVector3& v) {
    return ::testing::PrintToString(v);
  }

  std::array<std::size_t, 3> counts_ = {};
  std::size_t wrong_ = 0;
  TVector3 firstWrong_;
};

}  // namespace ZARN::Testing

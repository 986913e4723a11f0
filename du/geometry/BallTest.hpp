#pragma once

#include <cstddef>

#include "du/geometry/BoxTest.hpp"

namespace ZARN::DU {

/// A BoxTest that judges a ball around each quarter of a box.
class BallTest : public BoxTest {
 public:
  /// As JudgeQuarters, for the points of a ball.
  virtual eAnswer Judge(const Ball& ball, const Items& items,
                        Items& open) const = 0;

  OfQuarters<eAnswer> JudgeQuarters(const QuarteredBox& box, const Items& items,
                                    OfQuarters<Items>& open) const override {
    OfQuarters<eAnswer> answers;
    for (std::size_t i = 0; i < answers.size(); ++i) {
      answers[i] = Judge(box.BallAround(i), items, open[i]);
    }
    return answers;
  }
};

}  // namespace ZARN::DU

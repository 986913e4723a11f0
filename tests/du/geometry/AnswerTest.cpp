#include "du/geometry/Answer.hpp"

#include <gtest/gtest.h>

namespace ZARN::DU {
namespace {

TEST(Answer, IsSureOnlyIfOneConditionHolds) {
  EXPECT_EQ(AnswerOf(true, false), eAnswer::kBlocks);
  EXPECT_EQ(AnswerOf(false, true), eAnswer::kClear);
  EXPECT_EQ(AnswerOf(false, false), eAnswer::kUnsure);
}

TEST(Answer, OfTwoItemsBlocksIfOneDoesAndIsClearIfBothAre) {
  for (const eAnswer answer :
       {eAnswer::kClear, eAnswer::kUnsure, eAnswer::kBlocks}) {
    EXPECT_EQ(Either(answer, eAnswer::kBlocks), eAnswer::kBlocks);
    EXPECT_EQ(Either(eAnswer::kBlocks, answer), eAnswer::kBlocks);
    EXPECT_EQ(Either(answer, eAnswer::kClear), answer);
    EXPECT_EQ(Either(eAnswer::kClear, answer), answer);
    EXPECT_EQ(Either(answer, answer), answer);
  }
}

TEST(Answer, UsesTheFormulaOnlyIfUnsure) {
  int asked = 0;
  const auto decideFor = [&](bool verdict) {
    return [&asked, verdict] {
      ++asked;
      return verdict;
    };
  };
  EXPECT_TRUE(IsBlocking(eAnswer::kBlocks, decideFor(false)));
  EXPECT_FALSE(IsBlocking(eAnswer::kClear, decideFor(true)));
  EXPECT_EQ(asked, 0);
  EXPECT_TRUE(IsBlocking(eAnswer::kUnsure, decideFor(true)));
  EXPECT_FALSE(IsBlocking(eAnswer::kUnsure, decideFor(false)));
  EXPECT_EQ(asked, 2);
}

}  // namespace
}  // namespace ZARN::DU

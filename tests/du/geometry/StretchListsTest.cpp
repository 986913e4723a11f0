#include "du/geometry/StretchLists.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>
#include <vector>

namespace ZARN::DU {
namespace {

using Pairs = std::vector<std::pair<std::uint32_t, std::uint32_t>>;

/// The begin and end of each stretch.
Pairs PairsOf(const StretchLists& lists) {
  Pairs pairs;
  for (const Stretch some : lists.All()) {
    pairs.emplace_back(some.Begin(), some.End());
  }
  return pairs;
}

TEST(Stretch, HoldsItsBeginAndEnd) {
  for (const std::uint32_t begin : {0U, 1U, 127U, 128U, Stretch::kEnd - 1}) {
    for (const std::uint32_t count : {0U, 1U, 126U, Stretch::kMostEntries}) {
      const Stretch some(begin, count);
      EXPECT_EQ(some.Begin(), begin);
      EXPECT_EQ(some.Count(), count);
      EXPECT_EQ(some.End(), begin + count);
    }
  }
  EXPECT_EQ(Stretch().Count(), 0U);
}

TEST(StretchLists, JoinEntriesThatAreAdjacentOrNearlySo) {
  StretchLists lists(100);
  for (const std::uint32_t i : {3U, 4U, 5U, 7U, 10U, 22U})
    lists.Append(i, i + 1);
  lists.Append(22, 30);
  EXPECT_EQ(lists.EndList().Count(), 3U);
  EXPECT_EQ(PairsOf(lists), (Pairs{{3, 8}, {10, 11}, {22, 30}}));
}

TEST(StretchLists, StartANewStretchForEveryList) {
  StretchLists lists(100);
  lists.Append(7, 8);
  const Stretch first = lists.EndList();
  const Stretch empty = lists.EndList();
  lists.Append(8, 9);  // would join the first list
  lists.Append(50, 51);
  const Stretch second = lists.EndList();
  EXPECT_EQ(PairsOf(lists), (Pairs{{7, 8}, {8, 9}, {50, 51}}));
  EXPECT_EQ(first.Begin(), 0U);
  EXPECT_EQ(first.Count(), 1U);
  EXPECT_EQ(empty.Count(), 0U);
  EXPECT_EQ(second.Begin(), 1U);
  EXPECT_EQ(second.Count(), 2U);
}

TEST(StretchLists, SplitALongStretch) {
  StretchLists lists(100);
  lists.Append(10, 10 + 2 * Stretch::kMostEntries + 1);
  EXPECT_EQ(lists.EndList().Count(), 3U);
  EXPECT_EQ(PairsOf(lists), (Pairs{{10, 137}, {137, 264}, {264, 265}}));
}

TEST(StretchLists, DropAListForWhichThereIsNoRoom) {
  // Too many stretches in all lists, too many in one, or entries too far back.
  StretchLists few(2);
  few.Append(0, 1);
  EXPECT_EQ(few.EndList().Count(), 1U);
  few.Append(0, 1);
  few.Append(100, 101);
  EXPECT_EQ(few.EndList().Count(), 0U);
  EXPECT_EQ(few.All().size(), 1U);
  few.Append(200, 201);
  EXPECT_EQ(few.EndList().Count(), 1U);

  StretchLists many(1000);
  for (std::uint32_t i = 0; i < 200; ++i) many.Append(10 * i, 10 * i + 1);
  EXPECT_EQ(many.EndList().Count(), 0U);
  many.Append(Stretch::kEnd - 1, Stretch::kEnd);
  EXPECT_EQ(many.EndList().Count(), 1U);
  many.Append(Stretch::kEnd, Stretch::kEnd + 1);
  EXPECT_EQ(many.EndList().Count(), 0U);
  EXPECT_EQ(many.All().size(), 1U);
}

}  // namespace
}  // namespace ZARN::DU

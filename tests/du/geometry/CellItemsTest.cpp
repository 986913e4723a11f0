#include "du/geometry/CellItems.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "tests/property/Random.hpp"

namespace ZARN::DU {
namespace {

using Items = BallTest::Items;
using Lists = CellItems::Lists;
using Testing::Random;

constexpr std::size_t kCells = 1000;

/// What the lists of some cells are to be.
using ItemsByCell = std::map<std::uint32_t, Items>;

/// The cells at the borders of the words of bits.
constexpr std::array<std::uint32_t, 14> kBorders = {
    0, 1, 62, 63, 64, 65, 127, 128, 191, 192, 959, 960, 998, 999};

Items RandomItems(Random& random) {
  Items items(random.Below(4));  // also none
  for (std::uint32_t& item : items) {
    item = static_cast<std::uint32_t>(random.Below(50));
  }
  return items;
}

/// The lists end to end, in random order.
CellItems Make(const ItemsByCell& byCell, Random& random) {
  std::vector<std::uint32_t> order;
  order.reserve(byCell.size());
  for (const auto& [cell, items] : byCell) order.push_back(cell);
  for (std::size_t i = order.size(); i > 1; --i) {
    std::swap(order[i - 1], order[random.Below(i)]);
  }
  Lists lists;
  Items all;
  for (const std::uint32_t cell : order) {
    const Items& items = byCell.at(cell);
    const auto begin = static_cast<std::uint32_t>(all.size());
    all.insert(all.end(), items.begin(), items.end());
    lists.push_back({cell, {begin, static_cast<std::uint32_t>(all.size())}});
  }
  return {kCells, lists, all};
}

Items ItemsOf(const CellItems& cells, std::uint32_t cell) {
  const CellItems::Range range = cells.Of(cell);
  const auto begin = cells.Items().begin();
  return {begin + range.begin, begin + range.end};
}

void ExpectItsOwnItemsOfEachCell(const ItemsByCell& byCell, Random& random) {
  const CellItems cells = Make(byCell, random);
  std::size_t all = 0;
  for (const auto& [cell, items] : byCell) {
    EXPECT_EQ(ItemsOf(cells, cell), items) << cell;
    all += items.size();
  }
  EXPECT_EQ(cells.Items().size(), all);
}

TEST(CellItems, GiveEachCellItsOwnItems) {
  Random random(70);
  for (const double share : {0.001, 0.02, 0.3, 0.9, 1.0}) {
    SCOPED_TRACE(share);
    for (int i = 0; i < 20; ++i) {
      ItemsByCell byCell;
      for (std::uint32_t cell = 0; cell < kCells; ++cell) {
        if (random.Chance(share)) byCell[cell] = RandomItems(random);
      }
      ExpectItsOwnItemsOfEachCell(byCell, random);
    }
  }
}

TEST(CellItems, GiveThemAtTheBordersOfAWordOfBits) {
  Random random(71);
  ItemsByCell all;
  for (const std::uint32_t cell : kBorders) {
    all[cell] = {cell, cell + 1};
    ExpectItsOwnItemsOfEachCell({{cell, {cell}}}, random);
  }
  ExpectItsOwnItemsOfEachCell(all, random);
  for (const std::uint32_t cell : kBorders) {
    ItemsByCell others = all;
    others.erase(cell);
    ExpectItsOwnItemsOfEachCell(others, random);
  }
}

TEST(CellItems, HoldCellsUpToTheLastOfAFullWord) {
  for (const std::uint32_t count : {1U, 63U, 64U, 65U, 128U}) {
    SCOPED_TRACE(count);
    const CellItems cells(count, {{count - 1, {1, 3}}}, {7, 8, 9});
    EXPECT_EQ(ItemsOf(cells, count - 1), (Items{8, 9}));
  }
}

TEST(CellItems, MayShareItemsAndLeaveSomeOut) {
  // A list is what its range says, wherever that lies among the items.
  const CellItems cells(kCells, {{500, {0, 2}}, {3, {1, 4}}, {64, {5, 5}}},
                        {10, 11, 12, 13, 14});
  EXPECT_EQ(ItemsOf(cells, 3), (Items{11, 12, 13}));
  EXPECT_EQ(ItemsOf(cells, 64), Items());
  EXPECT_EQ(ItemsOf(cells, 500), (Items{10, 11}));
}

TEST(CellItems, MayBeOfNoCellsAtAll) {
  EXPECT_TRUE(CellItems().Items().empty());
  EXPECT_TRUE(CellItems(0, {}, {}).Items().empty());
  EXPECT_TRUE(CellItems(kCells, {}, {}).Items().empty());
}

}  // namespace
}  // namespace ZARN::DU

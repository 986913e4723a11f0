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

using Items = std::vector<std::uint32_t>;
using OfCells = std::vector<std::pair<std::uint32_t, Stretch>>;
using Testing::Random;

constexpr std::size_t kCells = 1000;

/// The expected lists of some cells.
using ItemsByCell = std::map<std::uint32_t, Items>;

/// Cells at the borders of words of bits.
constexpr std::array<std::uint32_t, 14> kBorders = {
    0, 1, 62, 63, 64, 65, 127, 128, 191, 192, 959, 960, 998, 999};

Items RandomItems(Random& random) {
  Items items(random.Below(4));  // possibly none
  for (std::uint32_t& item : items) {
    item = static_cast<std::uint32_t>(random.Below(50));
  }
  return items;
}

/// Make each item a stretch, with the cells in random order.
CellItems Make(const ItemsByCell& byCell, Random& random) {
  std::vector<std::uint32_t> order;
  order.reserve(byCell.size());
  for (const auto& [cell, items] : byCell) order.push_back(cell);
  for (std::size_t i = order.size(); i > 1; --i) {
    std::swap(order[i - 1], order[random.Below(i)]);
  }
  OfCells ofCells;
  std::vector<Stretch> stretches;
  for (const std::uint32_t cell : order) {
    const Items& items = byCell.at(cell);
    ofCells.push_back({cell,
                       {static_cast<std::uint32_t>(stretches.size()),
                        static_cast<std::uint32_t>(items.size())}});
    for (const std::uint32_t item : items) stretches.emplace_back(item, 1);
  }
  return {kCells, ofCells, stretches};
}

Items ItemsOf(const CellItems& cells, std::uint32_t cell) {
  Items items;
  for (const Stretch some : cells.Of(cell)) {
    for (std::uint32_t i = some.Begin(); i < some.End(); ++i) {
      items.push_back(i);
    }
  }
  return items;
}

void ExpectItsOwnItemsOfEachCell(const ItemsByCell& byCell, Random& random) {
  const CellItems cells = Make(byCell, random);
  std::size_t all = 0;
  for (const auto& [cell, items] : byCell) {
    EXPECT_EQ(ItemsOf(cells, cell), items) << cell;
    all += items.size();
  }
  EXPECT_EQ(cells.All().size(), all);
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

TEST(CellItems, GiveItemsAtTheBordersOfAWordOfBits) {
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

TEST(CellItems, HoldCellsUpToTheLastBitOfAWord) {
  for (const std::uint32_t count : {1U, 63U, 64U, 65U, 128U}) {
    SCOPED_TRACE(count);
    const CellItems cells(count, {{count - 1, {1, 2}}},
                          {{7, 1}, {8, 2}, {20, 1}});
    EXPECT_EQ(ItemsOf(cells, count - 1), (Items{8, 9, 20}));
  }
}

TEST(CellItems, CanShareStretchesAndLeaveSomeOut) {
  const CellItems cells(kCells, {{500, {0, 2}}, {3, {1, 3}}, {64, {}}},
                        {{10, 1}, {11, 1}, {12, 1}, {13, 1}, {14, 1}});
  EXPECT_EQ(ItemsOf(cells, 3), (Items{11, 12, 13}));
  EXPECT_EQ(ItemsOf(cells, 64), Items());
  EXPECT_TRUE(cells.Of(64).IsEmpty());
  EXPECT_EQ(ItemsOf(cells, 500), (Items{10, 11}));
}

TEST(CellItems, CanHaveNoCells) {
  EXPECT_TRUE(CellItems().All().empty());
  EXPECT_TRUE(CellItems(0, {}, {}).All().empty());
  EXPECT_TRUE(CellItems(kCells, {}, {}).All().empty());
}

}  // namespace
}  // namespace ZARN::DU

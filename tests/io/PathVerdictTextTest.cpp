#include "io/PathVerdictText.hpp"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace ZARN::IO {
namespace {

using DU::eShadowingComponent;

std::string RowOf(const PathVerdictText& rows, std::uint64_t row,
                  const std::vector<std::string_view>& names,
                  eShadowingComponent by, const PathDetails& details = {}) {
  PieceText text;
  rows.AppendRow(text, row, names.data(), by, details);
  return std::string(text.Text());
}

TEST(PathVerdictText, NumbersRowsAndSaysWhatBlocks) {
  const PathVerdictText rows({}, {});
  EXPECT_EQ(rows.Header(), "row,shadowed,by\n");
  EXPECT_EQ(RowOf(rows, 0, {}, eShadowingComponent::kNone), "0,0,\n");
  EXPECT_EQ(RowOf(rows, 123456789, {}, eShadowingComponent::kSupportRope),
            "123456789,1,SupportRope\n");
}

TEST(PathVerdictText, CopiesNamesOfAnyKindAsCells) {
  const PathVerdictText rows({"event", "pmt"}, {});
  EXPECT_EQ(rows.Header(), "row,event,pmt,shadowed,by\n");
  const std::string longName(200, 'x');
  EXPECT_EQ(RowOf(rows, 7, {"a,\"b\"", longName}, eShadowingComponent::kNone),
            "7,\"a,\"\"b\"\"\"," + longName + ",0,\n");
  EXPECT_EQ(RowOf(rows, 8, {"", ""}, eShadowingComponent::kAVPipe),
            "8,,,1,AVPipe\n");
}

TEST(PathVerdictText, WritesMoreColumnsInTheirOrder) {
  const PathVerdictText rows({"event"},
                             {FindPairColumn("code"), FindPairColumn("item")});
  EXPECT_EQ(rows.Header(), "row,event,shadowed,by,code,item\n");
  PathDetails details;
  details.item = "plate 3, left";
  EXPECT_EQ(RowOf(rows, 0, {"e"}, eShadowingComponent::kBellyPlate, details),
            "0,e,1,BellyPlate,3,\"plate 3, left\"\n");
  EXPECT_EQ(RowOf(rows, 1, {"e"}, eShadowingComponent::kNone), "1,e,0,,0,\n");
}

}  // namespace
}  // namespace ZARN::IO

#include "io/PathVerdictNTuple.hpp"

#include <gtest/gtest.h>

#include <ROOT/RNTupleReader.hxx>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "io/Errors.hpp"
#include "tests/support/InFolder.hpp"

namespace ZARN::IO {
namespace {

using DU::eShadowingComponent;

class PathVerdictNTupleTest : public Testing::InFolder {
 protected:
  const Origin origin_ = {"zarn-shadow", "1.2.3", 7, 150.5, {}, "ab12"};
};

TEST_F(PathVerdictNTupleTest, StoresRowsNamesAndVerdicts) {
  {
    PathVerdictNTuple file("verdicts.root", origin_, true);
    EXPECT_FALSE(file.HasBegun());
    file.Begin({{"event", true}, {"pmt", false}});
    const std::array<std::string_view, 2> first = {"12", "a b"};
    file.Fill(first.data(), eShadowingComponent::kNeckBoss);
    const std::array<std::string_view, 2> second = {"-3", ""};
    file.Fill(second.data(), eShadowingComponent::kNone);
    file.Finish();
    file.Commit();
  }
  auto reader = ROOT::RNTupleReader::Open("verdicts", "verdicts.root");
  EXPECT_EQ(reader->GetDescriptor().GetDescription(), Describe(origin_));
  ASSERT_EQ(reader->GetNEntries(), 2U);
  EXPECT_EQ(reader->GetView<std::uint64_t>("row")(0), 0U);
  EXPECT_EQ(reader->GetView<std::uint64_t>("row")(1), 1U);
  EXPECT_EQ(reader->GetView<std::int64_t>("event")(0), 12);
  EXPECT_EQ(reader->GetView<std::int64_t>("event")(1), -3);
  EXPECT_EQ(reader->GetView<std::string>("pmt")(0), "a b");
  EXPECT_EQ(reader->GetView<std::int32_t>("shadowed")(0), 1);
  EXPECT_EQ(reader->GetView<std::int32_t>("shadowed")(1), 0);
  EXPECT_EQ(reader->GetView<std::string>("by")(0), "NeckBoss");
  EXPECT_EQ(reader->GetView<std::string>("by")(1), "");
  EXPECT_EQ(reader->GetView<std::int32_t>("code")(0), 6);
  EXPECT_EQ(reader->GetView<std::int32_t>("code")(1), 0);
}

TEST_F(PathVerdictNTupleTest, HasOnlyTheFieldsThatAreAskedFor) {
  {
    PathVerdictNTuple file("verdicts.root", origin_, false);
    file.Begin({});
    file.Finish();
    file.Commit();
  }
  auto reader = ROOT::RNTupleReader::Open("verdicts", "verdicts.root");
  std::string names;
  for (const auto& field : reader->GetDescriptor().GetTopLevelFields()) {
    names += field.GetFieldName() + " ";
  }
  EXPECT_EQ(names, "row shadowed by ");
}

TEST_F(PathVerdictNTupleTest, KeepsTheOldFileWithoutCommit) {
  Put("verdicts.root", "former");
  {
    PathVerdictNTuple file("verdicts.root", origin_, false);
    file.Begin({});
    file.Fill(nullptr, eShadowingComponent::kNone);
  }
  EXPECT_EQ(Text("verdicts.root"), "former");
}

TEST_F(PathVerdictNTupleTest, ThrowsIfItCannotWrite) {
  EXPECT_THROW(PathVerdictNTuple("nowhere/verdicts.root", origin_, false),
               OutputFailure);
}

}  // namespace
}  // namespace ZARN::IO

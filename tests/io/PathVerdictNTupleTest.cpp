#include "io/PathVerdictNTuple.hpp"

#include <gtest/gtest.h>

#include <ROOT/RNTupleReader.hxx>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "io/Errors.hpp"
#include "io/PathDetails.hpp"
#include "tests/support/InFolder.hpp"

namespace ZARN::IO {
namespace {

class PathVerdictNTupleTest : public ::ZARN::Testing::InFolder {
 protected:
  const Origin origin_ = {"zarn-shadow", "1.2.3", 7, 150.5, {}, "ab12"};
};

TEST_F(PathVerdictNTupleTest, StoresRowsNamesAndVerdicts) {
  {
    PathVerdictNTuple file(
        "verdicts.root", origin_,
        {FindPairColumn("code"), FindPairColumn("critical_tolerance"),
         FindPairColumn("item")});
    EXPECT_FALSE(file.HasBegun());
    file.Begin({{"event", true}, {"pmt", false}});
    const std::array<std::string_view, 2> first = {"12", "a b"};
    PathDetails details;
    details.critical.of.fill(12.5);
    details.item = "rope 7, leg P1";
    file.Fill(first.data(), JudgedPath(DU::eVerdict::kNeckBoss, details));
    const std::array<std::string_view, 2> second = {"-3", ""};
    file.Fill(second.data(), JudgedPath(DU::eVerdict::kClear, {}));
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
  EXPECT_EQ(reader->GetView<double>("critical_tolerance")(0), 12.5);
  EXPECT_EQ(reader->GetView<std::string>("item")(0), "rope 7, leg P1");
  EXPECT_EQ(reader->GetView<std::string>("item")(1), "");
}

TEST_F(PathVerdictNTupleTest, HasOnlyTheFieldsThatAreAskedFor) {
  {
    PathVerdictNTuple file("verdicts.root", origin_, {});
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
    PathVerdictNTuple file("verdicts.root", origin_, {});
    file.Begin({});
    file.Fill(nullptr, JudgedPath(DU::eVerdict::kClear, {}));
  }
  EXPECT_EQ(Text("verdicts.root"), "former");
}

TEST_F(PathVerdictNTupleTest, ThrowsIfItCannotWrite) {
  EXPECT_THROW(PathVerdictNTuple("nowhere/verdicts.root", origin_, {}),
               OutputFailure);
}

}  // namespace
}  // namespace ZARN::IO

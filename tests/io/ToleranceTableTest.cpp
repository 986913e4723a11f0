#include "io/ToleranceTable.hpp"

#include <gtest/gtest.h>

#include <ROOT/RNTupleReader.hxx>
#include <cmath>

#include "tests/support/InFolder.hpp"

namespace ZARN::IO {
namespace {

class ToleranceTableTest : public ::ZARN::Testing::InFolder {
 protected:
  void Fill(const std::string& name) const {
    ToleranceTable table(name, origin_);
    table.Write(-0.5, "any", 400, 100);
    table.Write(150, "AVPipe", 0, 0);
    table.Finish();
    table.Commit();
  }

  Origin origin_ = {"zarn-shadow", "1.2.3", 7, 150.5, 420.0, "ab12"};
};

TEST_F(ToleranceTableTest, WritesFractionsWithTheirErrors) {
  Fill("table.csv");
  EXPECT_EQ(Text("table.csv"),
            "tolerance,component,paths,shadowed,fraction,fraction_error\n"
            "-0.5,any,400,100,0.25,0.021650635094610966\n"
            "150,AVPipe,0,0,,\n");
}

TEST_F(ToleranceTableTest, WritesTheSameColumnsToAnRNTuple) {
  origin_.tolerances = {-0.5, 150};
  Fill("table.root");
  auto reader = ROOT::RNTupleReader::Open("tolerances", "table.root");
  EXPECT_EQ(reader->GetDescriptor().GetDescription(), Describe(origin_));
  EXPECT_EQ(Describe(origin_).find("\"tolerance\":"), std::string::npos);
  EXPECT_NE(Describe(origin_).find("\"tolerances\":[-0.5,150.0]"),
            std::string::npos);
  ASSERT_EQ(reader->GetNEntries(), 2U);
  EXPECT_EQ(reader->GetView<double>("tolerance")(0), -0.5);
  EXPECT_EQ(reader->GetView<std::string>("component")(1), "AVPipe");
  EXPECT_EQ(reader->GetView<std::uint64_t>("paths")(0), 400U);
  EXPECT_EQ(reader->GetView<std::uint64_t>("shadowed")(0), 100U);
  EXPECT_EQ(reader->GetView<double>("fraction")(0), 0.25);
  EXPECT_EQ(reader->GetView<double>("fraction_error")(0), 0.021650635094610966);
  EXPECT_TRUE(std::isnan(reader->GetView<double>("fraction")(1)));
  EXPECT_TRUE(std::isnan(reader->GetView<double>("fraction_error")(1)));
}

}  // namespace
}  // namespace ZARN::IO

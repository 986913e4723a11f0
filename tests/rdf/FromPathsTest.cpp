#include <gmock/gmock.h>
#include <ROOT/RDataFrame.hxx>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "io/Errors.hpp"
#include "rdf/DataFrame.hpp"
#include "tests/property/ExamplePaths.hpp"
#include "tests/rdf/Frames.hpp"
#include "tests/rdf/InDetector.hpp"
#include "tests/support/TextOf.hpp"

namespace ZARN::Testing {
namespace {

using ROOT::RDF::RNode;
using testing::AllOf;
using testing::HasSubstr;

class FromPaths : public InDetector {
 protected:
  FromPaths() : paths_(ExamplePaths(kExamplePaths)) {}

  std::vector<DU::LightPath> paths_;
};

TEST_F(FromPaths, GivesTheVerdictsOfFindShadowing) {
  const std::vector<int> expected = CodesOf(paths_);
  const std::vector<int> ofFloats = CodesOf(InSinglePrecision(paths_));
  for (const eFormat format : {eFormat::kTree, eFormat::kNTuple}) {
    UseThreads(1);
    ThroughFile(FrameOf(paths_, eCoordinates::kDouble, eTypes::kNames),
                "doubles.root", format);
    ThroughFile(FrameOf(paths_, eCoordinates::kFloat, eTypes::kBytes),
                "floats.root", format);
    for (const unsigned int threads : {1U, 2U, 7U}) {
      SCOPED_TRACE(std::to_string(threads) + " threads");
      UseThreads(threads);
      EXPECT_EQ(ByRow(RDF::FromPaths("doubles.root", &calculator_), "code"),
                expected);
      EXPECT_EQ(
          ByRow(RDF::FromPaths("floats.root:paths", &calculator_, {}, "by"),
                "by"),
          ofFloats);
    }
  }
}

TEST_F(FromPaths, GivesWhatIsInTheFile) {
  RNode frame = FrameOf(paths_);
  frame = frame.Define("event", [](ULong64_t row) { return 7 * row; }, {"row"})
              .Define("pmt",
                      [](ULong64_t row) { return "P" + std::to_string(row); },
                      {"row"});
  for (const eFormat format : {eFormat::kTree, eFormat::kNTuple}) {
    ThroughFile(frame, "paths.root", format);
    for (const unsigned int threads : {1U, 3U}) {
      UseThreads(threads);
      RNode read = RDF::FromPaths("paths.root");
      EXPECT_EQ(read.GetColumnNames().size(), 1U + 25U + 2U);
      auto rows = read.Take<ULong64_t>("row");
      auto types = read.Take<int>("type");
      auto starts = read.Take<double>("start_x");
      auto ends = read.Take<double>("av4_z");
      auto events = read.Take<std::int64_t>("event");
      auto pmts = read.Take<std::string>("pmt");
      ASSERT_EQ(rows->size(), paths_.size());
      for (std::size_t i = 0; i < rows->size(); ++i) {
        const ULong64_t row = (*rows)[i];
        const DU::LightPath& path = paths_.at(row);
        ASSERT_EQ((*types)[i], path.LightPathType);
        ASSERT_EQ((*starts)[i], path.StartPos.X());
        ASSERT_EQ((*ends)[i], path.AVPoint4.Z());
        ASSERT_EQ((*events)[i], static_cast<std::int64_t>(7 * row));
        ASSERT_EQ((*pmts)[i], "P" + std::to_string(row));
      }
    }
    UseThreads(1);
  }
}

TEST_F(FromPaths, CanBeUsedAsAnyFrame) {
  const RNode written =
      ThroughFile(FrameOf(paths_), "paths.root", eFormat::kNTuple);
  RNode frame = RDF::FromPaths("paths.root", &calculator_);
  const std::vector<int> expected = CodesOf(paths_);
  std::vector<ULong64_t> rows;
  std::vector<int> codes;
  for (std::size_t i = 0; i < paths_.size(); i += 1) {
    if (expected[i] == 0 || i % 3 != 1) continue;
    rows.push_back(i);
    codes.push_back(expected[i]);
  }
  RNode some = frame.Filter("row % 3 == 1").Filter("code > 0");
  auto takenRows = some.Take<ULong64_t>("row");
  auto takenCodes = some.Take<int>("code");
  EXPECT_EQ(*takenRows, rows);
  EXPECT_EQ(*takenCodes, codes);
  EXPECT_EQ(*frame.Count(), paths_.size());  // another loop
  EXPECT_EQ(*frame.Range(10, 20).Take<ULong64_t>("row"),
            (std::vector<ULong64_t>{10, 11, 12, 13, 14, 15, 16, 17, 18, 19}));
  RDF::PathColumns columns;
  columns.code = "again";
  EXPECT_EQ(ByRow(RDF::DefineShadowing(frame, calculator_, columns), "again"),
            expected);
}

TEST_F(FromPaths, ReadsColumnsWithOtherNames) {
  RNode frame =
      FrameOf(paths_).Define("x", [](double x) { return x; }, {"start_x"});
  frame = frame.Redefine("start_x", [] { return 0.0; });
  ThroughFile(frame, "paths.root", eFormat::kTree);
  EXPECT_EQ(
      ByRow(RDF::FromPaths("paths.root", &calculator_, {{"start_x", "x"}}),
            "code"),
      CodesOf(paths_));
}

TEST_F(FromPaths, KeepsTheCalculatorAsItWas) {
  ThroughFile(FrameOf(paths_), "paths.root", eFormat::kTree);
  RNode frame = RDF::FromPaths("paths.root", &calculator_);
  const std::vector<int> expected = CodesOf(paths_);
  calculator_.SetAllGeometryTolerances(0.0);
  ASSERT_NE(CodesOf(paths_), expected);
  EXPECT_EQ(ByRow(frame, "code"), expected);
}

TEST_F(FromPaths, HasNoRowsWithoutPaths) {
  paths_.clear();
  ThroughFile(FrameOf(paths_), "paths.root", eFormat::kNTuple);
  EXPECT_EQ(*RDF::FromPaths("paths.root", &calculator_).Count(), 0U);
}

TEST_F(FromPaths, RefusesBeforeTheLoopWhatIsNoFileOfLightPaths) {
  EXPECT_THROW(RDF::FromPaths("missing.root"), IO::BadInput);
  Put("text.root", "event,x,y,z\n");
  EXPECT_THROW(RDF::FromPaths("text.root"), IO::BadInput);
  ThroughFile(FrameOf(paths_).Redefine("av1_x", [] { return std::string(); }),
              "text.root", eFormat::kTree);
  EXPECT_THAT(TextOf<IO::BadInput>([] { RDF::FromPaths("text.root"); }),
              AllOf(HasSubstr("text.root"), HasSubstr("av1_x")));
  ThroughFile(FrameOf(paths_), "paths.root", eFormat::kTree);
  EXPECT_EQ(TextOf<std::invalid_argument>(
                [&] { RDF::FromPaths("paths.root", &calculator_, {}, "row"); }),
            "FromPaths: the column row exists already");
}

TEST_F(FromPaths, TellsTheTypeOfAColumnThatIsReadAsAnother) {
  ThroughFile(FrameOf(paths_), "paths.root", eFormat::kTree);
  EXPECT_THAT(TextOf<std::exception>(
                  [] { *RDF::FromPaths("paths.root").Sum<float>("start_x"); }),
              HasSubstr("paths.root: the column start_x is of type double"));
}

TEST_F(FromPaths, TellsInTheLoopWhatCannotBeRead) {
  for (const unsigned int threads : {1U, 2U}) {
    UseThreads(1);
    ThroughFile(FrameOf(paths_), "paths.root", eFormat::kNTuple);
    UseThreads(threads);
    RNode frame = RDF::FromPaths("paths.root", &calculator_);
    // Pages stand before the descriptions of the file, which stay whole.
    const auto size =
        static_cast<std::streamoff>(std::filesystem::file_size("paths.root"));
    std::fstream file("paths.root", std::ios::in | std::ios::out);
    file.seekp(size / 2);
    file << std::string(20'000, '\xff');
    file.close();
    EXPECT_THAT(
        TextOf<std::exception>([&] { *frame.Sum<int>("code"); }),
        AllOf(HasSubstr("paths.root: tree \"paths\""), HasSubstr("entry")));
  }
}

}  // namespace
}  // namespace ZARN::Testing

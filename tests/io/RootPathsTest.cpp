#include "io/RootPaths.hpp"

#include <Math/Vector3D.h>
#include <TROOT.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "io/Errors.hpp"
#include "io/LightPathNTuple.hpp"
#include "tests/io/RootPathFiles.hpp"
#include "tests/support/InFolder.hpp"

namespace ZARN::IO {
namespace {

using Testing::CoordinateOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using Testing::PathFile;

class RootPathsTest : public ::ZARN::Testing::InFolder {
 protected:
  /// Read in blocks and compare with what was written.
  template <class Coordinate>
  static void ExpectEqual(const PathFile& file, const std::string& input,
                          std::size_t blockSize,
                          const ColumnNames& names = {}) {
    RootPaths paths(input, names);
    ASSERT_EQ(paths.Entries(), file.entries);
    ASSERT_EQ(paths.NameColumns().size(), 2U);
    RootPaths::Block block;
    for (std::size_t first = 0; first < file.entries; first += blockSize) {
      const std::size_t count = std::min(blockSize, file.entries - first);
      paths.Read(first, count, block);
      ASSERT_EQ(block.paths.Size(), count);
      ASSERT_TRUE(block.paths.unknownTypes.empty());
      for (std::size_t i = 0; i < count; ++i) {
        const std::size_t entry = first + i;
        ASSERT_EQ(block.paths.types[i], static_cast<int>(entry % 8));
        ASSERT_EQ(block.names[0].integers[i],
                  static_cast<std::int64_t>(entry) - 2);
        ASSERT_EQ(block.names[1].texts[i], "pmt " + std::to_string(entry));
        for (std::size_t c = 0; c < 24; ++c) {
          ASSERT_EQ(block.paths.coordinates[c][i],
                    static_cast<double>(
                        static_cast<Coordinate>(CoordinateOf(entry, c))))
              << input << " entry " << entry << " column " << c;
        }
      }
    }
  }

  template <class Work>
  static std::string ErrorOf(const Work& work) {
    try {
      work();
    } catch (const BadInput& error) {
      return error.what();
    }
    return "nothing was thrown";
  }

  static std::string OpenError(const std::string& input,
                               const ColumnNames& names = {}) {
    return ErrorOf([&] { RootPaths paths(input, names); });
  }

  static std::string ReadError(const std::string& input) {
    return ErrorOf([&] {
      RootPaths paths(input);
      RootPaths::Block block;
      paths.Read(0, paths.Entries(), block);
    });
  }

  static void FlipByte(const std::string& name, std::size_t place) {
    std::string bytes = Text(name);
    bytes.at(place) = static_cast<char>(bytes[place] ^ 0x10);
    Put(name, bytes);
  }
};

TEST_F(RootPathsTest, ReadsEveryValueOfATree) {
  const PathFile file = {2500, 1000, 2000, ""};
  file.WriteTree<double>("double.root");
  file.WriteTree<float>("float.root");
  file.WriteTree<std::int32_t>("int.root");
  for (const std::size_t blockSize : {1U, 777U, 5000U}) {
    ExpectEqual<double>(file, "double.root", blockSize);
    ExpectEqual<float>(file, "float.root", blockSize);
    ExpectEqual<std::int32_t>(file, "int.root", blockSize);
  }
}

TEST_F(RootPathsTest, ReadsEveryValueOfAnNTuple) {
  const PathFile file = {2500, 1000, 2000, ""};
  file.WriteNTuple<double>("double.root");
  file.WriteNTuple<float>("float.root");
  file.WriteNTuple<std::int32_t>("int.root");
  for (const std::size_t blockSize : {1U, 777U, 5000U}) {
    ExpectEqual<double>(file, "double.root", blockSize);
    ExpectEqual<float>(file, "float.root", blockSize);
    ExpectEqual<std::int32_t>(file, "int.root", blockSize);
  }
}

TEST_F(RootPathsTest, ReadsAnyPlaceInAnyOrder) {
  const PathFile file = {3000, 1000, 2000, ""};
  file.WriteTree<double>("tree.root");
  file.WriteNTuple<double>("ntuple.root");
  for (const char* const input : {"tree.root", "ntuple.root"}) {
    RootPaths paths(input);
    EXPECT_THAT(paths.ClusterStarts(), ElementsAre(0, 1000, 2000)) << input;
    RootPaths::Block block;
    for (const std::size_t first : {2500U, 10U, 999U, 0U}) {
      paths.Read(first, 2, block);
      EXPECT_EQ(block.paths.coordinates[3][1], CoordinateOf(first + 1, 3));
      EXPECT_EQ(block.names[1].texts[0], "pmt " + std::to_string(first));
    }
  }
}

TEST_F(RootPathsTest, ReadsOneFileOnSeveralThreads) {
  ROOT::EnableThreadSafety();
  const PathFile file = {3000, 1000, 2000, ""};
  file.WriteTree<double>("tree.root");
  file.WriteNTuple<double>("ntuple.root");
  for (const char* const input : {"tree.root", "ntuple.root"}) {
    std::vector<std::thread> threads;
    std::array<std::size_t, 3> wrong = {};
    for (std::size_t k = 0; k < wrong.size(); ++k) {
      threads.emplace_back([k, input, &wrong] {
        RootPaths paths(input);
        RootPaths::Block block;
        for (std::size_t first = k * 1000; first < (k + 1) * 1000;
             first += 100) {
          paths.Read(first, 100, block);
          for (std::size_t i = 0; i < 100; ++i) {
            for (std::size_t c = 0; c < 24; ++c) {
              wrong[k] +=
                  block.paths.coordinates[c][i] != CoordinateOf(first + i, c);
            }
          }
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_THAT(wrong, ElementsAre(0, 0, 0)) << input;
  }
}

TEST_F(RootPathsTest, ReadsATreeWithoutEntries) {
  PathFile file;
  file.entries = 0;
  file.WriteTree<double>("tree.root");
  file.WriteNTuple<double>("ntuple.root");
  for (const char* const input : {"tree.root", "ntuple.root"}) {
    RootPaths paths(input);
    EXPECT_EQ(paths.Entries(), 0U);
    EXPECT_TRUE(paths.ClusterStarts().empty());
    RootPaths::Block block;
    paths.Read(0, 0, block);
    EXPECT_EQ(block.paths.Size(), 0U);
  }
}

TEST_F(RootPathsTest, ReadsOurOwnFiles) {
  DU::LightPath path;
  path.LightPathType = DU::kAVToWater;
  path.StartPos.SetXYZ(0.1, 2, 3);
  {
    LightPathNTuple file("paths.root", {});
    file.Begin({true, false}, 1);
    file.BlockAt(0).Fill("7", "p", path);
    file.BlockAt(0).Flush();
    file.BlockAt(0).Commit();
    file.Finish();
    file.Commit();
  }
  RootPaths paths("paths.root:paths");
  RootPaths::Block block;
  paths.Read(0, 1, block);
  EXPECT_EQ(block.paths.types.at(0), DU::kAVToWater);
  EXPECT_EQ(block.paths.Arrays().At(0).StartPos, path.StartPos);
  EXPECT_TRUE(std::isnan(block.paths.coordinates[23][0]));
  EXPECT_EQ(block.names[0].integers.at(0), 7);
  EXPECT_EQ(block.names[1].texts.at(0), "p");
}

TEST_F(RootPathsTest, UsesOtherNamesOfColumns) {
  PathFile file;
  file.prefix = "my_";
  file.WriteTree<double>("tree.root");
  file.WriteNTuple<double>("ntuple.root");
  std::map<std::string, std::string> others;
  for (const std::string& name : LightPathColumns()) {
    if (name != "type") others[name] = "my_" + name;
  }
  for (const char* const input : {"tree.root", "ntuple.root"}) {
    ExpectEqual<double>(file, input, 100, ColumnNames(others));
    auto wrong = others;
    wrong["end_y"] = "my_emd_y";
    wrong["event"] = "evnt";
    EXPECT_EQ(OpenError(input, ColumnNames(wrong)),
              std::string(input) +
                  ": tree \"paths\": missing columns: my_emd_y; did you mean "
                  "my_end_y?");
    wrong = others;
    wrong["event"] = "evnt";
    EXPECT_EQ(OpenError(input, ColumnNames(wrong)),
              std::string(input) +
                  ": tree \"paths\": missing columns: evnt; did you mean "
                  "event?");
  }
}

/// A tree with one branch of several leaves, one of an object, one of an array
/// of characters, and types as numbers.
void WriteNestedTree(const char* name) {
  TFile file(name, "RECREATE");
  TTree tree("paths", "");
  struct {
    double x, y, z;
    int event;
  } evt = {};
  ROOT::Math::XYZVector end;
  char pmt[20] = "";
  std::uint8_t type = 0;
  tree.Branch("evt", &evt, "x/D:y:z:event/I");
  tree.Branch("end", &end);
  tree.Branch("pmt", pmt, "pmt/C");
  tree.Branch("type", &type);
  double zero = 0.0;
  for (const std::string& column : LightPathColumns()) {
    if (column != "type") tree.Branch(column.c_str(), &zero);
  }
  for (int i = 0; i < 100; ++i) {
    evt = {0.1 * i, 0.2 * i, 0.3 * i, 1000 + i};
    end.SetCoordinates(-0.1 * i, -0.2 * i, -0.3 * i);
    std::snprintf(pmt, sizeof pmt, "p%d", i);
    type = static_cast<std::uint8_t>(i);
    tree.Fill();
  }
  file.Write();
}

TEST_F(RootPathsTest, ReadsLeavesAndMembersOfObjects) {
  WriteNestedTree("tree.root");
  RootPaths paths("tree.root", ColumnNames({{"start_x", "evt.x"},
                                            {"start_z", "evt.z"},
                                            {"event", "evt.event"},
                                            {"end_y", "end.fCoordinates.fY"}}));
  RootPaths::Block block;
  paths.Read(0, 100, block);
  for (int i = 0; i < 100; ++i) {
    const auto k = static_cast<std::size_t>(i);
    EXPECT_EQ(block.paths.coordinates[0][k], 0.1 * i);
    EXPECT_EQ(block.paths.coordinates[1][k], 0.0);
    EXPECT_EQ(block.paths.coordinates[2][k], 0.3 * i);
    // ROOT keeps the vector's members as Double32_t: floats on disk.
    EXPECT_EQ(block.paths.coordinates[4][k], static_cast<float>(-0.2 * i));
    EXPECT_EQ(block.names[0].integers[k], 1000 + i);
    EXPECT_EQ(block.names[1].texts[k], "p" + std::to_string(i));
    EXPECT_EQ(block.paths.types[k], std::min(i, 8));
  }
  ASSERT_EQ(block.paths.unknownTypes.size(), 92U);
  EXPECT_EQ(block.paths.unknownTypes[0].index, 8U);
  EXPECT_EQ(block.paths.unknownTypes[0].name, "8");
  EXPECT_EQ(block.paths.unknownTypes[91].name, "99");
}

TEST_F(RootPathsTest, ReadsFieldsOfObjects) {
  {
    auto model = ROOT::RNTupleModel::Create();
    const auto end = model->MakeField<ROOT::Math::XYZVector>("end");
    const auto type = model->MakeField<std::uint16_t>("type");
    for (const std::string& name : LightPathColumns()) {
      if (name != "type") model->MakeField<float>(name);
    }
    auto writer =
        ROOT::RNTupleWriter::Recreate(std::move(model), "p", "ntuple.root");
    for (int i = 0; i < 100; ++i) {
      end->SetCoordinates(-0.1 * i, -0.2 * i, -0.3 * i);
      *type = static_cast<std::uint16_t>(i);
      writer->Fill();
      if (i == 50) writer->CommitCluster();
    }
  }
  RootPaths paths("ntuple.root", ColumnNames({{"end_x", "end.fCoordinates.fX"},
                                              {"end_y", "end.fCoordinates.fY"},
                                              {"event", "type"}}));
  RootPaths::Block block;
  paths.Read(0, 100, block);
  for (int i = 0; i < 100; ++i) {
    const auto k = static_cast<std::size_t>(i);
    EXPECT_EQ(block.paths.coordinates[3][k], -0.1 * i);
    EXPECT_EQ(block.paths.coordinates[4][k], -0.2 * i);
    EXPECT_EQ(block.names[0].integers[k], i);
    EXPECT_EQ(block.paths.types[k], std::min(i, 8));
  }
}

TEST_F(RootPathsTest, RefusesColumnsOfOtherKindsByNameAndType) {
  {
    TFile file("tree.root", "RECREATE");
    TTree tree("paths", "");
    std::vector<double> many;
    double three[3] = {};
    bool yes = true;
    short n = 0;
    double one = 0.0;
    tree.Branch("many", &many);
    tree.Branch("three", three, "three[3]/D");
    tree.Branch("yes", &yes);
    tree.Branch("n", &n);
    for (const std::string& column : LightPathColumns()) {
      if (column != "type") tree.Branch(column.c_str(), &one);
    }
    file.Write();
  }
  const auto error = [](const std::string& ours, const std::string& name) {
    std::map<std::string, std::string> others = {{"type", "n"}};
    others[ours] = name;
    return OpenError("tree.root", ColumnNames(others));
  };
  const std::string column = "tree.root: tree \"paths\", column ";
  EXPECT_EQ(error("type", "yes"),
            column + "yes: holds Bool_t, not integers or text");
  EXPECT_EQ(error("type", "av1_x"),
            column + "av1_x: holds Double_t, not integers or text");
  EXPECT_EQ(error("start_x", "many"),
            column + "many: holds vector<double>, not numbers");
  EXPECT_EQ(error("start_x", "three"),
            column + "three: holds Double_t[3], not numbers");
  EXPECT_EQ(error("pmt", "av4_z"),
            column + "av4_z: holds Double_t, not integers or text");
}

TEST_F(RootPathsTest, LeavesOutAnEventThatIsNoName) {
  {
    TFile file("tree.root", "RECREATE");
    TTree tree("paths", "");
    int type = 1;
    double one = 0.0;
    tree.Branch("type", &type);
    tree.Branch("event", &one);
    for (const std::string& column : LightPathColumns()) {
      if (column != "type") tree.Branch(column.c_str(), &one);
    }
    file.Write();
  }
  EXPECT_TRUE(RootPaths("tree.root").NameColumns().empty());
}

TEST_F(RootPathsTest, RefusesFieldsOfOtherKindsByNameAndType) {
  {
    auto model = ROOT::RNTupleModel::Create();
    model->MakeField<std::vector<double>>("many");
    model->MakeField<int>("type");
    for (const std::string& name : LightPathColumns()) {
      if (name != "type") model->MakeField<double>(name);
    }
    ROOT::RNTupleWriter::Recreate(std::move(model), "p", "ntuple.root");
  }
  EXPECT_EQ(
      OpenError("ntuple.root", ColumnNames(std::map<std::string, std::string>{
                                   {"start_x", "many"}})),
      "ntuple.root: tree \"p\", column many: holds std::vector<double>, "
      "not numbers");
}

TEST_F(RootPathsTest, ChoosesTheTree) {
  PathFile file;
  {
    TFile root("two.root", "RECREATE");
    file.AddTree<double>("first");
    root.mkdir("folder")->cd();
    file.AddTree<double>("second");
  }
  ExpectEqual<double>(file, "two.root:first", 100);
  ExpectEqual<double>(file, "two.root:folder/second", 100);
  EXPECT_EQ(OpenError("two.root"),
            "two.root: which tree? Name one as in two.root:first; there are "
            "first, folder/second");
  EXPECT_EQ(OpenError("two.root:third"),
            "two.root: there is no tree \"third\"; there are first, "
            "folder/second");
  { const TFile root("none.root", "RECREATE"); }
  EXPECT_EQ(OpenError("none.root"),
            "none.root: there is no TTree and no RNTuple in the file");
  std::filesystem::rename("two.root", "a:first");
  std::filesystem::copy_file("a:first", "a:first:x.csv");
  ExpectEqual<double>(file, "a:first:first", 100);
  ExpectEqual<double>(file, "a:first:x.csv:first", 100);
}

TEST_F(RootPathsTest, ReadsFilesOfAnyName) {
  const PathFile file;
  for (const std::string name : {"a b#c.root", "a?b=c.root", "$HOME ~.root"}) {
    file.WriteTree<double>("plain.root");
    std::filesystem::rename("plain.root", name);
    ExpectEqual<double>(file, name, 100);
    file.WriteNTuple<double>("plain.root");
    std::filesystem::rename("plain.root", name);
    ExpectEqual<double>(file, name + ":paths", 100);
  }
}

TEST_F(RootPathsTest, RefusesAFileThatIsCutShort) {
  const PathFile file = {2500, 1000, 2000, ""};
  file.WriteTree<double>("tree.root");
  file.WriteNTuple<double>("ntuple.root");
  for (const std::string input : {"tree.root", "ntuple.root"}) {
    const std::string bytes = Text(input);
    for (const double share : {0.0001, 0.1, 0.5, 0.9, 0.9999}) {
      const auto size =
          static_cast<std::size_t>(share * static_cast<double>(bytes.size()));
      Put("cut.root", bytes.substr(0, size));
      EXPECT_EQ(OpenError("cut.root"),
                "cut.root: the ROOT file is damaged or cut short")
          << input << " " << size;
    }
  }
}

TEST_F(RootPathsTest, NoticesAFlippedBit) {
  const PathFile file = {2500, 1000, 2000, ""};
  file.WriteTree<double>("tree.root");
  file.WriteNTuple<double>("ntuple.root");
  for (const std::string input : {"tree.root", "ntuple.root"}) {
    const std::string bytes = Text(input);
    FlipByte(input, bytes.size() / 2);
    ::testing::internal::CaptureStderr();
    EXPECT_THAT(ReadError(input),
                HasSubstr(input + ": tree \"paths\", column "));
    // The compression library itself writes a line.
    EXPECT_THAT(::testing::internal::GetCapturedStderr(),
                Not(HasSubstr("Error in")));
  }
}

}  // namespace
}  // namespace ZARN::IO

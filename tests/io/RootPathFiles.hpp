#pragma once

#include <TFile.h>
#include <TTree.h>

#include <ROOT/RNTupleModel.hxx>
#include <ROOT/RNTupleWriter.hxx>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "io/LightPathColumns.hpp"

namespace ZARN::IO::Testing {

/// The value of a coordinate in the files of these tests; no double has fewer
/// than 53 bits of it.
inline double CoordinateOf(std::size_t entry, std::size_t column) {
  return (static_cast<double>(entry) + 0.1) * static_cast<double>(column + 1);
}

/// Files for tests: all types in turn, event numbers, and text for PMTs.
struct PathFile {
  std::size_t entries = 10;
  std::size_t entriesPerCluster = 1000;
  int basketSize = 32000;
  std::string prefix = "";  // of the names of coordinates

  /// A TTree called "paths" with coordinates of this type, and the type of the
  /// path as text.
  template <class Coordinate>
  void WriteTree(const std::string& name) const {
    TFile file(name.c_str(), "RECREATE");  // with zlib
    AddTree<Coordinate>("paths");
    file.Write();
  }

  /// The same in the file that is open.
  template <class Coordinate>
  void AddTree(const char* tree) const {
    TTree paths(tree, "");
    paths.SetAutoFlush(static_cast<Long64_t>(entriesPerCluster));
    std::string type;
    std::string pmt;
    std::int64_t event = 0;
    std::array<Coordinate, 24> values = {};
    paths.Branch("type", &type, basketSize);
    paths.Branch("event", &event, basketSize);
    paths.Branch("pmt", &pmt, basketSize);
    const std::vector<std::string> columns = LightPathColumns();
    for (std::size_t c = 0; c < values.size(); ++c) {
      paths.Branch((prefix + columns[c + 1]).c_str(), &values[c], basketSize);
    }
    for (std::size_t i = 0; i < entries; ++i) {
      Set(i, type, event, pmt, values);
      paths.Fill();
    }
    paths.Write();
  }

  /// The same as an RNTuple.
  template <class Coordinate>
  void WriteNTuple(const std::string& name) const {
    auto model = ROOT::RNTupleModel::Create();
    const auto type = model->MakeField<std::string>("type");
    const auto event = model->MakeField<std::int64_t>("event");
    const auto pmt = model->MakeField<std::string>("pmt");
    std::vector<std::shared_ptr<Coordinate>> fields;
    const std::vector<std::string> columns = LightPathColumns();
    for (std::size_t c = 1; c < columns.size(); ++c) {
      fields.push_back(model->MakeField<Coordinate>(prefix + columns[c]));
    }
    auto writer =
        ROOT::RNTupleWriter::Recreate(std::move(model), "paths", name);
    for (std::size_t i = 0; i < entries; ++i) {
      std::array<Coordinate, 24> values = {};
      Set(i, *type, *event, *pmt, values);
      for (std::size_t c = 0; c < values.size(); ++c) *fields[c] = values[c];
      writer->Fill();
      if ((i + 1) % entriesPerCluster == 0) writer->CommitCluster();
    }
  }

 private:
  template <class Coordinate>
  static void Set(std::size_t i, std::string& type, std::int64_t& event,
                  std::string& pmt, std::array<Coordinate, 24>& values) {
    type = DU::kLightPathTypeNames[i % DU::kLightPathTypeNames.size()];
    event = static_cast<std::int64_t>(i) - 2;
    pmt = "pmt " + std::to_string(i);
    for (std::size_t c = 0; c < values.size(); ++c) {
      values[c] = static_cast<Coordinate>(CoordinateOf(i, c));
    }
  }
};

}  // namespace ZARN::IO::Testing

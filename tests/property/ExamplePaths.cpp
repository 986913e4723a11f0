#include "tests/property/ExamplePaths.hpp"

#include <array>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace ZARN::Testing {

namespace {

/// The fields of a row; the file has no quoted fields.
std::vector<std::string> Split(const std::string& row) {
  std::vector<std::string> fields;
  std::istringstream in(row + ",");
  for (std::string field; std::getline(in, field, ',');) {
    fields.push_back(field);
  }
  return fields;
}

DU::eLightPathType TypeOfName(const std::string& name) {
  for (std::size_t type = 0; type < DU::kLightPathTypeNames.size(); ++type) {
    if (name == DU::kLightPathTypeNames[type]) {
      return static_cast<DU::eLightPathType>(type);
    }
  }
  return DU::kNumberOfLightPathTypes;
}

DU::LightPath PathOf(const std::vector<std::string>& fields) {
  constexpr std::array kColumns = {
      &DU::LightPath::StartPos,         &DU::LightPath::EndPos,
      &DU::LightPath::InitialDirection, &DU::LightPath::FinalDirection,
      &DU::LightPath::AVPoint1,         &DU::LightPath::AVPoint2,
      &DU::LightPath::AVPoint3,         &DU::LightPath::AVPoint4};
  DU::LightPath path;
  path.LightPathType = TypeOfName(fields.at(0));
  std::size_t column = 1;
  for (const auto vector : kColumns) {
    for (int i = 0; i < 3; ++i) {
      // An empty field is a point that the type does not use.
      (path.*vector)(i) = std::strtod(fields.at(column++).c_str(), nullptr);
    }
  }
  return path;
}

}  // namespace

std::vector<DU::LightPath> ExamplePaths(std::size_t count) {
  std::ifstream file(ZARN_DATA_DIR "/example-paths.csv");
  std::string row;
  std::getline(file, row);  // the header
  std::vector<DU::LightPath> paths;
  while (paths.size() < count && std::getline(file, row)) {
    paths.push_back(PathOf(Split(row)));
  }
  if (paths.size() < count) throw std::runtime_error("too few example paths");
  return paths;
}

}  // namespace ZARN::Testing

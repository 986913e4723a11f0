#include "app/LightPathReader.hpp"

#include <algorithm>

#include "app/Numbers.hpp"
#include "app/Quoted.hpp"

namespace ZARN::App {
namespace {

using DU::LightPath;

/// The type under which paths with an unknown name go.
constexpr auto kOtherType =
    static_cast<DU::eLightPathType>(DU::kNumberOfLightPathTypes);

struct NamedVector {
  const char* name;
  TVector3 LightPath::*vector;
};

constexpr std::array<NamedVector, 8> kVectors = {
    {{"start", &LightPath::StartPos},
     {"end", &LightPath::EndPos},
     {"initial", &LightPath::InitialDirection},
     {"final", &LightPath::FinalDirection},
     {"av1", &LightPath::AVPoint1},
     {"av2", &LightPath::AVPoint2},
     {"av3", &LightPath::AVPoint3},
     {"av4", &LightPath::AVPoint4}}};

}  // namespace

LightPathReader::LightPathReader(InputFile& input) : table_(input) {
  std::string missing;
  const auto find = [&](const std::string& name) {
    const auto column = table_.FindColumn(name);
    if (!column.has_value()) missing += (missing.empty() ? "" : ", ") + name;
    return column.value_or(0);
  };
  typeColumn_ = find("type");
  for (std::size_t i = 0; i < kVectors.size(); ++i) {
    const std::string name = kVectors[i].name;
    vectors_[i].vector = kVectors[i].vector;
    vectors_[i].columns = {find(name + "_x"), find(name + "_y"),
                           find(name + "_z")};
  }
  if (!missing.empty()) table_.FailHeader("missing columns: " + missing);
}

bool LightPathReader::Next(DU::LightPathCalculator& lightPath) {
  if (!table_.NextRow()) return false;

  LightPath path;
  for (const VectorColumns& v : vectors_) {
    path.*v.vector =
        TVector3(Coordinate(v.columns[0]), Coordinate(v.columns[1]),
                 Coordinate(v.columns[2]));
  }

  const std::string_view name = table_.Cell(typeColumn_);
  const auto& names = DU::kLightPathTypeNames;
  const auto known = std::find(names.begin(), names.end(), name);
  if (known != names.end()) {
    path.LightPathType = static_cast<DU::eLightPathType>(known - names.begin());
  } else {
    path.LightPathType = kOtherType;
    lightPath.LightPathTypeNames()[kOtherType] = name;
    if (unknownTypes_ == 0) firstUnknownType_ = name;
    ++unknownTypes_;
  }
  lightPath.SetLightPath(path);
  return true;
}

double LightPathReader::Coordinate(std::size_t column) const {
  const std::string_view cell = table_.Cell(column);
  if (cell.empty()) return 0.0;
  const NumberOrReason number = ReadNumber(cell);
  if (number.reason != nullptr) {
    table_.Fail(column, Quoted(cell) + " " + number.reason);
  }
  return number.value;
}

}  // namespace ZARN::App

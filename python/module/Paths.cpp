#include "python/module/Paths.hpp"

#include <array>
#include <bitset>
#include <string>

#include "du/hardware/WaterSegments.hpp"
#include "io/LightPathColumns.hpp"

namespace ZARN::Python {

namespace nb = nanobind;
using DU::LightPathArrays;
using DU::VectorArrays;

namespace {

/// The vectors of light paths, in the order of IO::kLightPathVectors.
constexpr std::array<VectorArrays LightPathArrays::*, 8> kVectors = {
    &LightPathArrays::StartPos,         &LightPathArrays::EndPos,
    &LightPathArrays::InitialDirection, &LightPathArrays::FinalDirection,
    &LightPathArrays::AVPoint1,         &LightPathArrays::AVPoint2,
    &LightPathArrays::AVPoint3,         &LightPathArrays::AVPoint4};
static_assert(kVectors.size() == IO::kLightPathVectors.size());

constexpr std::array<DU::Column<double> VectorArrays::*, 3> kAxes = {
    &VectorArrays::x, &VectorArrays::y, &VectorArrays::z};

std::string NameOfColumn(std::size_t vector, std::size_t axis) {
  return std::string(IO::kLightPathVectors[vector].name) + '_' + "xyz"[axis];
}

/// Whether the verdict on paths of this type depends on a vector.
bool IsUsed(std::size_t type, VectorArrays LightPathArrays::*vector) {
  const auto& shape = DU::kShapesIn<LightPathArrays, VectorArrays>[type];
  if (vector == shape.firstPoint || vector == shape.secondPoint) return true;
  switch (shape.kind) {
    case DU::ePathKind::kOneCrossing:
      return vector == &LightPathArrays::FinalDirection;
    case DU::ePathKind::kTwoCrossings:
      return vector == &LightPathArrays::InitialDirection ||
             vector == &LightPathArrays::FinalDirection;
    case DU::ePathKind::kWater:
      return vector == &LightPathArrays::InitialDirection;
    case DU::ePathKind::kUninitialised:
    case DU::ePathKind::kMisspeltUninitialised:
    case DU::ePathKind::kUnknown:
      break;
  }
  return false;
}

}  // namespace

Paths::Paths(const nb::object& types, const nb::list& columns)
    : types_(types.ptr(), "type", 'i') {
  arrays_.LightPathType = {types_.First(), types_.Stride()};
  for (std::size_t i = 0; i < kVectors.size() * kAxes.size(); ++i) {
    const std::size_t vector = i / kAxes.size();
    const std::size_t axis = i % kAxes.size();
    if (columns[i].is_none()) continue;
    const Buffer& column = columns_.emplace_back(
        columns[i].ptr(), NameOfColumn(vector, axis), 'd');
    if (column.Size() != Count()) {
      throw nb::value_error((NameOfColumn(vector, axis) + " has " +
                             std::to_string(column.Size()) +
                             " rows, but type has " + std::to_string(Count()))
                                .c_str());
    }
    arrays_.*kVectors[vector].*kAxes[axis] = {column.First(), column.Stride()};
  }
  RequireColumns();
  // What is missing is not used, unless another thread changes the types.
  static constexpr double kZero = 0.0;
  for (const auto vector : kVectors) {
    for (const auto axis : kAxes) {
      DU::Column<double>& column = arrays_.*vector.*axis;
      if (column.IsNull()) column = {&kZero, 0};
    }
  }
}

void Paths::RequireColumns() const {
  std::bitset<DU::kNumberOfLightPathTypes> found;
  for (std::size_t i = 0; i < Count(); ++i) {
    const int type = arrays_.LightPathType[i];
    if (DU::IsKnownType(type)) {
      found.set(static_cast<std::size_t>(type));
    }
  }
  for (std::size_t type = 0; type < found.size(); ++type) {
    if (!found.test(type)) continue;
    for (std::size_t vector = 0; vector < kVectors.size(); ++vector) {
      if (!IsUsed(type, kVectors[vector])) continue;
      for (std::size_t axis = 0; axis < kAxes.size(); ++axis) {
        if ((arrays_.*kVectors[vector].*kAxes[axis]).IsNull()) {
          throw nb::value_error(("the column " + NameOfColumn(vector, axis) +
                                 " is missing; paths of type \"" +
                                 DU::kLightPathTypeNames[type] + "\" use it")
                                    .c_str());
        }
      }
    }
  }
}

}  // namespace ZARN::Python

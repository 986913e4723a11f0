#pragma once

#include <array>
#include <map>
#include <string>

#include "TVector3.h"
#include "du/hardware/WaterSegments.hpp"
#include "lightpath/LightPath.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "tests/du/PrintVectors.hpp"

namespace ZARN::Testing {

/// A type that the system does not know. It has no name until the test sets
/// one.
inline constexpr auto kUnnamedType = static_cast<DU::eLightPathType>(99);

/// A path that leaves the wall of the vessel at @p point.
inline DU::LightPath OneCrossing(const TVector3& point,
                                 const TVector3& direction = {1, 0, 0}) {
  DU::LightPath path;
  path.LightPathType = DU::kAVToWater;
  path.AVPoint1 = point;
  path.FinalDirection = direction;
  return path;
}

/// A path from the water that enters the vessel at @p entry and leaves at
/// @p exit.
inline DU::LightPath TwoCrossings(const TVector3& entry, const TVector3& exit) {
  DU::LightPath path;
  path.LightPathType = DU::kWaterThroughAV;
  path.AVPoint1 = entry;
  path.AVPoint2 = exit;
  return path;
}

/// A path wholly in water.
inline DU::LightPath InWater(const TVector3& start, const TVector3& end,
                             const TVector3& direction) {
  DU::LightPath path;
  path.LightPathType = DU::kWater;
  path.StartPos = start;
  path.EndPos = end;
  path.InitialDirection = direction;
  return path;
}

/// A path of a type, with all its positions at one point.
inline DU::LightPath AllAt(DU::eLightPathType type, const TVector3& point) {
  DU::LightPath path;
  path.LightPathType = type;
  path.StartPos = path.EndPos = point;
  path.AVPoint1 = path.AVPoint2 = path.AVPoint3 = path.AVPoint4 = point;
  return path;
}

inline DU::WaterSegments SegmentsOf(const DU::LightPath& path) {
  return DU::SegmentsOf(path, DU::ShapeOfType(path.LightPathType));
}

/// The segments of a path whose type has an unknown name.
inline DU::WaterSegments UnknownSegments() {
  return SegmentsOf(AllAt(kUnnamedType, {}));
}

/// The segments of a path named "LightPath Uninitialised".
inline DU::WaterSegments MisspeltSegments() {
  return DU::SegmentsOf({}, DU::ShapeOfName("LightPath Uninitialised"));
}

inline DU::LightPathCalculator CalculatorOf(const DU::LightPath& path) {
  DU::LightPathCalculator calculator;
  calculator.SetLightPath(path);
  return calculator;
}

/// A path whose type has the given name.
inline DU::LightPathCalculator NamedPath(const std::string& name,
                                         DU::LightPath path = {}) {
  path.LightPathType = kUnnamedType;
  DU::LightPathCalculator calculator = CalculatorOf(path);
  calculator.LightPathTypeNames()[kUnnamedType] = name;
  return calculator;
}

/// For every type of path: which of its four AV points block it, each tried
/// alone at @p blocked while the others are at @p free. The ends of the path
/// are always at @p blocked.
template <class IsBlocked>
std::map<DU::eLightPathType, std::string> DecidingPoints(
    const TVector3& blocked, const TVector3& free, const IsBlocked& isBlocked) {
  constexpr std::array kPoints = {
      &DU::LightPath::AVPoint1, &DU::LightPath::AVPoint2,
      &DU::LightPath::AVPoint3, &DU::LightPath::AVPoint4};
  std::map<DU::eLightPathType, std::string> deciding;
  for (int type = 0; type < DU::kNumberOfLightPathTypes; ++type) {
    const auto pathType = static_cast<DU::eLightPathType>(type);
    std::string& digits = deciding[pathType];
    char digit = '1';
    for (const auto point : kPoints) {
      DU::LightPath path = AllAt(pathType, free);
      path.StartPos = path.EndPos = blocked;
      path.*point = blocked;
      if (isBlocked(SegmentsOf(path))) digits += digit;
      ++digit;
    }
  }
  return deciding;
}

/// The result of DecidingPoints for a test that checks every crossing.
inline std::map<DU::eLightPathType, std::string> EveryCrossing() {
  return {{DU::kUninitialised, ""},
          {DU::kInnerAVToWater, "2"},
          {DU::kAVThroughInnerAVToWater, "3"},
          {DU::kAVToWater, "1"},
          {DU::kWaterThroughInnerAV, "14"},
          {DU::kWaterThroughAV, "12"},
          {DU::kWater, ""},
          {DU::kWaterReflection, "1"}};
}

}  // namespace ZARN::Testing

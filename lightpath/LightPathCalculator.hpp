#pragma once

#include <map>
#include <string>

#include "TVector3.h"
#include "lightpath/LightPath.hpp"
#include "lightpath/LightPathType.hpp"

namespace ZARN::DU {

/// Holds one light path and the names of the path types.
///
/// Every result can be set, so that a path computed elsewhere can be handed to
/// the ShadowingCalculator. Lengths in mm; see LightPath for the meaning of the
/// points.
class LightPathCalculator {
 public:
  /// Names of path types, by type.
  using TypeNames = std::map<eLightPathType, std::string>;

  /// An uninitialised path, and the names of all types of this system.
  LightPathCalculator();

  const TVector3& GetFinalDirection() const { return path_.FinalDirection; }
  const TVector3& GetInitialDirection() const { return path_.InitialDirection; }
  const TVector3& GetStartPos() const { return path_.StartPos; }
  const TVector3& GetEndPos() const { return path_.EndPos; }
  const TVector3& GetAVPoint1() const { return path_.AVPoint1; }
  const TVector3& GetAVPoint2() const { return path_.AVPoint2; }
  const TVector3& GetAVPoint3() const { return path_.AVPoint3; }
  const TVector3& GetAVPoint4() const { return path_.AVPoint4; }
  eLightPathType GetLightPathType() const { return path_.LightPathType; }

  void SetFinalDirection(const TVector3& v) { path_.FinalDirection = v; }
  void SetInitialDirection(const TVector3& v) { path_.InitialDirection = v; }
  void SetStartPos(const TVector3& v) { path_.StartPos = v; }
  void SetEndPos(const TVector3& v) { path_.EndPos = v; }
  void SetAVPoint1(const TVector3& v) { path_.AVPoint1 = v; }
  void SetAVPoint2(const TVector3& v) { path_.AVPoint2 = v; }
  void SetAVPoint3(const TVector3& v) { path_.AVPoint3 = v; }
  void SetAVPoint4(const TVector3& v) { path_.AVPoint4 = v; }
  void SetLightPathType(eLightPathType type) { path_.LightPathType = type; }

  /// The whole path at once.
  const LightPath& GetLightPath() const { return path_; }
  void SetLightPath(const LightPath& path) { path_ = path; }

  /// The names, open to change: looking up a type that has none adds an empty
  /// name for it.
  TypeNames& LightPathTypeNames() { return typeNames_; }
  const TypeNames& LightPathTypeNames() const { return typeNames_; }

 private:
  LightPath path_;
  TypeNames typeNames_;
};

}  // namespace ZARN::DU

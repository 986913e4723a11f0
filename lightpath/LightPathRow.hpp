#pragma once

#include <array>

namespace ZARN::DU {

/// Three parallel arrays of coordinates; a null array is not asked for.
struct VectorColumns {
  double* x = nullptr;
  double* y = nullptr;
  double* z = nullptr;
};

/// Where LightPathCalculator::CalcRow writes the light paths from one event to
/// many PMTs: element i of every array belongs to PMT i. A null array is not
/// asked for, and costs nothing. The members are the results of CalcByPosition.
struct LightPathRow {
  int* LightPathType = nullptr;  ///< values of eLightPathType
  VectorColumns FinalDirection;
  VectorColumns InitialDirection;
  VectorColumns AVPoint1;
  VectorColumns AVPoint2;
  VectorColumns AVPoint3;
  VectorColumns AVPoint4;
  std::array<double*, 3> Lengths = {};  ///< mm, by eMedium
  double* TimeOfFlight = nullptr;       ///< ns
  double* IncidenceAngle = nullptr;     ///< rad
  /// By how much any of these numbers can differ from that of CalcByPosition
  /// and the getters, in its own unit (the type never does); 0 if it is that
  /// number.
  double* Bound = nullptr;
};

}  // namespace ZARN::DU

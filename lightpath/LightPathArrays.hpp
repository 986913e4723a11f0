#pragma once

#include <cstddef>

#include "lightpath/LightPath.hpp"

namespace ZARN::DU {

/// Three parallel arrays of coordinates; null if no path of the batch uses
/// them.
struct VectorArrays {
  const double* x = nullptr;
  const double* y = nullptr;
  const double* z = nullptr;

  TVector3 At(std::size_t i) const {
    return x == nullptr ? TVector3() : TVector3(x[i], y[i], z[i]);
  }
};

/// Light paths as columns, as in data frames and NumPy: element i of every
/// array belongs to path i. Members are as in LightPath.
struct LightPathArrays {
  const int* LightPathType = nullptr;  ///< values of eLightPathType
  VectorArrays FinalDirection;
  VectorArrays InitialDirection;
  VectorArrays StartPos;
  VectorArrays EndPos;
  VectorArrays AVPoint1;
  VectorArrays AVPoint2;
  VectorArrays AVPoint3;
  VectorArrays AVPoint4;

  /// Path @p i as a record.
  LightPath At(std::size_t i) const {
    return {FinalDirection.At(i),
            InitialDirection.At(i),
            StartPos.At(i),
            EndPos.At(i),
            AVPoint1.At(i),
            AVPoint2.At(i),
            AVPoint3.At(i),
            AVPoint4.At(i),
            static_cast<eLightPathType>(LightPathType[i])};
  }
};

}  // namespace ZARN::DU

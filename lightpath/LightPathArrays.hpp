#pragma once

#include <cstddef>

#include "lightpath/Column.hpp"
#include "lightpath/LightPath.hpp"

namespace ZARN::DU {

/// Three parallel columns of coordinates; null if no path of the batch uses
/// them.
struct VectorArrays {
  Column<double> x;
  Column<double> y;
  Column<double> z;

  bool IsDense() const { return x.IsDense() && y.IsDense() && z.IsDense(); }

  VectorArrays From(std::size_t i) const {
    return {x.From(i), y.From(i), z.From(i)};
  }

  TVector3 At(std::size_t i) const {
    return x.IsNull() ? TVector3() : TVector3(x[i], y[i], z[i]);
  }
};

/// Light paths as columns, as in data frames and NumPy: element i of every
/// column belongs to path i. Members are as in LightPath. Batches are fastest
/// if the columns are dense.
struct LightPathArrays {
  Column<int> LightPathType;  ///< values of eLightPathType
  VectorArrays FinalDirection;
  VectorArrays InitialDirection;
  VectorArrays StartPos;
  VectorArrays EndPos;
  VectorArrays AVPoint1;
  VectorArrays AVPoint2;
  VectorArrays AVPoint3;
  VectorArrays AVPoint4;

  /// The paths from @p i on.
  LightPathArrays From(std::size_t i) const {
    return {
        LightPathType.From(i), FinalDirection.From(i), InitialDirection.From(i),
        StartPos.From(i),      EndPos.From(i),         AVPoint1.From(i),
        AVPoint2.From(i),      AVPoint3.From(i),       AVPoint4.From(i)};
  }

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

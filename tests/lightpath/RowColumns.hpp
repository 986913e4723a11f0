#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "lightpath/LightPathCalculator.hpp"

namespace ZARN::Testing {

/// A row of light paths with room for all its numbers. Until they are set, they
/// have values that no path has, so that a missing one is noticed.
class RowColumns {
 public:
  explicit RowColumns(std::size_t count)
      : types_(count, -1), bounds_(count, kUnset) {
    for (auto& column : numbers_) column.assign(count, kUnset);
    row_.LightPathType = types_.data();
    std::size_t next = 0;
    const auto add = [&] { return numbers_[next++].data(); };
    for (DU::VectorColumns* vector :
         {&row_.FinalDirection, &row_.InitialDirection, &row_.AVPoint1,
          &row_.AVPoint2, &row_.AVPoint3, &row_.AVPoint4}) {
      vector->x = add();
      vector->y = add();
      vector->z = add();
    }
    for (double*& length : row_.Lengths) length = add();
    row_.TimeOfFlight = add();
    row_.IncidenceAngle = add();
    row_.Bound = bounds_.data();
  }
  RowColumns(const RowColumns&) = delete;  // the row points to the columns
  RowColumns& operator=(const RowColumns&) = delete;

  const DU::LightPathRow& Row() const { return row_; }

  const std::vector<int>& Types() const { return types_; }
  /// All numbers but the bound, column by column.
  const auto& Numbers() const { return numbers_; }

 private:
  static constexpr double kUnset = -1e99;

  std::vector<int> types_;
  std::array<std::vector<double>, 23> numbers_;
  std::vector<double> bounds_;
  DU::LightPathRow row_;
};

/// Compute the paths of a row one by one. All columns but the bound are
/// required.
inline void CalcOneByOne(DU::LightPathCalculator& calculator,
                         const TVector3& eventPos, const DU::PMTArray& pmts,
                         const DU::LightPathRow& row) {
  const auto set = [](const DU::VectorColumns& columns, std::size_t i,
                      const TVector3& value) {
    columns.x[i] = value.X();
    columns.y[i] = value.Y();
    columns.z[i] = value.Z();
  };
  for (std::size_t i = 0; i < pmts.Count(); ++i) {
    calculator.CalcByPosition(eventPos, pmts.At(i));
    row.LightPathType[i] = calculator.GetLightPathType();
    set(row.FinalDirection, i, calculator.GetFinalDirection());
    set(row.InitialDirection, i, calculator.GetInitialDirection());
    set(row.AVPoint1, i, calculator.GetAVPoint1());
    set(row.AVPoint2, i, calculator.GetAVPoint2());
    set(row.AVPoint3, i, calculator.GetAVPoint3());
    set(row.AVPoint4, i, calculator.GetAVPoint4());
    row.Lengths[0][i] = calculator.GetLength(DU::eMedium::kInnerAV);
    row.Lengths[1][i] = calculator.GetLength(DU::eMedium::kAcrylic);
    row.Lengths[2][i] = calculator.GetLength(DU::eMedium::kWater);
    row.TimeOfFlight[i] = calculator.GetTimeOfFlight();
    row.IncidenceAngle[i] = calculator.GetIncidenceAngle();
  }
}

}  // namespace ZARN::Testing

#pragma once

#include <nanobind/nanobind.h>
#include <nanobind/ndarray.h>

#include <cstddef>
#include <vector>

#include "TVector3.h"

namespace ZARN::Python {

/// A dense array that is read in place: a converted copy is never made.
template <class Number, std::size_t kDimensions>
using DenseIn = nanobind::ndarray<const Number, nanobind::ndim<kDimensions>,
                                  nanobind::c_contig, nanobind::device::cpu>;
/// One that is written.
template <class Number, std::size_t kDimensions>
using DenseOut = nanobind::ndarray<Number, nanobind::ndim<kDimensions>,
                                   nanobind::c_contig, nanobind::device::cpu>;

/// Positions, one in each row of an array with three columns.
inline std::vector<TVector3> VectorsIn(const DenseIn<double, 2>& rows) {
  std::vector<TVector3> vectors;
  vectors.reserve(rows.shape(0));
  for (std::size_t i = 0; i < rows.shape(0); ++i) {
    const double* const row = rows.data() + 3 * i;
    vectors.emplace_back(row[0], row[1], row[2]);
  }
  return vectors;
}

}  // namespace ZARN::Python

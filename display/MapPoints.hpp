#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "TVector3.h"
#include "display/Mollweide.hpp"

namespace ZARN::Display {

/// A list of positions or directions that are made piece by piece, so that
/// several threads share the work and no more than the pieces at hand need be
/// in memory. (ScanMap makes the whole list if it counts at tolerances.)
/// Neighbours in the list are mostly neighbours in space.
struct MapPoints {
  std::size_t count = 0;
  /// Those with the numbers @p begin to before @p end. Thread-safe.
  std::function<std::vector<TVector3>(std::size_t begin, std::size_t end)> make;
};

/// The points of a vector, which must outlive the list.
MapPoints PointsOf(const std::vector<TVector3>& points);

/// Unit vectors that are spread evenly over all directions, from top to bottom.
///
/// Source: A. Gonzalez, Measurement of areas on a sphere using Fibonacci and
/// latitude-longitude lattices, Mathematical Geosciences 42 (2010), 49.
MapPoints EvenDirections(std::size_t count);

/// The numbers of the pixels of a map that stand for a direction, row by row;
/// that of a pixel is row * columns + column.
std::vector<std::uint32_t> JudgedPixels(const MapGrid& grid);

/// The directions of some pixels of a map, unit vectors.
///
/// @param pixels  numbers as those of JudgedPixels; must outlive the list
MapPoints DirectionsOf(const MapGrid& grid,
                       const std::vector<std::uint32_t>& pixels);

/// Where the rays from a point in these directions meet a sphere around the
/// origin.
///
/// @param directions  unit vectors
/// @param from        inside the sphere, mm
/// @param radius      of the sphere, mm
MapPoints EndsOnSphere(MapPoints directions, const TVector3& from,
                       double radius);

}  // namespace ZARN::Display

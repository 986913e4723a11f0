#pragma once

#include <cmath>

#include "TVector3.h"

namespace ZARN::DU {

/// A point or vector without the bookkeeping of a TVector3, for preparations
/// that make millions of them. Squares are added in the order of TVector3, on
/// which PointBlocks relies. The formulas do not use it.
struct Point {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
};

inline Point operator+(const Point& a, const Point& b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}

inline Point operator-(const Point& a, const Point& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}

inline double Dot(const Point& a, const Point& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

inline double Squared(const Point& p) {
  return p.x * p.x + p.y * p.y + p.z * p.z;
}

inline Point Scaled(const Point& p, double factor) {
  return {p.x * factor, p.y * factor, p.z * factor};
}

inline Point Unit(const Point& p) {
  return Scaled(p, 1.0 / std::sqrt(Squared(p)));
}

inline double SquaredDistance(const Point& a, const Point& b) {
  return Squared(a - b);
}

inline TVector3 AsTVector3(const Point& p) { return {p.x, p.y, p.z}; }

}  // namespace ZARN::DU

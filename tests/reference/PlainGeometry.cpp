#include <cmath>

#include "tests/reference/PlainConstants.hpp"
#include "tests/reference/PlainShadowingCalculator.hpp"

namespace ZARN::Reference {

TVector3 PlainShadowingCalculator::VectorToSphereEdge(const TVector3& startPos,
                                                      const TVector3& direction,
                                                      double radius,
                                                      bool nearSolution) {
  const double m = startPos.Mag();
  const double c = std::cos(startPos.Angle(direction));
  const double b = (m + m) * c;
  const double x = startPos.X();
  const double y = startPos.Y();
  const double z = startPos.Z();
  const double cc = (x * x + y * y + z * z) - radius * radius;
  const double d = b * b - 4.0 * cc;
  double t = 0.0;
  if (d < 0 || std::isnan(d)) {
    debug_ << "ShadowingCalculator::VectorToSphereEdge: Erroneous calculation "
              "- negative discriminant"
           << std::endl;
    debug_ << "Discriminant Value: " << d << std::endl;
    debug_ << "ACoeff: " << 1.0 << ", BCoeff: " << b << ", CCoeff: " << cc
           << std::endl;
    debug_ << "StartPos.Mag(): " << m << " and R: " << radius << std::endl;
    t = 0.0;
  } else {
    const double s = std::sqrt(d);
    const double farT = (s - b) * 0.5;
    const double nearT = (-b - s) * 0.5;
    if (!nearSolution && farT > 0) {
      t = farT;
    } else {
      t = nearT;
    }
  }
  return startPos + t * direction;
}

TVector3 PlainShadowingCalculator::VectorToCylinderEdge(
    const TVector3& startPos, const TVector3& direction, const TVector3& shift,
    double radius) {
  TVector3 p = startPos;
  p.SetZ(0);
  TVector3 u = direction;
  u.SetZ(0);
  const TVector3 e = VectorToSphereEdge(p, u, radius, false);
  const double alpha = e.Unit().Angle(direction);
  double dz = 0.0;
  if (alpha == kHalfPi) {
    dz = 0.0;
  } else {
    dz = (e - p).Mag() * std::tan(alpha);
  }
  TVector3 result = e + shift;
  result.SetZ(result.Z() + dz);
  return result;
}

double PlainShadowingCalculator::ClosestAngle(const TVector3& position,
                                              double radius) {
  const double x = Divide(radius, position.Mag());
  if (x < -1.0) {
    return -kHalfPi;
  } else if (x > 1.0) {
    return kHalfPi;
  } else {
    return kHalfPi - std::acos(x);
  }
}

}  // namespace ZARN::Reference

#include "du/geometry/Primitives.hpp"

#include <cmath>

#include "du/geometry/Constants.hpp"
#include "du/geometry/IeeeQuotient.hpp"
#include "log/Log.hpp"

namespace ZARN::DU {

TVector3 VectorToSphereEdge(const TVector3& startPos, const TVector3& direction,
                            double radius, bool nearSolution,
                            eDiagnostics diagnostics) {
  const double m = startPos.Mag();
  const double c = std::cos(startPos.Angle(direction));
  const double bCoeff = (m + m) * c;
  const double cCoeff =
      (startPos.X() * startPos.X() + startPos.Y() * startPos.Y() +
       startPos.Z() * startPos.Z()) -
      radius * radius;
  const double discriminant = bCoeff * bCoeff - 4.0 * cCoeff;

  double t = 0.0;
  if (discriminant >= 0.0) {
    const double root = std::sqrt(discriminant);
    const double farT = (root - bCoeff) * 0.5;
    const double nearT = (-bCoeff - root) * 0.5;
    t = !nearSolution && farT > 0.0 ? farT : nearT;
  } else if (diagnostics == eDiagnostics::kWritten) {  // also NaN
    debug << "ShadowingCalculator::VectorToSphereEdge: Erroneous calculation - "
             "negative discriminant"
          << endl;
    debug << "Discriminant Value: " << discriminant << endl;
    debug << "ACoeff: " << 1.0 << ", BCoeff: " << bCoeff
          << ", CCoeff: " << cCoeff << endl;
    debug << "StartPos.Mag(): " << m << " and R: " << radius << endl;
  }
  return startPos + t * direction;
}

TVector3 VectorToCylinderEdge(const TVector3& startPos,
                              const TVector3& direction, const TVector3& shift,
                              double radius, eDiagnostics diagnostics) {
  const TVector3 start = Flattened(startPos);
  const TVector3 edge = VectorToSphereEdge(start, Flattened(direction), radius,
                                           false, diagnostics);
  const double alpha = edge.Unit().Angle(direction);
  // Only a direction exactly perpendicular to the edge adds no height. There is
  // no band around pi/2: one bit away from it the tangent is very large.
  const double dz =
      alpha == kHalfPi ? 0.0 : (edge - start).Mag() * std::tan(alpha);
  TVector3 crossing = edge + shift;
  crossing.SetZ(crossing.Z() + dz);
  return crossing;
}

double ClosestAngle(const TVector3& position, double radius) {
  const double x = IeeeQuotient(radius, position.Mag());
  if (x < -1.0) return -kHalfPi;
  if (x > 1.0) return kHalfPi;
  return kHalfPi - std::acos(x);
}

TVector3 Flattened(TVector3 v) {
  v.SetZ(0.0);
  return v;
}

TVector3 Rotated(TVector3 v, double angle) {
  v.RotateZ(angle);
  return v;
}

TVector3 WithPhi(TVector3 v, double phi) {
  v.SetPhi(phi);
  return v;
}

TVector3 WithMag(TVector3 v, double length, eDiagnostics diagnostics) {
  const bool wouldWarn = v.Mag2() == 0.0;
  if (wouldWarn && diagnostics == eDiagnostics::kSilent) return v;
  v.SetMag(length);
  return v;
}

}  // namespace ZARN::DU

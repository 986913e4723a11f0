#pragma once

#include <string>
#include <vector>

#include "lightpath/LightPath.hpp"
#include "tests/property/Random.hpp"
#include "tests/reference/PlainShadowingCalculator.hpp"

namespace ZARN::Testing {

/// By what name a path's type goes.
enum class eNaming {
  kOwnName,  ///< the one of the system, or none for a type it does not know
  kRenamed,  ///< another
  kUnnamed   ///< its name is removed
};

struct TestPath {
  DU::LightPath path;
  eNaming naming = eNaming::kOwnName;
  std::string name;        ///< of a renamed type
  bool isAtLimit = false;  ///< built to lie within 1e-9 of some limit
};

/// Makes paths for one geometry: anywhere, aimed at one of its components, or
/// built to lie on a limit or a few last bits beside it.
class PathMaker {
 public:
  /// @param model  a loaded calculator, whose lists are aimed at; must outlive
  ///               this
  PathMaker(const Reference::PlainShadowingCalculator& model, Random& random)
      : model_(model), random_(random) {}

  TestPath Draw();

  /// The path a share @p t of the way from @p a to @p b, in all coordinates.
  static TestPath Between(const TestPath& a, const TestPath& b, double t);

  /// @p path with some coordinates moved by a few last bits.
  TestPath Shaken(TestPath path);

  static bool IsFinite(const TestPath& path);

 private:
  /// A point on the vessel and a direction of travel.
  struct Segment {
    TVector3 point;
    TVector3 direction;
    bool isAtLimit = false;
  };

  DU::LightPath AnyPath(DU::eLightPathType type);
  void AimSegments(TestPath& path);
  void AimWater(TestPath& path);
  double RopeAngle() const;
  void PutEndsOnCylinder(TestPath& path, double radius);
  void PutEndsNearRopes(DU::LightPath& path,
                        const std::vector<TVector3>& ropes);
  void PutGrazingEnds(TestPath& path);
  void PutHighCrossing(TestPath& path);
  static void SetSegment(DU::LightPath& path, bool second,
                         const Segment& segment);
  void Rename(TestPath& path);
  void PutSpecialValues(DU::LightPath& path);

  Segment AimedSegment();
  Segment AtRopeSurface();
  Segment AtVerticalRope();
  Segment AtSupportRope();
  Segment AtBellyPlate();
  Segment AtNCDAnchor();
  Segment AtAVPipe();
  Segment AtNeckBoss();
  Segment AtHeightLimit();

  TVector3 OnVessel(double phi, double z) const;
  TVector3 Outward(double phi);
  TVector3 OnCircle(double radius, double z);
  double Nudged(double x);
  double RandomHeight();

  const Reference::PlainShadowingCalculator& model_;
  Random& random_;
};

/// All coordinates of a path in hexadecimal, so that it can be run again.
std::string Describe(const TestPath& path);

}  // namespace ZARN::Testing

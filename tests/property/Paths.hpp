#pragma once

#include <array>
#include <string>
#include <vector>

#include "lightpath/LightPath.hpp"
#include "tests/property/Random.hpp"
#include "tests/reference/PlainShadowingCalculator.hpp"

namespace ZARN::Testing {

/// The name of a path's type.
enum class eNaming {
  kOwnName,  ///< the default name; none for an unknown type
  kRenamed,  ///< another name
  kUnnamed   ///< the name is removed
};

struct TestPath {
  DU::LightPath path;
  eNaming naming = eNaming::kOwnName;
  std::string name;        ///< if the type is renamed
  bool isAtLimit = false;  ///< built to be within 1e-12 of a limit
};

/// The vectors of a light path, in the order in which Describe writes them.
inline constexpr std::array kVectors = {
    &DU::LightPath::FinalDirection, &DU::LightPath::InitialDirection,
    &DU::LightPath::StartPos,       &DU::LightPath::EndPos,
    &DU::LightPath::AVPoint1,       &DU::LightPath::AVPoint2,
    &DU::LightPath::AVPoint3,       &DU::LightPath::AVPoint4};

/// Makes paths for one geometry: anywhere, aimed at one of its components, or
/// built to be exactly at a limit, a few last bits away from it, or at any
/// distance from there to that of single precision.
class PathMaker {
 public:
  /// The relative distance that counts as at a limit.
  static constexpr double kAtLimit = 1e-12;

  /// @param model  a loaded calculator, at whose lists and tolerances paths are
  ///               aimed; must outlive this object and not change
  PathMaker(const Reference::PlainShadowingCalculator& model, Random& random);

  TestPath Draw();

  /// The path at a fraction @p t of the way from @p a to @p b. A vector that
  /// has the same length in both keeps it: points on the vessel stay there.
  static TestPath Between(const TestPath& a, const TestPath& b, double t);

  /// @p path, which is at a limit, with some coordinates changed by a few last
  /// bits or by up to kAtLimit.
  TestPath Shaken(TestPath path);

  static bool IsFinite(const TestPath& path);

 private:
  /// A point on the vessel and a direction of travel.
  struct Segment {
    TVector3 point;
    TVector3 direction;
    bool isAtLimit = false;
  };
  /// The ropes of one kind, as used by the tests of crossings.
  struct Ropes {
    std::vector<TVector3> directions;
    double cylinder = 0.0;   ///< radius of the cylinder of the ropes
    double tolerance = 0.0;  ///< rad
    double firstZ = 0.0;     ///< height that decides which test a point gets
    double height = 0.0;     ///< limit of a crossing's height
  };
  struct Crossing {
    TVector3 flat;
    double height;
  };

  /// A radius to aim at: @p radius if it is usable, else @p otherwise.
  static double Sensible(double radius, double otherwise) {
    return radius > 1.0 && radius < 1e6 ? radius : otherwise;
  }

  static Ropes MakeRopes(const std::vector<TVector3>& directions,
                         const TVector3& first, double reach);
  static Crossing CrossingOf(const TVector3& point, const TVector3& direction,
                             double radius);
  double TurnToEdge(const TVector3& crossing, const Ropes& ropes,
                    double tolerance);
  static TVector3 SlopedForHeight(const TVector3& point, TVector3 direction,
                                  double radius, double height);
  bool TurnToSquareCrossing(TVector3& point, TVector3& direction,
                            const Ropes& ropes);
  void ChooseCloseness();

  DU::LightPath AnyPath(DU::eLightPathType type);
  void AimSegments(TestPath& path);
  void AimWater(TestPath& path);
  double RopeAngle() const;
  void PutEndsOnCylinder(TestPath& path, double radius);
  void PutEndsNearRopes(DU::LightPath& path,
                        const std::vector<TVector3>& ropes);
  void PutGrazingEnds(TestPath& path);
  void PutHighCrossing(TestPath& path);
  void PutCrossingAtEdge(TestPath& path);
  void PutCrossingAtHeight(TestPath& path);
  void PutTangent(TestPath& path);
  void PutSquareCrossing(TestPath& path);
  static void SetSegment(DU::LightPath& path, bool second,
                         const Segment& segment);
  void Rename(TestPath& path);
  void PutSpecialValues(DU::LightPath& path);
  void ChangeLengths(DU::LightPath& path);
  void LeaveVessel(DU::LightPath& path);

  Segment AimedSegment();
  Segment AtReach(const std::vector<TVector3>& points, double reach);
  Segment AtRopeSurface();
  Segment AtVerticalRope();
  Segment AtSupportRope();
  Segment AtBellyPlate();
  Segment AtNCDAnchor();
  Segment AtAVPipe();
  Segment AtNeckBoss();
  Segment AtHeightLimit();
  Segment AtRopeEdge();
  Segment AtCrossingHeight();
  Segment OnRopeCylinder();
  Segment AtSquareCrossing();

  TVector3 OnVessel(double phi, double z) const;
  TVector3 Outward(double phi);
  TVector3 OnCircle(double radius, double z);
  double Nudged(double x);
  double Aside();
  double RandomHeight();
  const Ropes& AnyRopes() { return random_.Chance(0.5) ? holdDown_ : support_; }

  const Reference::PlainShadowingCalculator& model_;
  Random& random_;
  Ropes holdDown_;
  Ropes support_;
  double closeness_ = kAtLimit;  ///< distance of the next path from its limit
};

/// A tolerance at which the edge of some rope's shadow is on an edge of cells
/// of an azimuth table (4,096 cells, see AzimuthCell.hpp), where a mistake in a
/// cell is not hidden by an unsure cell.
double SharpTolerance(const Reference::PlainShadowingCalculator& model,
                      Random& random);

/// All coordinates of a path in hexadecimal, to reproduce it.
std::string Describe(const TestPath& path);

}  // namespace ZARN::Testing

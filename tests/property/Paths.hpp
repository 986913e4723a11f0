#pragma once

#include <array>
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
  bool isAtLimit = false;  ///< built to lie within 1e-12 of some limit
};

/// The vectors of a light path, in the order in which Describe writes them.
inline constexpr std::array kVectors = {
    &DU::LightPath::FinalDirection, &DU::LightPath::InitialDirection,
    &DU::LightPath::StartPos,       &DU::LightPath::EndPos,
    &DU::LightPath::AVPoint1,       &DU::LightPath::AVPoint2,
    &DU::LightPath::AVPoint3,       &DU::LightPath::AVPoint4};

/// Makes paths for one geometry: anywhere, aimed at one of its components, or
/// built to lie on a limit, a few last bits beside it, or at any distance from
/// there to that of single precision.
class PathMaker {
 public:
  /// What counts as at a limit: a relative distance.
  static constexpr double kAtLimit = 1e-12;

  /// @param model  a loaded calculator, whose lists and tolerances are aimed
  ///               at; must outlive this and not change
  PathMaker(const Reference::PlainShadowingCalculator& model, Random& random);

  TestPath Draw();

  /// The path a share @p t of the way from @p a to @p b. Where a vector is as
  /// long in both, it keeps its length: points on the vessel stay there.
  static TestPath Between(const TestPath& a, const TestPath& b, double t);

  /// @p path, which lies at a limit, with some coordinates moved by a few last
  /// bits, or by up to kAtLimit.
  TestPath Shaken(TestPath path);

  static bool IsFinite(const TestPath& path);

 private:
  /// A point on the vessel and a direction of travel.
  struct Segment {
    TVector3 point;
    TVector3 direction;
    bool isAtLimit = false;
  };
  /// The ropes of one kind, as the tests of crossings see them.
  struct Ropes {
    std::vector<TVector3> directions;
    double cylinder = 0.0;   ///< radius of the cylinder on which they stand
    double tolerance = 0.0;  ///< rad
    double firstZ = 0.0;     ///< height that decides which test a point gets
    double height = 0.0;     ///< limit of a crossing's height
  };
  struct Crossing {
    TVector3 flat;
    double height;
  };

  /// A radius to aim at where the tables give none that makes sense.
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
  double closeness_ = kAtLimit;  ///< of the path being made to its limit
};

/// A tolerance at which the edge of some rope's shadow lies on an edge of cells
/// of an azimuth table (4,096 of them, see AzimuthCell.hpp), where a slip of
/// one into the other is not hidden by a cell that is unsure as a whole.
double SharpTolerance(const Reference::PlainShadowingCalculator& model,
                      Random& random);

/// All coordinates of a path in hexadecimal, so that it can be run again.
std::string Describe(const TestPath& path);

}  // namespace ZARN::Testing

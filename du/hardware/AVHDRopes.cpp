#include "du/hardware/AVHDRopes.hpp"

#include <string>
#include <utility>

#include "db/DBErrors.hpp"
#include "db/ReadField.hpp"
#include "du/geometry/Constants.hpp"
#include "du/geometry/Primitives.hpp"
#include "du/hardware/GeometryTables.hpp"

namespace ZARN::DU {
namespace {

/// The point at a fraction of the way from @p a to @p b.
TVector3 PointBetween(const TVector3& a, const TVector3& b, double fraction) {
  const TVector3 d = b - a;
  return a + (d.Mag() * fraction) * d.Unit();
}

/// One rope over the top of the vessel, and the arcs of the ring that connect
/// it to the opposite rope.
class SurfaceRope {
 public:
  SurfaceRope(const std::vector<TVector3>& positions, double roll,
              double outerAVRadius, double avNeckRadius)
      : outerAVRadius_(outerAVRadius),
        t1_(Rotated(positions[1], roll)),
        t4_(Rotated(positions[4], roll)),
        t2_(Rotated(positions[2], roll)),
        t3_(Rotated(positions[3], roll)),
        t2Opposite_(Rotated(t2_, kPi)),
        t3Opposite_(Rotated(t3_, kPi)),
        walker2_(t2_),
        walker3_(t3_),
        arcHalfWidth_(t2_.Angle(t3Opposite_)) {
    // The ends of the opposite rope are not used later. Like the ends of this
    // rope they are still moved onto the sphere, so that ROOT warns about an
    // end at the centre once for each of the two ropes.
    TVector3 t4Opposite = Rotated(t4_, kPi);
    TVector3 t1Opposite = Rotated(t1_, kPi);
    for (TVector3* const end : {&t1_, &t4_, &t4Opposite, &t1Opposite}) {
      end->SetMag(outerAVRadius);
    }
    constexpr double kNeckClearance = 250.0;  // from the neck's wall, mm
    neckPoint_ =
        WithMag(PointBetween(t1_, t4_, 0.5), avNeckRadius + kNeckClearance);
  }

  /// Append up to six points at a fraction of the ring and of each stretch.
  ///
  /// The walkers are rotated from sample to sample. Each rotation starts from
  /// the rounded result of the one before, so the order of the calls matters.
  void AppendSamples(double f, AVHDRopeModel& model) {
    const double phi = kTwoPi * f;
    walker2_.SetPhi(phi);
    AppendIfOnArc(walker2_, t2_, t3Opposite_, model);
    walker3_.SetPhi(phi);
    AppendIfOnArc(walker3_, t3_, t2Opposite_, model);
    for (const auto& [from, to] :
         {std::pair(&t1_, &t2_), std::pair(&t4_, &t3_),
          std::pair(&t2_, &neckPoint_), std::pair(&t3_, &neckPoint_)}) {
      Append(PointBetween(*from, *to, f), eAVHDRopePart::kOverVessel, model);
    }
  }

 private:
  /// A walker is used only between the two points that its arc connects.
  void AppendIfOnArc(const TVector3& walker, const TVector3& from,
                     const TVector3& to, AVHDRopeModel& model) const {
    if (walker.Angle(from) < arcHalfWidth_ &&
        walker.Angle(to) < arcHalfWidth_) {
      Append(walker, eAVHDRopePart::kRing, model);
    }
  }

  /// Append a point, lifted onto the vessel.
  void Append(const TVector3& point, eAVHDRopePart part,
              AVHDRopeModel& model) const {
    model.AVHDRopeSurfacePoints.push_back(
        VectorToSphereEdge(point, ZHat(), outerAVRadius_, false));
    model.AVHDRopeSurfaceParts.push_back(part);
  }

  double outerAVRadius_;
  TVector3 t1_;
  TVector3 t4_;
  TVector3 t2_;
  TVector3 t3_;
  TVector3 t2Opposite_;
  TVector3 t3Opposite_;
  TVector3 walker2_;  // on the arc from t2 to the rope opposite
  TVector3 walker3_;  // on the arc from t3
  TVector3 neckPoint_;
  double arcHalfWidth_;
};

void AppendSurfacePoints(SurfaceRope& rope, AVHDRopeModel& model) {
  constexpr int kSamples = 500;
  model.AVHDRopeSurfaceBegins.push_back(model.AVHDRopeSurfacePoints.size());
  double t = 0.1;
  for (int sample = 0; sample < kSamples; ++sample) {
    rope.AppendSamples(t / 1000.0, model);
    t += 2.0;
  }
}

/// Append 99 points of each leg, alternating between the two legs. The steps
/// are computed in single precision, which shows in the last digits of the
/// points.
void AppendLegPoints(const std::vector<TVector3>& positions, double roll,
                     std::vector<TVector3>& points) {
  const TVector3 a0 = Rotated(positions[0], roll);
  const TVector3 a1 = Rotated(positions[1], roll);
  const TVector3 a5 = Rotated(positions[5], roll);
  const TVector3 a4 = Rotated(positions[4], roll);
  const float step1 = static_cast<float>((a0 - a1).Mag()) / 100.0F;
  const float step2 = static_cast<float>((a5 - a4).Mag()) / 100.0F;
  const TVector3 unit1 = (a0 - a1).Unit();
  const TVector3 unit2 = (a5 - a4).Unit();
  for (int k = 1; k <= 99; ++k) {
    const auto steps = static_cast<float>(k);
    points.push_back(a1 + static_cast<double>(step1 * steps) * unit1);
    points.push_back(a4 + static_cast<double>(step2 * steps) * unit2);
  }
}

}  // namespace

void AVHDRopeModel::Clear() {
  AVHDRopePositions.clear();
  AVHDRopeRolls.clear();
  AVHDRopeEndPoints.clear();
  AVHDRopeSurfacePoints.clear();
  AVHDRopeSurfaceParts.clear();
  AVHDRopeSurfaceBegins.clear();
  AVHDRopeLegPoints.clear();
}

void LoadAVHDRopeInfo(const TableSet& tables, AVHDRopeModel& model,
                      double outerAVRadius, double avNeckRadius) {
  std::string solid =
      ReadString(tables, "GEO", "hold_down_ropes", "solid_definition");
  model.AVHDRopeRadius = ReadNumber(tables, "SOLID", solid, "r_rope");
  solid = ReadString(tables, "GEO", "hold_down_ropes", "solid_definition");
  FillXYZPositions(tables, model.AVHDRopePositions, "SOLID", solid, "rope_x",
                   "rope_y", "rope_z");
  model.AVHDRopeLocations =
      ReadString(tables, "GEO", "hold_down_ropes", "locations");
  model.AVHDRopeRolls =
      ReadNumbers(tables, "GEO_LOCATIONS", model.AVHDRopeLocations, "roll");

  const auto& positions = model.AVHDRopePositions;
  if (positions.size() < 6) {
    throw DBNotFoundError("table SOLID, index " + solid +
                          ": the rope has fewer than six points");
  }

  auto& rolls = model.AVHDRopeRolls;
  for (double& roll : rolls) roll /= kDegreesPerRadian;

  // Intentional: all lists are counted in single precision.
  const auto count = static_cast<float>(rolls.size());
  for (float i = 0; i < count; i += 1.0F) {
    const double roll = rolls[static_cast<std::size_t>(i)];
    model.AVHDRopeEndPoints.push_back(Rotated(positions[1], roll));
    model.AVHDRopeEndPoints.push_back(Rotated(positions[4], roll));
  }
  for (float i = 0; i < count; i += 1.0F) {
    SurfaceRope rope(positions, rolls[static_cast<std::size_t>(i)],
                     outerAVRadius, avNeckRadius);
    AppendSurfacePoints(rope, model);
  }
  for (float i = 0; i < count; i += 1.0F) {
    AppendLegPoints(positions, rolls[static_cast<std::size_t>(i)],
                    model.AVHDRopeLegPoints);
  }
}

}  // namespace ZARN::DU

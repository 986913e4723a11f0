#include "tests/lightpath/LightPathFlaws.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "tests/lightpath/Vessels.hpp"

namespace ZARN::Testing {

std::vector<DU::eMedium> SegmentsOf(DU::eLightPathType type) {
  constexpr DU::eMedium kLiquid = DU::eMedium::kInnerAV;
  constexpr DU::eMedium kWall = DU::eMedium::kAcrylic;
  constexpr DU::eMedium kWater = DU::eMedium::kWater;
  switch (type) {
    case DU::kInnerAVToWater:
      return {kLiquid, kWall, kWater};
    case DU::kAVThroughInnerAVToWater:
      return {kWall, kLiquid, kWall, kWater};
    case DU::kAVToWater:
      return {kWall, kWater};
    case DU::kWaterThroughInnerAV:
      return {kWater, kWall, kLiquid, kWall, kWater};
    case DU::kWaterThroughAV:
      return {kWater, kWall, kWater};
    case DU::kWater:
      return {kWater};
    case DU::kWaterReflection:
      return {kWater, kWater};
    default:
      return {};
  }
}

std::vector<TVector3> CornersOf(const DU::LightPathCalculator& path) {
  const std::array points = {path.GetAVPoint1(), path.GetAVPoint2(),
                             path.GetAVPoint3(), path.GetAVPoint4()};
  const std::size_t segments = SegmentsOf(path.GetLightPathType()).size();
  std::vector<TVector3> corners = {path.GetStartPos()};
  for (std::size_t i = 0; i + 1 < segments; ++i) corners.push_back(points[i]);
  corners.push_back(path.GetEndPos());
  return corners;
}

double DistanceFromSegment(const TVector3& point, const TVector3& a,
                           const TVector3& b) {
  const TVector3 along = b - a;
  const double square = along.Mag2();
  if (square == 0.0) return (point - a).Mag();
  const double t = std::clamp((point - a).Dot(along) / square, 0.0, 1.0);
  // From the nearer end, which loses fewer digits.
  const TVector3 foot = t < 0.5 ? a + t * along : b - (1.0 - t) * along;
  return (point - foot).Mag();
}

double AngleBetween(const TVector3& a, const TVector3& b) {
  return std::atan2(a.Cross(b).Mag(), a.Dot(b));
}

namespace {

/// A path at one of its corners on a surface.
struct Passage {
  double Sine;            ///< of the angle to the radius
  double SineError;       ///< from the rounding of the points
  TVector3 Axis;          ///< radius x direction
  double Cosine;          ///< > 0 if outwards
  double DirectionError;  ///< of axis and cosine
};

std::string Flaw(const std::string& what, double by) {
  return what + " (" + Exact(by) + ")";
}

/// The checks of one path. Each returns the first flaw found, or "".
class Inspection {
 public:
  Inspection(const DU::LightPathCalculator& path,
             const DU::ConcentricMedia& media, const TVector3& eventPos,
             const TVector3& pmtPos)
      : path_(path),
        media_(media),
        event_(eventPos),
        pmt_(pmtPos),
        type_(path.GetLightPathType()),
        first_(path.GetInitialDirection()),
        last_(path.GetFinalDirection()),
        segments_(SegmentsOf(type_)),
        corners_(CornersOf(path)),
        surfaces_(corners_.size() - 2) {
    for (std::size_t i = 0; i < surfaces_; ++i) {
      const bool isInner = segments_[i] == DU::eMedium::kInnerAV ||
                           segments_[i + 1] == DU::eMedium::kInnerAV;
      radii_.push_back(isInner ? media.InnerRadius : media.OuterRadius);
    }
  }

  std::string FirstFlaw() const {
    for (const auto check :
         {&Inspection::Ends, &Inspection::Directions, &Inspection::Surfaces,
          &Inspection::Refraction, &Inspection::Segments, &Inspection::Plane,
          &Inspection::Lengths}) {
      const std::string flaw = (this->*check)();
      if (!flaw.empty()) return flaw;
    }
    return "";
  }

 private:
  std::string Ends() const {
    if (segments_.empty() || type_ == DU::kWaterReflection) {
      return "wrong type";
    }
    if (segments_.front() != media_.At(event_.Mag())) {
      return "type starts in another medium";
    }
    if (path_.GetStartPos() != event_) return "start is not the event";
    if (path_.GetEndPos() != pmt_) return "end is not the PMT";
    const std::array points = {path_.GetAVPoint1(), path_.GetAVPoint2(),
                               path_.GetAVPoint3(), path_.GetAVPoint4()};
    for (std::size_t i = surfaces_; i < points.size(); ++i) {
      if (points[i] != TVector3()) return "unused point is not zero";
    }
    return "";
  }

  /// Unit vectors from the start to the first point and from the last point to
  /// the end.
  std::string Directions() const {
    for (const TVector3& direction : {first_, last_}) {
      const double excess = std::abs(direction.Mag2() - 1.0) / 2.0;
      if (!(excess <= 1e-14)) return Flaw("direction is not unit", excess);
    }
    const double endError = 1e-6 * std::min(1.0, media_.OuterRadius) +
                            4e-15 * std::max(event_.Mag(), pmt_.Mag());
    const auto leadsTo = [&](const TVector3& from, const TVector3& direction,
                             const TVector3& to) {
      const TVector3 gap = to - from;
      const double along = gap.Dot(direction);
      if (along < -endError) return -along;
      return (gap - along * direction).Mag();
    };
    const double startGap = leadsTo(corners_[0], first_, corners_[1]);
    if (!(startGap <= endError)) {
      return Flaw("start misses first point", startGap);
    }
    const double endGap =
        leadsTo(corners_[surfaces_], last_, corners_[surfaces_ + 1]);
    if (!(endGap <= endError)) return Flaw("last point misses end", endGap);
    return "";
  }

  std::string Surfaces() const {
    for (std::size_t i = 0; i < surfaces_; ++i) {
      const double off = std::abs(corners_[i + 1].Mag() - radii_[i]);
      if (!(off <= 2e-15 * media_.OuterRadius)) {
        return Flaw("point is off its sphere", off);
      }
    }
    return "";
  }

  /// The passage of a segment through the surface at its corner.
  Passage PassageOf(std::size_t segment, std::size_t corner) const {
    const TVector3 normal = corners_[corner] * (1.0 / radii_[corner - 1]);
    const auto by = [&](const TVector3& direction, double error) -> Passage {
      const TVector3 axis = normal.Cross(direction);
      return {axis.Mag(), error, axis, normal.Dot(direction), error};
    };
    if (segment == 0) return by(first_, 0.0);
    if (segment == surfaces_) return by(last_, 0.0);
    const TVector3 chord = corners_[segment + 1] - corners_[segment];
    const double length = chord.Mag();
    const double lost =
        length > 0.0 ? 1e-15 * media_.OuterRadius / length : 1.0;
    Passage result = by(length > 0.0 ? chord * (1.0 / length) : chord, lost);
    const double radius = radii_[segment - 1];
    if (radius == radii_[segment] && length < radius) {
      // Between two points of one sphere the length gives the sine, more
      // precisely the shorter it is.
      const double half = length / (2.0 * radius);
      result.Sine = std::sqrt((1.0 - half) * (1.0 + half));
      result.SineError = 0.0;
    }
    // Across the wall of a real vessel the points define the direction well
    // enough; across a wall thinner than 1 % of the radius they do not.
    if (lost <= 1e-13) result.SineError = 0.0;
    return result;
  }

  /// Snell's law, and the sides and senses of the directions.
  std::string Refraction() const {
    for (std::size_t i = 0; i < surfaces_; ++i) {
      const Passage in = PassageOf(i, i + 1);
      const Passage out = PassageOf(i + 1, i + 1);
      const double n1 = media_.IndexIn(segments_[i]);
      const double n2 = media_.IndexIn(segments_[i + 1]);
      const double residual = std::abs(n1 * in.Sine - n2 * out.Sine);
      const double rounding = n1 * in.SineError + n2 * out.SineError;
      if (!(residual <= 1e-12 + rounding)) {
        return Flaw("Snell's law fails at surface " + std::to_string(i + 1),
                    residual);
      }
      constexpr double kTold = 1e-3;  // above it the directions define a side
      const bool isBentBack = in.Axis.Dot(out.Axis) < 0.0 && in.Sine > 1e-9 &&
                              out.Sine > 1e-9 && in.DirectionError < kTold &&
                              out.DirectionError < kTold;
      if (isBentBack) return "refracted to the wrong side";
      const bool isOutwards = segments_[i + 1] > segments_[i];
      for (const Passage& way : {in, out}) {
        const double cosine = isOutwards ? way.Cosine : -way.Cosine;
        if (!(cosine >= -1e-14 - way.DirectionError)) {
          return Flaw("crosses the wrong way", cosine);
        }
      }
    }
    return "";
  }

  /// No segment leaves its medium inwards on its way.
  std::string Segments() const {
    for (std::size_t i = 0; i < segments_.size(); ++i) {
      const double inside = segments_[i] == DU::eMedium::kWater
                                ? media_.OuterRadius
                                : media_.InnerRadius;
      if (segments_[i] == DU::eMedium::kInnerAV) continue;
      const double closest =
          DistanceFromSegment(TVector3(), corners_[i], corners_[i + 1]);
      const double rounding =
          4e-15 * std::max(corners_[i].Mag(), corners_[i + 1].Mag());
      if (!(closest >= inside - rounding)) {
        return Flaw("cuts a sphere on the way", inside - closest);
      }
    }
    return "";
  }

  /// All in one plane through the centre, spanned by the two vectors that
  /// define it best.
  std::string Plane() const {
    std::vector<TVector3> spanning = corners_;
    spanning.push_back(first_);
    spanning.push_back(last_);
    TVector3 plane;
    double best = 0.0;
    for (std::size_t i = 0; i < spanning.size(); ++i) {
      for (std::size_t j = 0; j < i; ++j) {
        const double sizes = spanning[i].Mag() * spanning[j].Mag();
        const TVector3 cross = spanning[i].Cross(spanning[j]);
        if (sizes > 0.0 && cross.Mag() / sizes > best) {
          best = cross.Mag() / sizes;
          plane = cross.Unit();
        }
      }
    }
    for (const TVector3& vector : spanning) {
      const double size = std::max(1.0, vector.Mag());
      const double off = std::abs(vector.Dot(plane)) / size;
      if (best > 1e-6 && !(off <= 4e-15 / best)) {
        return Flaw("leaves its plane", off);
      }
    }
    return "";
  }

  /// Lengths and times that the calculator derives from the points.
  std::string Lengths() const {
    constexpr std::array kMedia = {DU::eMedium::kInnerAV, DU::eMedium::kAcrylic,
                                   DU::eMedium::kWater};
    constexpr double kLightSpeed = 299.792458;  // mm/ns
    DU::PerMedium lengths{};
    for (std::size_t i = 0; i < segments_.size(); ++i) {
      lengths[DU::IndexOf(segments_[i])] +=
          (corners_[i + 1] - corners_[i]).Mag();
    }
    double optical = 0.0;
    double time = 0.0;
    double whole = 0.0;
    for (const DU::eMedium medium : kMedia) {
      const double length = lengths[DU::IndexOf(medium)];
      whole += length;
      optical += media_.IndexIn(medium) * length;
      time +=
          path_.GetGroupIndices()[DU::IndexOf(medium)] * length / kLightSpeed;
    }
    for (const DU::eMedium medium : kMedia) {
      const double off =
          std::abs(path_.GetLength(medium) - lengths[DU::IndexOf(medium)]);
      if (!(off <= 1e-14 * whole)) return Flaw("length of a medium", off);
    }
    const double opticalOff = std::abs(path_.GetOpticalLength() - optical);
    if (!(opticalOff <= 1e-14 * optical)) {
      return Flaw("optical length", opticalOff);
    }
    const double timeOff = std::abs(path_.GetTimeOfFlight() - time);
    if (!(timeOff <= 1e-14 * time)) return Flaw("time of flight", timeOff);
    return "";
  }

  const DU::LightPathCalculator& path_;
  const DU::ConcentricMedia& media_;
  const TVector3& event_;
  const TVector3& pmt_;
  DU::eLightPathType type_;
  const TVector3& first_;
  const TVector3& last_;
  std::vector<DU::eMedium> segments_;
  std::vector<TVector3> corners_;
  std::size_t surfaces_;
  std::vector<double> radii_;
};

}  // namespace

std::string FlawOf(const DU::LightPathCalculator& path,
                   const DU::ConcentricMedia& media, const TVector3& eventPos,
                   const TVector3& pmtPos) {
  return Inspection(path, media, eventPos, pmtPos).FirstFlaw();
}

}  // namespace ZARN::Testing

#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

#include "TVector3.h"
#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "tests/property/Random.hpp"
#include "tests/support/Tables.hpp"

/// Vessels for the tests of light paths, and what every path must satisfy,
/// worked out from its points and directions alone.
namespace ZARN::Testing {

inline constexpr double kPi = 3.141592653589793;

struct Vessel {
  std::string Name;
  DU::ConcentricMedia Media;
};

/// Liquid, acrylic and water as they are; the three sizes of index in every
/// order; equal ones, in part and all; strong ones; walls thin and thick; a
/// wall alone in reach of light from the water.
inline std::vector<Vessel> Vessels() {
  return {{"Real", {5800, 5860, {1.5, 1.49, 1.33}}},
          {"InnerWallWater", {4500, 5860, {1.2, 1.4, 1.6}}},
          {"InnerWaterWall", {4500, 5860, {1.2, 1.6, 1.4}}},
          {"WallInnerWater", {4500, 5860, {1.4, 1.2, 1.6}}},
          {"WaterInnerWall", {4500, 5860, {1.4, 1.6, 1.2}}},
          {"WallWaterInner", {4500, 5860, {1.6, 1.2, 1.4}}},
          {"WaterWallInner", {4500, 5860, {1.6, 1.4, 1.2}}},
          {"AllEqual", {5800, 5860, {1.33, 1.33, 1.33}}},
          {"AllEqualThickWall", {3000, 5860, {1.5, 1.5, 1.5}}},
          {"WallLikeWater", {5000, 5860, {1.5, 1.33, 1.33}}},
          {"WallLikeInner", {5000, 5860, {1.5, 1.5, 1.33}}},
          {"InnerLikeWater", {5500, 5860, {1.33, 1.49, 1.33}}},
          {"Strong", {3400, 5860, {3.0, 1.75, 1.0}}},
          {"StrongWall", {3400, 5860, {1.0, 3.0, 2.0}}},
          {"StrongBubble", {5000, 5860, {1.0, 1.5, 3.0}}},
          {"ThinWall", {5859.9, 5860, {1.5, 1.49, 1.33}}},
          {"TinyCore", {50, 5860, {1.5, 1.49, 1.33}}},
          {"Small", {0.58, 0.6, {1.5, 1.49, 1.33}}},
          {"WallAlone", {4000, 5860, {1.6, 1.2, 1.5}}}};
}

/// Any media at all.
inline DU::ConcentricMedia RandomMedia(Random& random) {
  const double outer = std::pow(10.0, random.Uniform(2.0, 4.5));
  const double inner =
      random.Chance(0.5) ? outer * random.Uniform(0.05, 0.99)
                         : outer * (1.0 - std::pow(10, random.Uniform(-4, -1)));
  const double largest = random.Chance(0.5) ? 1.6 : 3.0;
  DU::PerMedium indices{};
  for (double& index : indices) index = random.Uniform(1.0, largest);
  if (random.Chance(0.1)) indices[1] = indices[2];
  if (random.Chance(0.1)) indices[0] = indices[1];
  return {inner, outer, indices};
}

inline Tables TablesOf(const DU::ConcentricMedia& media) {
  Tables tables = VesselTables();
  tables.Set("SOLID", "acrylic_vessel_inner", "r_sphere", media.InnerRadius);
  tables.Set("SOLID", "acrylic_vessel_outer", "r_sphere", media.OuterRadius);
  const std::array indices = {"inner_av", "acrylic", "water"};
  for (std::size_t i = 0; i < indices.size(); ++i) {
    tables.Set("OPTICS", indices[i], "refractive_index",
               media.RefractiveIndex[i]);
  }
  return tables;
}

/// A calculator at the begin of a run with these media.
inline DU::LightPathCalculator CalculatorFor(const DU::ConcentricMedia& media) {
  TablesOf(media).Load();
  DU::LightPathCalculator calculator;
  calculator.BeginOfRun();
  return calculator;
}

/// How many random pairs of an event and a PMT the property tests take in all,
/// unless ZARN_LIGHT_PATH_PAIRS gives another number: programs built with
/// sanitizers are several times slower.
inline int PairsInAll() {
  constexpr long kUsual = 1000000;
  const char* text = std::getenv("ZARN_LIGHT_PATH_PAIRS");
  const long given = text != nullptr ? std::strtol(text, nullptr, 10) : 0;
  return static_cast<int>(given > 0 && given <= 100000000 ? given : kUsual);
}

/// A number to the last digit, so that a failure can be replayed.
inline std::string Exact(double value) {
  std::ostringstream text;
  text << std::setprecision(17) << value;
  return text.str();
}

inline std::string Exact(const TVector3& v) {
  return "(" + Exact(v.X()) + ", " + Exact(v.Y()) + ", " + Exact(v.Z()) + ")";
}

inline std::string Exact(const DU::ConcentricMedia& media) {
  return "radii " + Exact(media.InnerRadius) + ", " + Exact(media.OuterRadius) +
         "; indices " + Exact(media.RefractiveIndex[0]) + ", " +
         Exact(media.RefractiveIndex[1]) + ", " +
         Exact(media.RefractiveIndex[2]);
}

/// The media of a type's stretches, in order.
inline std::vector<DU::eMedium> StretchesOf(DU::eLightPathType type) {
  constexpr DU::eMedium kInner = DU::eMedium::kInnerAV;
  constexpr DU::eMedium kWall = DU::eMedium::kAcrylic;
  constexpr DU::eMedium kWater = DU::eMedium::kWater;
  switch (type) {
    case DU::kInnerAVToWater:
      return {kInner, kWall, kWater};
    case DU::kAVThroughInnerAVToWater:
      return {kWall, kInner, kWall, kWater};
    case DU::kAVToWater:
      return {kWall, kWater};
    case DU::kWaterThroughInnerAV:
      return {kWater, kWall, kInner, kWall, kWater};
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

/// Start, points on the surfaces as many as the type has, and end.
inline std::vector<TVector3> CornersOf(const DU::LightPathCalculator& path) {
  const std::array points = {path.GetAVPoint1(), path.GetAVPoint2(),
                             path.GetAVPoint3(), path.GetAVPoint4()};
  const std::size_t stretches = StretchesOf(path.GetLightPathType()).size();
  std::vector<TVector3> corners = {path.GetStartPos()};
  for (std::size_t i = 0; i + 1 < stretches; ++i) corners.push_back(points[i]);
  corners.push_back(path.GetEndPos());
  return corners;
}

/// Distance of a point from the piece of a line between two ends.
inline double DistanceFromSegment(const TVector3& point, const TVector3& a,
                                  const TVector3& b) {
  const TVector3 along = b - a;
  const double square = along.Mag2();
  if (square == 0.0) return (point - a).Mag();
  const double t = std::clamp((point - a).Dot(along) / square, 0.0, 1.0);
  // By the nearer end, which leaves less to cancel.
  const TVector3 foot = t < 0.5 ? a + t * along : b - (1.0 - t) * along;
  return (point - foot).Mag();
}

/// The angle between two vectors, to the last digits where it is small, too.
inline double AngleBetween(const TVector3& a, const TVector3& b) {
  return std::atan2(a.Cross(b).Mag(), a.Dot(b));
}

/// How a path turns up at one of its corners on a surface.
struct Passage {
  double Sine;            ///< of the angle to the radius
  double SineError;       ///< what the rounding of the points does to it
  TVector3 Axis;          ///< radius x direction
  double Cosine;          ///< above 0 outwards
  double DirectionError;  ///< of axis and cosine
};

/// What is wrong with a refracted or straight path: the first thing found with
/// its figures, or nothing. Uses the points and directions, never the solver.
inline std::string FlawOf(const DU::LightPathCalculator& path,
                          const DU::ConcentricMedia& media,
                          const TVector3& eventPos, const TVector3& pmtPos) {
  const auto flaw = [&](const std::string& what, double by) {
    return what + " (" + Exact(by) + ")";
  };
  const DU::eLightPathType type = path.GetLightPathType();
  const std::vector<DU::eMedium> stretches = StretchesOf(type);
  if (stretches.empty() || type == DU::kWaterReflection) return "wrong type";
  const DU::eMedium region = media.At(eventPos.Mag());
  if (stretches.front() != region) return "type starts in another medium";
  if (path.GetStartPos() != eventPos) return "start is not the event";
  if (path.GetEndPos() != pmtPos) return "end is not the PMT";

  const TVector3& first = path.GetInitialDirection();
  const TVector3& last = path.GetFinalDirection();
  for (const TVector3& direction : {first, last}) {
    const double excess = std::abs(direction.Mag2() - 1.0) / 2.0;
    if (!(excess <= 1e-14)) return flaw("direction is not unit", excess);
  }

  const std::array points = {path.GetAVPoint1(), path.GetAVPoint2(),
                             path.GetAVPoint3(), path.GetAVPoint4()};
  for (std::size_t i = stretches.size() - 1; i < points.size(); ++i) {
    if (points[i] != TVector3()) return "unused point is not zero";
  }

  const double scale = media.OuterRadius;
  const double endError = 1e-6 * std::min(1.0, scale) +
                          4e-15 * std::max(eventPos.Mag(), pmtPos.Mag());
  const std::vector<TVector3> corners = CornersOf(path);
  const std::size_t surfaces = corners.size() - 2;

  // The ends of the first and the last stretch lie where the directions lead.
  const auto leadsTo = [&](const TVector3& from, const TVector3& direction,
                           const TVector3& to) {
    const TVector3 gap = to - from;
    const double along = gap.Dot(direction);
    if (along < -endError) return -along;
    return (gap - along * direction).Mag();
  };
  const double startGap = leadsTo(corners[0], first, corners[1]);
  if (!(startGap <= endError))
    return flaw("start misses first point", startGap);
  const double endGap = leadsTo(corners[surfaces], last, corners[surfaces + 1]);
  if (!(endGap <= endError)) return flaw("last point misses end", endGap);

  // Which surface lies between two media.
  std::vector<double> radii;
  std::vector<bool> isOutwards;
  for (std::size_t i = 0; i < surfaces; ++i) {
    const bool isInner = stretches[i] == DU::eMedium::kInnerAV ||
                         stretches[i + 1] == DU::eMedium::kInnerAV;
    radii.push_back(isInner ? media.InnerRadius : media.OuterRadius);
    isOutwards.push_back(stretches[i + 1] > stretches[i]);
    const double off = std::abs(corners[i + 1].Mag() - radii[i]);
    if (!(off <= 2e-15 * scale)) return flaw("point is off its sphere", off);
  }

  // How the stretch passes the surface at its corner.
  const auto passage = [&](std::size_t stretch, std::size_t corner) -> Passage {
    const TVector3 normal = corners[corner] * (1.0 / radii[corner - 1]);
    const auto by = [&](const TVector3& direction, double error) -> Passage {
      const TVector3 axis = normal.Cross(direction);
      return {axis.Mag(), error, axis, normal.Dot(direction), error};
    };
    if (stretch == 0) return by(first, 0.0);
    if (stretch == surfaces) return by(last, 0.0);
    const TVector3 chord = corners[stretch + 1] - corners[stretch];
    const double length = chord.Mag();
    const double lost = length > 0.0 ? 1e-15 * scale / length : 1.0;
    Passage result = by(length > 0.0 ? chord * (1.0 / length) : chord, lost);
    const double radius = radii[stretch - 1];
    if (radius == radii[stretch] && length < radius) {
      // Between two points of one sphere the length alone gives the sine, the
      // better the shorter it is.
      const double half = length / (2.0 * radius);
      result.Sine = std::sqrt((1.0 - half) * (1.0 + half));
      result.SineError = 0.0;
    }
    // Across the walls of real vessels the points define the direction well
    // enough; in one of less than a hundredth of the radius they cannot.
    if (lost <= 1e-13) result.SineError = 0.0;
    return result;
  };

  for (std::size_t i = 0; i < surfaces; ++i) {
    const Passage in = passage(i, i + 1);
    const Passage out = passage(i + 1, i + 1);
    const double n1 = media.IndexIn(stretches[i]);
    const double n2 = media.IndexIn(stretches[i + 1]);
    const double residual = std::abs(n1 * in.Sine - n2 * out.Sine);
    const double rounding = n1 * in.SineError + n2 * out.SineError;
    if (!(residual <= 1e-12 + rounding)) {
      return flaw("Snell's law fails at surface " + std::to_string(i + 1),
                  residual);
    }
    constexpr double kTold = 1e-3;  // from there the directions tell a side
    const bool isBentBack = in.Axis.Dot(out.Axis) < 0.0 && in.Sine > 1e-9 &&
                            out.Sine > 1e-9 && in.DirectionError < kTold &&
                            out.DirectionError < kTold;
    if (isBentBack) return "refracted to the wrong side";
    for (const Passage& way : {in, out}) {
      const double cosine = isOutwards[i] ? way.Cosine : -way.Cosine;
      if (!(cosine >= -1e-14 - way.DirectionError)) {
        return flaw("crosses the wrong way", cosine);
      }
    }
  }

  // No stretch leaves its medium inwards on the way.
  for (std::size_t i = 0; i < stretches.size(); ++i) {
    const double inside = stretches[i] == DU::eMedium::kWater
                              ? media.OuterRadius
                              : media.InnerRadius;
    if (stretches[i] == DU::eMedium::kInnerAV) continue;
    const double closest =
        DistanceFromSegment(TVector3(), corners[i], corners[i + 1]);
    const double rounding =
        4e-15 * std::max(corners[i].Mag(), corners[i + 1].Mag());
    if (!(closest >= inside - rounding)) {
      return flaw("cuts a sphere on the way", inside - closest);
    }
  }

  // One plane through the centre, spanned by whichever two span it best.
  std::vector<TVector3> spanning = corners;
  spanning.push_back(first);
  spanning.push_back(last);
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
    if (best > 1e-6 && !(off <= 4e-15 / best))
      return flaw("leaves its plane", off);
  }

  // What follows from the points.
  DU::PerMedium lengths{};
  for (std::size_t i = 0; i < stretches.size(); ++i) {
    lengths[DU::IndexOf(stretches[i])] += (corners[i + 1] - corners[i]).Mag();
  }
  double optical = 0.0;
  double time = 0.0;
  double whole = 0.0;
  constexpr double kLightSpeed = 299.792458;  // mm/ns
  for (const DU::eMedium medium :
       {DU::eMedium::kInnerAV, DU::eMedium::kAcrylic, DU::eMedium::kWater}) {
    const double length = lengths[DU::IndexOf(medium)];
    whole += length;
    optical += media.IndexIn(medium) * length;
    time += path.GetGroupIndices()[DU::IndexOf(medium)] * length / kLightSpeed;
  }
  for (const DU::eMedium medium :
       {DU::eMedium::kInnerAV, DU::eMedium::kAcrylic, DU::eMedium::kWater}) {
    const double off =
        std::abs(path.GetLength(medium) - lengths[DU::IndexOf(medium)]);
    if (!(off <= 1e-14 * whole)) return flaw("length of a medium", off);
  }
  const double opticalOff = std::abs(path.GetOpticalLength() - optical);
  if (!(opticalOff <= 1e-14 * optical))
    return flaw("optical length", opticalOff);
  const double timeOff = std::abs(path.GetTimeOfFlight() - time);
  if (!(timeOff <= 1e-14 * time)) return flaw("time of flight", timeOff);
  return "";
}

}  // namespace ZARN::Testing

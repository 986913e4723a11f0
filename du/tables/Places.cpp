// Positions of hardware that are hardly meant: in m, inside the vessel, far
// from it, at the wrong height, given twice.

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "du/geometry/Constants.hpp"
#include "du/hardware/Hardware.hpp"
#include "du/tables/Duplicates.hpp"
#include "du/tables/FindingText.hpp"
#include "du/tables/TableCheck.hpp"
#include "du/tables/Vessel.hpp"

namespace ZARN::DU {
namespace {

using Positions = std::vector<TVector3>;

/// Pipes go up along the neck: no corner is farther from the centre than this
/// many outer radii. In the reference detector it is 1.34.
constexpr double kFarthestCorner = 3.0;

/// A distance in mm as people say it: a tenth of a mm is enough.
std::string TextOfDistance(double distance) {
  return TextOf(std::round(distance * 10.0) / 10.0) + " mm";
}

/// The positions of one component, beside a vessel.
class PlaceCheck {
 public:
  PlaceCheck(TableCheck& check, const Vessel& vessel,
             eShadowingComponent component, const char* table,
             const TableIndex& index, eSeverity severity = eSeverity::kWarning)
      : check_(check),
        vessel_(vessel),
        subject_{component, table, check.IndexOf(index).value_or("")},
        severity_(severity),
        positions_(check.Positions(table, index).value_or(Positions())) {}

  const Positions& All() const { return positions_; }

  /// Whether the positions look like m, which is told. Then no other check
  /// makes sense.
  bool AreInMetres() {
    const bool areSmall = std::all_of(
        positions_.begin(), positions_.end(), [this](const TVector3& position) {
          return position.Mag() < kLooksLikeMetres * vessel_.outer;
        });
    // At the centre is another mistake.
    const bool isSome =
        std::any_of(positions_.begin(), positions_.end(),
                    [](const TVector3& p) { return p.Mag() > 0.0; });
    if (!areSmall || !isSome) return false;
    TellOf(0, positions_.size() - 1,
           "the position looks like m beside a vessel of " +
               TextOfDistance(vessel_.outer),
           "lengths are in mm");
    return true;
  }

  /// Tell of the positions for which there is a problem, all in one finding.
  ///
  /// @param problemOf  called with a finite position; returns "" for none
  void TellWhere(const std::function<std::string(const TVector3&)>& problemOf,
                 const std::string& remedy) {
    std::string problem;
    std::size_t first = 0;
    std::size_t others = 0;
    for (std::size_t i = 0; i < positions_.size(); ++i) {
      if (!std::isfinite(positions_[i].Mag2())) continue;
      const std::string here = problemOf(positions_[i]);
      if (here.empty()) continue;
      if (problem.empty()) {
        problem = here;
        first = i;
      } else {
        ++others;
      }
    }
    if (!problem.empty()) TellOf(first, others, problem, remedy);
  }

  void TellDuplicates() {
    const auto found = FindDuplicates(positions_);
    if (!found.has_value()) return;
    check_.Tell(severity_, subject_,
                {"positions " + std::to_string(found->first + 1) + " and " +
                     std::to_string(found->second + 1) + " are the same" +
                     AndMore(found->others),
                 TextOf(positions_[found->second]), "write each once"});
  }

  /// "" or what is wrong with a distance from the axis or the centre.
  ///
  /// @param most  in outer radii
  std::string ProblemAt(double distance, double least, const std::string& from,
                        double most = 1.0 + kFarFromWall) const {
    const std::string radius = TextOfDistance(vessel_.outer);
    if (distance < least - kSamePlace) {
      return "the position is inside the vessel of " + radius + ", " +
             TextOfDistance(distance) + " from " + from;
    }
    if (distance <= most * vessel_.outer) return "";
    return "the position is far from the vessel of " + radius + ", " +
           TextOfDistance(distance) + " from " + from;
  }

 private:
  void TellOf(std::size_t position, std::size_t others,
              const std::string& problem, const std::string& remedy) {
    std::string where = problem;
    if (positions_.size() > 1) {
      where = "position " + std::to_string(position + 1) + AndMore(others) +
              ": " + problem;
    }
    check_.Tell(severity_, subject_,
                {where, TextOf(positions_[position]), remedy});
  }

  TableCheck& check_;
  Vessel vessel_;
  FindingSubject subject_;
  eSeverity severity_;
  Positions positions_;
};

/// From this height of legs and feet on, they block nothing at the default
/// tolerance (docs/tables.md).
double HighestFoot(const TableCheck& check, const TableIndex& rope) {
  const auto* const radius = check.Get<double>("SOLID", rope, "r_rope");
  return Hardware::kDefaultTolerance + (radius == nullptr ? 0.0 : *radius);
}

/// Why a rope above or below this point blocks nothing; "" if it does.
std::string WhyNothingIsBlocked(const TVector3& end, double highest) {
  if (std::abs(end.Z()) >= highest) {
    return "|z| is not below r_rope plus the default tolerance, " +
           TextOfDistance(highest);
  }
  if (end.Perp() < kRopeEndSphereRadius) return "";
  return "it is not nearer to the axis than " +
         TextOfDistance(kRopeEndSphereRadius);
}

void CheckSupportRopes(TableCheck& check, const Vessel& vessel) {
  PlaceCheck places(check, vessel, eShadowingComponent::kSupportRope,
                    "GEO_LOCATIONS", {"hold_up_ropes", "locations"});
  if (places.AreInMetres()) return;
  const double highest =
      HighestFoot(check, {"hold_up_ropes", "solid_definition"});
  places.TellWhere(
      [&](const TVector3& foot) {
        std::string problem =
            places.ProblemAt(foot.Perp(), vessel.outer, "the axis");
        if (!problem.empty()) return problem;
        problem = WhyNothingIsBlocked(foot, highest);
        return problem.empty() ? "" : "the rope blocks nothing: " + problem;
      },
      "support ropes stand just outside the wall, with z near 0");
  places.TellDuplicates();
}

void CheckBellyPlates(TableCheck& check, const Vessel& vessel) {
  PlaceCheck places(check, vessel, eShadowingComponent::kBellyPlate,
                    "GEO_LOCATIONS", {"inner_av", "belly_plate_locations"});
  if (places.AreInMetres()) return;
  const auto* const half = check.Get<double>("SOLID", {"belly_plate_vintar"},
                                             "octahedron_half_height");
  places.TellWhere(
      [&](const TVector3& plate) {
        std::string problem =
            places.ProblemAt(plate.Mag(), vessel.inner, "the centre");
        if (problem.empty() && half != nullptr && *half > 0.0 &&
            std::abs(plate.Z()) >= *half) {
          problem = "z is not within octahedron_half_height, " +
                    TextOfDistance(*half);
        }
        return problem;
      },
      "plates are on the outer surface, with z = 0");
  places.TellDuplicates();
}

void CheckNCDAnchors(TableCheck& check, const Vessel& vessel) {
  PlaceCheck places(check, vessel, eShadowingComponent::kNCDAnchor,
                    "GEO_LOCATIONS", {"inner_av", "ncd_anchor_locations"});
  if (places.AreInMetres()) return;
  const auto* const half = check.Get<double>(
      "SOLID", {"inner_av", "ncd_anchor_definition"}, "half_z");
  // An anchor touches the wall.
  const double reach = half == nullptr ? 0.0 : std::max(*half, 0.0);
  places.TellWhere(
      [&](const TVector3& anchor) {
        return places.ProblemAt(anchor.Mag(), vessel.inner - reach,
                                "the centre");
      },
      "anchors are at the wall");
  places.TellDuplicates();
}

void CheckAVPipes(TableCheck& check, const Vessel& vessel) {
  for (const char* const pipe :
       {"av_pipe-1", "av_pipe-2", "av_pipe-3", "av_pipe-4", "av_pipe-labs",
        "av_pipe-6", "av_pipe-labr"}) {
    PlaceCheck places(check, vessel, eShadowingComponent::kAVPipe, "SOLID",
                      {pipe}, eSeverity::kNote);
    if (places.AreInMetres()) continue;
    places.TellWhere(
        [&](const TVector3& corner) {
          return places.ProblemAt(corner.Mag(), vessel.inner, "the centre",
                                  kFarthestCorner);
        },
        "pipes run outside the vessel; no verdict depends on it");
  }
}

/// The template rope, whose points have their own rules.
class TemplateCheck {
 public:
  TemplateCheck(TableCheck& check, const Vessel& vessel)
      : check_(check), vessel_(vessel) {}

  void Check() {
    const TableIndex rope = {"hold_down_ropes", "solid_definition"};
    const auto points = check_.Positions("SOLID", rope, "rope_");
    if (!points.has_value() || points->size() < 6) return;
    index_ = *check_.IndexOf(rope);
    const bool areSmall =
        std::all_of(points->begin(), points->end(), [this](const auto& point) {
          return point.Mag() < kLooksLikeMetres * vessel_.outer;
        });
    if (areSmall) {
      Tell(*points, 1,
           "looks like m beside a vessel of " + TextOfDistance(vessel_.outer),
           "lengths are in mm");
      return;
    }
    const double highest = HighestFoot(check_, rope);
    for (const std::size_t top : {std::size_t{1}, std::size_t{4}}) {
      CheckLegTop(*points, top, highest);
    }
    for (const std::size_t ring : {std::size_t{2}, std::size_t{3}}) {
      const double distance = (*points)[ring].Mag();
      if (distance <= vessel_.outer) continue;
      Tell(*points, ring,
           "is outside the vessel of " + TextOfDistance(vessel_.outer) + ", " +
               TextOfDistance(distance) + " from the centre",
           "P2 and P3 are less than the outer radius from the centre");
    }
    CheckSides(*points);
  }

 private:
  void CheckLegTop(const Positions& points, std::size_t top, double highest) {
    const TVector3& point = points[top];
    const double distance = point.Perp();
    const std::string from = TextOfDistance(distance) + " from the axis";
    const std::string radius = TextOfDistance(vessel_.outer);
    const std::string remedy =
        "P1 and P4 are just outside the wall, with z near 0";
    if (distance < vessel_.outer - kSamePlace) {
      Tell(points, top, "is inside the vessel of " + radius + ", " + from,
           remedy);
    } else if (distance > (1.0 + kFarFromWall) * vessel_.outer) {
      Tell(points, top, "is far from the vessel of " + radius + ", " + from,
           remedy);
    } else if (const std::string problem = WhyNothingIsBlocked(point, highest);
               !problem.empty()) {
      Tell(points, top, "has a leg that blocks nothing: " + problem, remedy);
    }
  }

  /// The rope passes the neck at the azimuth half way between P1 and P4, which
  /// is not defined if they are opposite.
  void CheckSides(const Positions& points) {
    constexpr double kOpposite =
        175.0;  // degrees; 146 in the reference detector
    const TVector3 first(points[1].X(), points[1].Y(), 0.0);
    const TVector3 last(points[4].X(), points[4].Y(), 0.0);
    if (first.Mag() == 0.0 || last.Mag() == 0.0) return;
    const double apart = kDegreesPerRadian * first.Angle(last);
    if (!(apart > kOpposite)) return;
    Tell(points, 4,
         "is on the other side of the axis than P1, " +
             TextOf(std::round(apart * 10.0) / 10.0) + " degrees from it",
         "the rope passes the neck half way between them");
  }

  void Tell(const Positions& points, std::size_t at, const std::string& problem,
            const std::string& remedy) {
    if (!std::isfinite(points[at].Mag2())) return;
    check_.Tell(eSeverity::kWarning,
                {eShadowingComponent::kAVHDRope, "SOLID", index_},
                {"point P" + std::to_string(at) + " of the rope " + problem,
                 TextOf(points[at]), remedy});
  }

  TableCheck& check_;
  Vessel vessel_;
  std::string index_;
};

}  // namespace

void FindImplausiblePlaces(TableCheck& check) {
  const auto vessel = SoundVessel(check);
  if (!vessel.has_value()) return;
  TemplateCheck(check, *vessel).Check();
  CheckSupportRopes(check, *vessel);
  CheckBellyPlates(check, *vessel);
  CheckNCDAnchors(check, *vessel);
  CheckAVPipes(check, *vessel);
}

}  // namespace ZARN::DU

// Radii, heights, wavelengths and refractive indices that are hardly meant.

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <variant>
#include <vector>

#include "du/tables/FindingText.hpp"
#include "du/tables/TableCheck.hpp"
#include "du/tables/Vessel.hpp"

namespace ZARN::DU {
namespace {

/// The smallest radius of a rope or pipe, and half height of a ring of the
/// boss, mm: one of 2 mm carries nothing. In m those of any detector are below
/// this.
constexpr double kThinnest = 1.0;
/// The smallest half size of a plate or an anchor, and radius of the neck, mm.
/// In m those of any detector are below this.
constexpr double kSmallestPart = 5.0;
/// The longest support rope, in outer radii: from the equator of the vessel it
/// goes to the deck above.
constexpr double kLongestRope = 10.0;
/// The lowest base of the boss, in inner radii: the edge of its cap is then 60
/// degrees from the axis, far from the neck. In the reference detector it is
/// 0.99, in the smallest detector of the examples 0.97.
constexpr double kLowestBoss = 0.5;

/// Of transparent materials; diamond has 2.4.
constexpr double kHighestIndex = 3.0;
/// Water and acrylic transmit no light outside these wavelengths, nm. In um the
/// light of a detector has 0.2 to 1, in pm more than 100000.
constexpr double kShortestWavelength = 100.0;
constexpr double kLongestWavelength = 5000.0;

const TableIndex kInner = {"acrylic_vessel_inner"};
const TableIndex kOuter = {"acrylic_vessel_outer"};

bool IsFinite(const TableField& field) {
  if (const auto* const number = std::get_if<double>(&field)) {
    return std::isfinite(*number);
  }
  const auto* const array = std::get_if<std::vector<double>>(&field);
  return array == nullptr ||
         std::all_of(array->begin(), array->end(),
                     [](double number) { return std::isfinite(number); });
}

bool IsWallTooThick(double inner, double outer) {
  return std::isfinite(outer) && outer - inner > kThickestWall * outer;
}

/// Tables from JSON have finite numbers; those of a program may not.
void FindNotFinite(TableCheck& check) {
  std::set<std::tuple<std::string, std::string, std::string>> told;
  for (const KnownField& known : KnownFields()) {
    // Media refuse such numbers.
    if (!check.Reads(known) || known.table == std::string("OPTICS")) continue;
    const auto index = check.IndexOf(known.index);
    if (!index.has_value()) continue;
    const TableEntry* const entry = check.Find(known.table, *index);
    if (entry == nullptr) continue;
    const auto field = entry->fields.find(known.field);
    if (field == entry->fields.end() || IsFinite(field->second)) continue;
    if (!told.insert({known.table, *index, known.field}).second) continue;
    check.Tell(known.use == eFieldUse::kDrawings ? eSeverity::kNote
                                                 : eSeverity::kWarning,
               {known.component, known.table, *index, known.field},
               {"a value is not finite", TextOf(field->second),
                std::string("write finite numbers in ") + known.unit});
  }
}

/// Tells what is wrong with the numbers of one component.
class SizeCheck {
 public:
  SizeCheck(TableCheck& check, eShadowingComponent component)
      : check_(check), component_(component), vessel_(SoundVessel(check)) {}

  /// Compare a size with the smallest and largest one that make sense, mm.
  void Size(const std::string& table, const TableIndex& index,
            const std::string& field, double smallest, double largest,
            eSeverity severity = eSeverity::kWarning) {
    const auto* const size = check_.Get<double>(table, index, field);
    if (size == nullptr || !std::isfinite(*size)) return;
    if (IsVesselInMetres(check_)) return;
    const FindingSubject subject = {component_, table, *check_.IndexOf(index),
                                    field};
    const std::string value = TextOf(*size);
    if (*size <= 0.0) {
      check_.Tell(
          severity, subject,
          {*size < 0.0 ? "the length is negative" : "the length is zero", value,
           "write a length in mm, > 0"});
    } else if (*size < smallest) {
      check_.Tell(severity, subject,
                  {"the length looks like m", value,
                   "lengths are in mm: " + TextOf(*size * 1000.0) + "?"});
    } else if (*size > largest) {
      check_.Tell(severity, subject,
                  {"the length is too large for a vessel of " +
                       TextOf(vessel_->outer) + " mm",
                   value, "write a length in mm"});
    }
  }

  /// The same, in shares of the outer radius. Nothing without a vessel.
  void SizeByVessel(const std::string& table, const TableIndex& index,
                    const std::string& field, double smallestShare,
                    double largestShare,
                    eSeverity severity = eSeverity::kWarning) {
    const double outer = vessel_.has_value() ? vessel_->outer : 0.0;
    const double none = std::numeric_limits<double>::infinity();
    Size(table, index, field, smallestShare * outer,
         vessel_.has_value() ? largestShare * outer : none, severity);
  }

  /// The largest length of a part that hangs on the wall.
  double LargestOnWall() const {
    return vessel_.has_value() ? kFarFromWall * vessel_->outer
                               : std::numeric_limits<double>::infinity();
  }
  /// ... and of one that is on it.
  double LargestOnVessel() const {
    return vessel_.has_value() ? vessel_->outer
                               : std::numeric_limits<double>::infinity();
  }

 private:
  TableCheck& check_;
  eShadowingComponent component_;
  std::optional<Vessel> vessel_;
};

void CheckRadius(TableCheck& check, const TableIndex& index) {
  const auto* const radius = check.Get<double>("SOLID", index, "r_sphere");
  if (radius == nullptr) return;
  const FindingSubject subject = {eShadowingComponent::kNone, "SOLID",
                                  index.name, "r_sphere"};
  if (!(*radius > 0.0) || !std::isfinite(*radius)) {
    check.Tell(check.SeverityForLight(), subject,
               {"the radius is not a finite number > 0", TextOf(*radius),
                "write the radius in mm"});
  } else if (*radius < kSmallestVessel) {
    check.Tell(eSeverity::kWarning, subject,
               {"the radius looks like m", TextOf(*radius),
                "all lengths are in mm: " + TextOf(*radius * 1000.0) + "?"});
  }
}

void CheckWall(TableCheck& check, const double* inner, const double* outer) {
  if (inner == nullptr || outer == nullptr || !(*inner >= kSmallestVessel) ||
      !IsWallTooThick(*inner, *outer)) {
    return;
  }
  check.Tell(eSeverity::kWarning,
             {eShadowingComponent::kNone, "SOLID", kOuter.name, "r_sphere"},
             {"the wall is too thick: the inner radius is " + TextOf(*inner),
              TextOf(*outer), "write both radii in mm"});
}

void CheckVessel(TableCheck& check) {
  CheckRadius(check, kInner);
  CheckRadius(check, kOuter);
  const auto* const inner = check.Get<double>("SOLID", kInner, "r_sphere");
  const auto* const outer = check.Get<double>("SOLID", kOuter, "r_sphere");
  if (inner != nullptr && outer != nullptr && *inner > 0.0 && *outer > 0.0 &&
      *outer <= *inner) {
    check.Tell(check.SeverityForLight(),
               {eShadowingComponent::kNone, "SOLID", kOuter.name, "r_sphere"},
               {"the outer radius is not larger than the inner radius, " +
                    TextOf(*inner),
                TextOf(*outer), "the wall is between them"});
  }
  CheckWall(check, inner, outer);
  const auto vessel = SoundVessel(check);
  const auto* const neck = check.Get<double>("SOLID", kOuter, "r_neck");
  if (vessel.has_value() && neck != nullptr && std::isfinite(*neck) &&
      *neck >= vessel->inner) {
    check.Tell(
        eSeverity::kWarning,
        {eShadowingComponent::kNone, "SOLID", kOuter.name, "r_neck"},
        {"the neck is not narrower than the vessel, " + TextOf(vessel->inner),
         TextOf(*neck), "write the radius of the neck in mm"});
    return;
  }
  SizeCheck(check, eShadowingComponent::kNone)
      .Size("SOLID", kOuter, "r_neck", kSmallestPart,
            std::numeric_limits<double>::infinity());
}

void CheckRopes(TableCheck& check) {
  const TableIndex down = {"hold_down_ropes", "solid_definition"};
  const TableIndex up = {"hold_up_ropes", "solid_definition"};
  SizeCheck downRopes(check, eShadowingComponent::kAVHDRope);
  downRopes.Size("SOLID", down, "r_rope", kThinnest, downRopes.LargestOnWall());
  SizeCheck upRopes(check, eShadowingComponent::kSupportRope);
  upRopes.Size("SOLID", up, "r_rope", kThinnest, upRopes.LargestOnWall());
  upRopes.SizeByVessel("SOLID", up, "z_rope", kLooksLikeMetres, kLongestRope,
                       eSeverity::kNote);
}

void CheckPlatesAndAnchors(TableCheck& check) {
  // The support ropes read it first.
  SizeCheck plates(check, eShadowingComponent::kSupportRope);
  plates.Size("SOLID", {"belly_plate_vintar"}, "octahedron_half_height",
              kSmallestPart, plates.LargestOnVessel());
  const TableIndex anchor = {"inner_av", "ncd_anchor_definition"};
  SizeCheck anchors(check, eShadowingComponent::kNCDAnchor);
  anchors.Size("SOLID", anchor, "half_z", kSmallestPart,
               anchors.LargestOnWall());
  anchors.Size("SOLID", anchor, "r_max", kSmallestPart, anchors.LargestOnWall(),
               eSeverity::kNote);
  SizeCheck pipes(check, eShadowingComponent::kAVPipe);
  for (const char* const pipe : {"av_pipe-1", "av_pipe-labs"}) {
    pipes.Size("SOLID", {pipe}, "r_max", kThinnest, pipes.LargestOnWall(),
               eSeverity::kNote);
  }
}

void CheckNeckBoss(TableCheck& check) {
  const FindingSubject subject = {eShadowingComponent::kNeckBoss, "GEO", "av",
                                  "neck_boss_z"};
  const TableIndex solid = {"neck_boss"};
  const auto* const z = check.Get<double>("GEO", {"av"}, "neck_boss_z");
  const auto* const half1 = check.Get<double>("SOLID", solid, "half_height1");
  const auto* const half2 = check.Get<double>("SOLID", solid, "half_height2");
  SizeCheck sizes(check, eShadowingComponent::kNeckBoss);
  for (const char* const field : {"half_height1", "half_height2"}) {
    const auto* const half = check.Get<double>("SOLID", solid, field);
    if (half != nullptr && *half == 0.0) continue;  // a boss of one ring
    sizes.Size("SOLID", solid, field, kThinnest, sizes.LargestOnVessel());
  }
  const auto vessel = SoundVessel(check);
  if (!vessel.has_value() || z == nullptr || half1 == nullptr ||
      half2 == nullptr) {
    return;
  }
  if (*z > 0.0 && *z < kLooksLikeMetres * vessel->outer) {
    check.Tell(eSeverity::kWarning, subject,
               {"the height looks like m beside a vessel of " +
                    TextOf(vessel->outer) + " mm",
                TextOf(*z), "lengths are in mm: " + TextOf(*z * 1000.0) + "?"});
    return;
  }
  const double base = *z - (*half1 + *half2);
  if (!std::isfinite(base)) return;  // told as not finite
  const std::string itsBase = "its base, half_height1 + half_height2 below, ";
  if (base >= vessel->inner) {
    check.Tell(eSeverity::kWarning, subject,
               {"the boss blocks nothing: " + itsBase +
                    "is above the inner surface, " + TextOf(vessel->inner),
                TextOf(*z), "write the height of the boss in mm"});
  } else if (base < kLowestBoss * vessel->inner) {
    check.Tell(
        eSeverity::kWarning, subject,
        {"the boss is far below the top of the vessel, " +
             TextOf(vessel->inner) + ": " + itsBase + "is at " + TextOf(base),
         TextOf(*z), "write the height of the boss in mm"});
  }
}

void CheckIndices(TableCheck& check, const TableIndex& medium) {
  const std::string field = "refractive_index";
  const FindingSubject subject = {eShadowingComponent::kNone, "OPTICS",
                                  medium.name, field};
  const auto* const one = check.Get<double>("OPTICS", medium, field);
  const auto* const many =
      check.Get<std::vector<double>>("OPTICS", medium, field);
  const double highest = one != nullptr ? *one
                         : many != nullptr && !many->empty()
                             ? *std::max_element(many->begin(), many->end())
                             : 1.0;
  if (!(highest > kHighestIndex)) return;
  check.Tell(
      eSeverity::kWarning, subject,
      {"no such material has a refractive index above " + TextOf(kHighestIndex),
       TextOf(highest), "write the refractive index"});
}

void CheckWavelengths(TableCheck& check, const TableIndex& medium) {
  const auto* const indices =
      check.Get<std::vector<double>>("OPTICS", medium, "refractive_index");
  const auto* const lengths =
      check.Get<std::vector<double>>("OPTICS", medium, "wavelength");
  if (indices == nullptr || lengths == nullptr || lengths->empty()) return;
  if (lengths->back() >= kShortestWavelength &&
      lengths->front() <= kLongestWavelength) {
    return;
  }
  check.Tell(eSeverity::kWarning,
             {eShadowingComponent::kNone, "OPTICS", medium.name, "wavelength"},
             {"these do not look like nm", TextOf(TableField(*lengths)),
              "write wavelengths in nm: visible light has 400 to 700"});
}

}  // namespace

std::optional<Vessel> SoundVessel(const TableCheck& check) {
  const auto* const inner = check.Get<double>("SOLID", kInner, "r_sphere");
  const auto* const outer = check.Get<double>("SOLID", kOuter, "r_sphere");
  if (inner == nullptr || outer == nullptr) return std::nullopt;
  if (!(*inner >= kSmallestVessel && *outer > *inner) ||
      !std::isfinite(*outer) || IsWallTooThick(*inner, *outer)) {
    return std::nullopt;
  }
  return Vessel{*inner, *outer};
}

bool IsVesselInMetres(const TableCheck& check) {
  for (const TableIndex& index : {kInner, kOuter}) {
    const auto* const radius = check.Get<double>("SOLID", index, "r_sphere");
    if (radius != nullptr && *radius > 0.0 && *radius < kSmallestVessel) {
      return true;
    }
  }
  return false;
}

void FindImplausibleSizes(TableCheck& check) {
  FindNotFinite(check);
  CheckVessel(check);
  for (const char* const medium : {"inner_av", "acrylic", "water"}) {
    CheckIndices(check, {medium});
    CheckWavelengths(check, {medium});
  }
  CheckRopes(check);
  CheckPlatesAndAnchors(check);
  CheckNeckBoss(check);
}

}  // namespace ZARN::DU

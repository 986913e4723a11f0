// Arrays of unequal length, too short, or empty; and what media refuse.

#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "db/DBErrors.hpp"
#include "du/tables/FindingText.hpp"
#include "du/tables/TableCheck.hpp"
#include "lightpath/OpticalMedium.hpp"

namespace ZARN::DU {
namespace {

/// Points of a template rope: P0 to P5. Further ones are not used.
constexpr std::size_t kTemplatePoints = 6;

/// What an entry with three parallel arrays needs.
struct LengthRule {
  std::size_t least;
  const char* tooShort;  // what is wrong with fewer
};

LengthRule RuleOf(const KnownField& x) {
  if (x.component == eShadowingComponent::kAVHDRope) {
    return {kTemplatePoints, "the template rope has fewer than six points"};
  }
  if (x.component == eShadowingComponent::kAVPipe) {
    return {1, "the pipe has no points"};
  }
  return {1, "there are no positions"};
}

void CheckCoordinates(TableCheck& check, const KnownField& x,
                      const std::string& index) {
  const std::string prefix(x.field, std::string(x.field).size() - 1);
  std::vector<std::string> names;
  std::vector<std::size_t> lengths;
  std::vector<std::string> texts;
  for (const char* const axis : {"x", "y", "z"}) {
    names.push_back(prefix + axis);
    const auto* const array =
        check.Get<std::vector<double>>(x.table, x.index, names.back());
    if (array == nullptr) return;  // told as missing
    lengths.push_back(array->size());
    texts.push_back(std::to_string(array->size()));
  }
  FindingSubject subject = {x.component, x.table, index};
  if (lengths[0] != lengths[1] || lengths[0] != lengths[2]) {
    // If two are equal, the third is the one to look at.
    if (lengths[1] == lengths[2]) subject.field = names[0];
    if (lengths[0] == lengths[2]) subject.field = names[1];
    if (lengths[0] == lengths[1]) subject.field = names[2];
    check.Tell(eSeverity::kError, subject,
               {TextOfList(names) + " have different lengths",
                TextOfList(texts), "write one number of each for every point"});
    return;
  }
  if (x.component == eShadowingComponent::kAVHDRope &&
      lengths[0] > kTemplatePoints) {
    check.Tell(eSeverity::kWarning, subject,
               {"the template rope has more than six points", texts[0],
                "only P0 to P5 are used"});
  }
  const LengthRule rule = RuleOf(x);
  if (lengths[0] >= rule.least) return;
  check.Tell(
      eSeverity::kError, subject,
      {rule.tooShort, lengths[0] == 0 ? "" : texts[0],
       rule.least == 1 ? "write at least one" : "write the points P0 to P5"});
}

}  // namespace

void FindWrongLengths(TableCheck& check) {
  std::set<std::tuple<std::string, std::string, std::string>> told;
  for (const KnownField& field : KnownFields()) {
    if (field.type != eFieldType::kNumbers || !check.Reads(field)) continue;
    const auto index = check.IndexOf(field.index);
    const std::string name = field.field;
    if (!index.has_value()) continue;
    if (name == "roll") {
      const auto* const rolls =
          check.Get<std::vector<double>>(field.table, field.index, name);
      if (rolls == nullptr || !rolls->empty()) continue;
      check.Tell(eSeverity::kError,
                 {field.component, field.table, *index, name},
                 {"there are no rolls, so no ropes", "[]",
                  "write one roll for each rope, in degrees"});
    } else if (name.back() == 'x' &&
               told.insert({field.table, *index, name}).second) {
      CheckCoordinates(check, field, *index);
    }
  }
}

void FindWrongMedia(TableCheck& check) {
  if (!check.HasMedia()) return;
  for (const char* const medium : {"inner_av", "acrylic", "water"}) {
    const TableEntry* const entry = check.Find("OPTICS", medium);
    if (entry == nullptr) continue;  // told as missing
    TableSet alone;
    alone.Add({*entry});
    alone.SetRun(check.Run());
    try {
      OpticalMedium::Read(alone, medium);
    } catch (const DBNotFoundError&) {
      // Told as missing or of the wrong type.
    } catch (const DBValueError& error) {
      check.Tell(
          eSeverity::kError,
          {eShadowingComponent::kNone, "OPTICS", medium, error.Field()},
          {"this " + error.Reason(), TextOf(entry->fields.at(error.Field())),
           error.Field() == "wavelength"
               ? "write increasing wavelengths in nm"
               : "write one refractive index for each wavelength, "
                 "or one number for all"});
    }
  }
}

}  // namespace ZARN::DU

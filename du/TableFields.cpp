#include "du/TableFields.hpp"

namespace ZARN::DU {
namespace {

using Fields = std::vector<KnownField>;

constexpr auto kNumber = eFieldType::kNumber;
constexpr auto kNumbers = eFieldType::kNumbers;
constexpr auto kString = eFieldType::kString;

void AddPositions(Fields& fields, eShadowingComponent component,
                  const char* table, TableIndex index,
                  eFieldUse use = eFieldUse::kVerdicts) {
  for (const char* const field : {"x", "y", "z"}) {
    fields.push_back({component, table, index, field, kNumbers, "mm", use});
  }
}

void AddVessel(Fields& fields) {
  constexpr auto kVessel = eShadowingComponent::kNone;
  fields.push_back(
      {kVessel, "SOLID", {"acrylic_vessel_inner"}, "r_sphere", kNumber, "mm"});
  fields.push_back(
      {kVessel, "SOLID", {"acrylic_vessel_outer"}, "r_sphere", kNumber, "mm"});
  fields.push_back(
      {kVessel, "SOLID", {"acrylic_vessel_outer"}, "r_neck", kNumber, "mm"});
}

void AddMedia(Fields& fields) {
  for (const char* const medium : {"inner_av", "acrylic", "water"}) {
    fields.push_back({eShadowingComponent::kNone,
                      "OPTICS",
                      {medium},
                      "refractive_index",
                      eFieldType::kNumberOrNumbers,
                      ""});
    fields.push_back({eShadowingComponent::kNone,
                      "OPTICS",
                      {medium},
                      "wavelength",
                      kNumbers,
                      "nm",
                      eFieldUse::kOptional});
  }
}

void AddHoldDownRopes(Fields& fields) {
  constexpr auto kReader = eShadowingComponent::kAVHDRope;
  constexpr TableIndex kRopes = {"hold_down_ropes"};
  constexpr TableIndex kRope = {"hold_down_ropes", "solid_definition"};
  fields.push_back({kReader, "GEO", kRopes, "solid_definition", kString, ""});
  fields.push_back({kReader, "SOLID", kRope, "r_rope", kNumber, "mm"});
  for (const char* const field : {"rope_x", "rope_y", "rope_z"}) {
    fields.push_back({kReader, "SOLID", kRope, field, kNumbers, "mm"});
  }
  fields.push_back({kReader, "GEO", kRopes, "locations", kString, ""});
  fields.push_back({kReader,
                    "GEO_LOCATIONS",
                    {"hold_down_ropes", "locations"},
                    "roll",
                    kNumbers,
                    "degrees"});
}

void AddSupportRopes(Fields& fields) {
  constexpr auto kReader = eShadowingComponent::kSupportRope;
  constexpr TableIndex kRopes = {"hold_up_ropes"};
  constexpr TableIndex kRope = {"hold_up_ropes", "solid_definition"};
  fields.push_back({kReader, "GEO", kRopes, "solid_definition", kString, ""});
  fields.push_back({kReader, "SOLID", kRope, "r_rope", kNumber, "mm"});
  fields.push_back(
      {kReader, "SOLID", kRope, "z_rope", kNumber, "mm", eFieldUse::kDrawings});
  fields.push_back({kReader,
                    "SOLID",
                    {"belly_plate_vintar"},
                    "octahedron_half_height",
                    kNumber,
                    "mm"});
  fields.push_back({kReader, "GEO", kRopes, "locations", kString, ""});
  AddPositions(fields, kReader, "GEO_LOCATIONS",
               {"hold_up_ropes", "locations"});
}

void AddBellyPlates(Fields& fields) {
  constexpr auto kReader = eShadowingComponent::kBellyPlate;
  fields.push_back({kReader,
                    "SOLID",
                    {"belly_plate_vintar"},
                    "octahedron_half_height",
                    kNumber,
                    "mm"});
  fields.push_back(
      {kReader, "GEO", {"inner_av"}, "belly_plate_locations", kString, ""});
  AddPositions(fields, kReader, "GEO_LOCATIONS",
               {"inner_av", "belly_plate_locations"});
}

void AddNCDAnchors(Fields& fields) {
  constexpr auto kReader = eShadowingComponent::kNCDAnchor;
  constexpr TableIndex kAnchor = {"inner_av", "ncd_anchor_definition"};
  fields.push_back(
      {kReader, "GEO", {"inner_av"}, "ncd_anchor_definition", kString, ""});
  fields.push_back({kReader, "SOLID", kAnchor, "half_z", kNumber, "mm"});
  fields.push_back({kReader, "SOLID", kAnchor, "r_max", kNumber, "mm",
                    eFieldUse::kDrawings});
  fields.push_back(
      {kReader, "GEO", {"inner_av"}, "ncd_anchor_locations", kString, ""});
  AddPositions(fields, kReader, "GEO_LOCATIONS",
               {"inner_av", "ncd_anchor_locations"});
}

void AddAVPipes(Fields& fields) {
  constexpr auto kReader = eShadowingComponent::kAVPipe;
  constexpr auto kDrawings = eFieldUse::kDrawings;
  for (const char* const pipe : {"av_pipe-1", "av_pipe-labs"}) {
    fields.push_back(
        {kReader, "SOLID", {pipe}, "r_max", kNumber, "mm", kDrawings});
  }
  for (const char* const pipe :
       {"av_pipe-1", "av_pipe-2", "av_pipe-3", "av_pipe-4", "av_pipe-labs",
        "av_pipe-6", "av_pipe-labr"}) {
    AddPositions(fields, kReader, "SOLID", {pipe}, kDrawings);
  }
}

void AddNeckBoss(Fields& fields) {
  constexpr auto kReader = eShadowingComponent::kNeckBoss;
  fields.push_back({kReader, "GEO", {"av"}, "neck_boss_z", kNumber, "mm"});
  for (const char* const field : {"half_height1", "half_height2"}) {
    fields.push_back({kReader, "SOLID", {"neck_boss"}, field, kNumber, "mm"});
  }
}

/// What the tables of a detector may have besides.
void AddOthers(Fields& fields) {
  constexpr auto kOther = eFieldUse::kOther;
  for (const char* const pipe :
       {"av_pipe-2", "av_pipe-3", "av_pipe-4", "av_pipe-6", "av_pipe-labr"}) {
    fields.push_back({eShadowingComponent::kNone,
                      "SOLID",
                      {pipe},
                      "r_max",
                      kNumber,
                      "mm",
                      kOther});
  }
  AddPositions(fields, eShadowingComponent::kNone, "PMT", {"positions"},
               kOther);
  for (const char* const field :
       {"direction_x", "direction_y", "direction_z"}) {
    fields.push_back({eShadowingComponent::kNone,
                      "PMT",
                      {"positions"},
                      field,
                      kNumbers,
                      "",
                      kOther});
  }
}

Fields MakeFields() {
  Fields fields;
  AddVessel(fields);
  AddMedia(fields);
  AddHoldDownRopes(fields);
  AddSupportRopes(fields);
  AddBellyPlates(fields);
  AddNCDAnchors(fields);
  AddAVPipes(fields);
  AddNeckBoss(fields);
  AddOthers(fields);
  return fields;
}

}  // namespace

const char* NameOf(eFieldType type) {
  switch (type) {
    case eFieldType::kNumber:
      return "a number";
    case eFieldType::kNumbers:
      return "an array of numbers";
    case eFieldType::kNumberOrNumbers:
      return "a number or an array of numbers";
    case eFieldType::kString:
      break;
  }
  return "a string";
}

const std::vector<KnownField>& KnownFields() {
  static const Fields fields = MakeFields();
  return fields;
}

}  // namespace ZARN::DU

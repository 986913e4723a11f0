#include "tests/property/DamagedTables.hpp"

#include <array>
#include <string>
#include <vector>

namespace ZARN::Testing {

namespace {

struct Field {
  const char* table;
  const char* index;
  const char* field;
};

/// Every field that the calculator reads, except those of the vessel.
constexpr std::array kFields = {
    Field{"GEO", "hold_down_ropes", "solid_definition"},
    Field{"GEO", "hold_down_ropes", "locations"},
    Field{"SOLID", "down_rope", "r_rope"},
    Field{"SOLID", "down_rope", "rope_x"},
    Field{"SOLID", "down_rope", "rope_y"},
    Field{"SOLID", "down_rope", "rope_z"},
    Field{"GEO_LOCATIONS", "down_rolls", "roll"},
    Field{"GEO", "hold_up_ropes", "solid_definition"},
    Field{"GEO", "hold_up_ropes", "locations"},
    Field{"SOLID", "up_rope", "r_rope"},
    Field{"SOLID", "up_rope", "z_rope"},
    Field{"GEO_LOCATIONS", "up_places", "x"},
    Field{"GEO_LOCATIONS", "up_places", "y"},
    Field{"GEO_LOCATIONS", "up_places", "z"},
    Field{"SOLID", "belly_plate_vintar", "octahedron_half_height"},
    Field{"GEO", "inner_av", "belly_plate_locations"},
    Field{"GEO_LOCATIONS", "plates", "x"},
    Field{"GEO_LOCATIONS", "plates", "y"},
    Field{"GEO_LOCATIONS", "plates", "z"},
    Field{"GEO", "inner_av", "ncd_anchor_definition"},
    Field{"GEO", "inner_av", "ncd_anchor_locations"},
    Field{"SOLID", "anchor", "half_z"},
    Field{"SOLID", "anchor", "r_max"},
    Field{"GEO_LOCATIONS", "anchors", "x"},
    Field{"GEO_LOCATIONS", "anchors", "y"},
    Field{"GEO_LOCATIONS", "anchors", "z"},
    Field{"SOLID", "av_pipe-1", "r_max"},
    Field{"SOLID", "av_pipe-1", "x"},
    Field{"SOLID", "av_pipe-2", "y"},
    Field{"SOLID", "av_pipe-3", "z"},
    Field{"SOLID", "av_pipe-4", "x"},
    Field{"SOLID", "av_pipe-labs", "r_max"},
    Field{"SOLID", "av_pipe-labs", "y"},
    Field{"SOLID", "av_pipe-6", "z"},
    Field{"SOLID", "av_pipe-labr", "x"},
    Field{"GEO", "av", "neck_boss_z"},
    Field{"SOLID", "neck_boss", "half_height1"},
    Field{"SOLID", "neck_boss", "half_height2"}};

constexpr std::array kVesselFields = {
    Field{"SOLID", "acrylic_vessel_inner", "r_sphere"},
    Field{"SOLID", "acrylic_vessel_outer", "r_sphere"},
    Field{"SOLID", "acrylic_vessel_outer", "r_neck"}};

void Damage(Tables& tables, const Field& f, Random& random) {
  switch (random.Below(7)) {
    case 0:
    case 1:
      tables.RemoveField(f.table, f.index, f.field);
      break;
    case 2:
      tables.Remove(f.table, f.index);
      break;
    case 3:
      tables.Set(f.table, f.index, f.field, std::string("nowhere"));
      break;
    case 4:
      tables.Set(f.table, f.index, f.field, 17.0);
      break;
    case 5:
      tables.Set(f.table, f.index, f.field, std::vector<double>{});
      break;
    default:
      tables.Set(f.table, f.index, f.field, std::vector<double>{1.0, 2.0});
  }
}

}  // namespace

void DamageAField(Tables& tables, Random& random) {
  Damage(tables, random.Pick(kFields), random);
}

void DamageAVesselField(Tables& tables, Random& random) {
  Damage(tables, random.Pick(kVesselFields), random);
}

void LeaveSomeOut(Tables& tables, Random& random) {
  const double share = random.Pick(std::array{0.3, 0.6, 0.85});
  std::array<bool, 6> isOut = {};
  if (random.Chance(0.5)) {
    isOut.fill(true);
    isOut[random.Below(isOut.size())] = false;
  } else {
    for (bool& out : isOut) out = random.Chance(share);
  }
  if (isOut[0]) tables.Remove("GEO", "hold_down_ropes");
  if (isOut[1]) tables.Remove("GEO", "hold_up_ropes");
  if (isOut[2]) tables.RemoveField("GEO", "inner_av", "belly_plate_locations");
  if (isOut[3]) tables.RemoveField("GEO", "inner_av", "ncd_anchor_locations");
  if (isOut[4]) tables.Remove("SOLID", "av_pipe-3");
  if (isOut[5]) tables.Remove("GEO", "av");
}

}  // namespace ZARN::Testing

#include "tests/property/Detectors.hpp"

#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "tests/property/DamagedTables.hpp"
#include "tests/reference/PlainConstants.hpp"

namespace ZARN::Testing {

using Reference::kPi;

namespace {

constexpr std::array kPipes = {"av_pipe-1",   "av_pipe-2",    "av_pipe-3",
                               "av_pipe-4",   "av_pipe-labs", "av_pipe-6",
                               "av_pipe-labr"};

/// The numbers of a geometry, before they become tables.
struct Numbers {
  double innerRadius = 5800.0;
  double outerRadius = 5860.0;
  double neckRadius = 700.0;
  double holdDownRadius = 12.0;
  std::vector<TVector3> rope;
  std::vector<double> rollDegrees;
  double supportRadius = 15.0;
  double supportLength = 6090.0;
  std::vector<TVector3> supports;
  double plateHalfHeight = 600.0;
  std::vector<TVector3> plates;
  double anchorHalfZ = 60.0;
  double anchorRadius = 40.0;
  std::vector<TVector3> anchors;
  double pipeRadius = 25.0;
  double labsRadius = 33.0;
  std::array<std::vector<TVector3>, 7> pipes;
  double bossZ = 5850.0;
  double bossHalfHeight1 = 70.0;
  double bossHalfHeight2 = 50.0;

  std::vector<double*> Scalars() {
    return {&innerRadius,     &outerRadius,    &neckRadius,
            &holdDownRadius,  &supportRadius,  &supportLength,
            &plateHalfHeight, &anchorHalfZ,    &anchorRadius,
            &pipeRadius,      &labsRadius,     &bossZ,
            &bossHalfHeight1, &bossHalfHeight2};
  }
  std::vector<std::vector<TVector3>*> Lists() {
    std::vector<std::vector<TVector3>*> lists = {&rope, &supports, &plates,
                                                 &anchors};
    for (auto& pipe : pipes) lists.push_back(&pipe);
    return lists;
  }
};

TVector3 Cylindrical(double rho, double phi, double z) {
  return {rho * std::cos(phi), rho * std::sin(phi), z};
}

/// A height of the size of those near the equator, zero included.
double SmallHeight(Random& random) {
  constexpr std::array kHeights = {0.0, 5.0, 5.0, -5.0, 300.0, -400.0};
  return random.Chance(0.8) ? random.Pick(kHeights)
                            : random.Uniform(-800.0, 800.0);
}

void MakeHoldDownRopes(Numbers& n, Random& random) {
  constexpr std::array kRadii = {12.0, 12.0, 2.0, 0.0, 80.0};
  n.holdDownRadius = random.Pick(kRadii);
  const double rho = n.outerRadius + random.Uniform(5.0, 40.0);
  // On the axes sines and cosines are exact, and so are the limits.
  const double from = random.Chance(0.3) ? 0.0 : random.Uniform(-kPi, kPi);
  const double to = from + random.Uniform(0.5, 3.0);
  const double z = SmallHeight(random);
  const double z4 = random.Chance(0.8) ? z : SmallHeight(random);
  const double ring = random.Uniform(1000.0, 4000.0);
  const double ringZ =
      std::sqrt(std::pow(n.outerRadius - 10.0, 2) - ring * ring);
  n.rope = {Cylindrical(rho, from, -6100.0), Cylindrical(rho, from, z),
            Cylindrical(ring, from, ringZ),  Cylindrical(ring, to, ringZ),
            Cylindrical(rho, to, z4),        Cylindrical(rho, to, -6100.0)};
  const int count = random.Chance(0.03) ? 10 : random.Whole(0, 3);
  for (int i = 0; i < count; ++i) {
    n.rollDegrees.push_back(random.Chance(0.7) ? 36.0 * random.Whole(0, 9)
                                               : random.Uniform(-400.0, 400.0));
  }
}

void MakeSupportRopes(Numbers& n, Random& random) {
  constexpr std::array kRadii = {15.0, 15.0, 0.0, 200.0, 600.0};
  n.supportRadius = random.Pick(kRadii);
  n.supportLength = random.Uniform(1000.0, 7000.0);
  // Inside and outside the hold-down ropes' cylinder.
  const double rho = n.outerRadius + random.Uniform(-100.0, 200.0);
  const double z = SmallHeight(random);
  const int count = random.Whole(0, 10);
  for (int i = 0; i < count; ++i) {
    n.supports.push_back(Cylindrical(rho, random.Uniform(-kPi, kPi), z));
  }
}

void MakeBellyPlates(Numbers& n, Random& random) {
  n.plateHalfHeight = random.Chance(0.5) ? 600.0 : random.Uniform(50.0, 1500.0);
  const int count = random.Whole(0, 8);
  for (int i = 0; i < count; ++i) {
    const double z = random.Chance(0.6) ? 0.0 : SmallHeight(random);
    n.plates.push_back(
        Cylindrical(n.outerRadius, random.Uniform(-kPi, kPi), z));
  }
}

void MakeNCDAnchors(Numbers& n, Random& random) {
  n.anchorHalfZ = random.Chance(0.5) ? 60.0 : random.Uniform(1.0, 800.0);
  const int count = random.Chance(0.1) ? 96 : random.Whole(0, 12);
  for (int i = 0; i < count; ++i) {
    n.anchors.push_back(n.innerRadius * random.Direction());
  }
}

void MakePipes(Numbers& n, Random& random) {
  for (auto& pipe : n.pipes) {
    const int count = random.Whole(1, 4);
    for (int i = 0; i < count; ++i) {
      pipe.push_back(6000.0 * random.Direction());
    }
  }
}

void RoundAll(Numbers& n) {
  for (double* value : n.Scalars()) *value = std::round(*value);
  for (std::vector<TVector3>* list : n.Lists()) {
    for (TVector3& v : *list) {
      v.SetXYZ(std::round(v.X()), std::round(v.Y()), std::round(v.Z()));
    }
  }
}

Numbers MakeNumbers(Random& random) {
  Numbers n;
  if (random.Chance(0.4)) {
    n.innerRadius = random.Uniform(5000.0, 5950.0);
    n.outerRadius = n.innerRadius + random.Uniform(5.0, 100.0);
    n.neckRadius = random.Uniform(100.0, 1500.0);
  }
  MakeHoldDownRopes(n, random);
  MakeSupportRopes(n, random);
  MakeBellyPlates(n, random);
  MakeNCDAnchors(n, random);
  MakePipes(n, random);
  if (random.Chance(0.5)) {
    n.bossZ = random.Uniform(4000.0, 5900.0);
    n.bossHalfHeight1 = random.Uniform(0.0, 300.0);
    n.bossHalfHeight2 = random.Uniform(0.0, 300.0);
  }
  // Whole numbers make exact limits more likely.
  if (random.Chance(0.5)) RoundAll(n);
  return n;
}

// Functions that make a geometry unusual, each in one way.

void SetOddScalar(Numbers& n, Random& random) {
  constexpr std::array kValues = {0.0,
                                  -0.0,
                                  -1.0,
                                  -5860.0,
                                  1e-170,
                                  5e-324,
                                  1e200,
                                  1e308,
                                  0.3,
                                  20000.0,
                                  std::numeric_limits<double>::quiet_NaN(),
                                  std::numeric_limits<double>::infinity()};
  *random.Pick(n.Scalars()) = random.Pick(kValues);
}

void SetOddCoordinate(Numbers& n, Random& random) {
  constexpr std::array kValues = {0.0,
                                  -0.0,
                                  1e-170,
                                  5e-324,
                                  1e200,
                                  -1e6,
                                  std::numeric_limits<double>::quiet_NaN(),
                                  -std::numeric_limits<double>::infinity()};
  std::vector<TVector3>& list = *random.Pick(n.Lists());
  if (list.empty()) return;
  const std::size_t at = random.Chance(0.3) ? 0 : random.Below(list.size());
  list[at](random.Whole(0, 2)) = random.Pick(kValues);
}

void SetOddRadii(Numbers& n, Random& random) {
  constexpr std::array kRadii = {0.0, -5860.0, 3000.0, 1.0, 8600.0, 20000.0};
  switch (random.Below(4)) {
    case 0:
      n.outerRadius = random.Pick(kRadii);
      break;
    case 1:
      n.innerRadius = random.Pick(kRadii);
      break;
    case 2:
      n.neckRadius = random.Chance(0.5) ? -250.0 : 0.0;
      break;
    default:
      n.outerRadius = random.Uniform(4000.0, 9000.0);
  }
}

void DegenerateRope(Numbers& n, Random& random) {
  if (n.rope.size() < 6) return;
  switch (random.Below(8)) {
    case 0:
      n.rope[1] = TVector3();
      break;
    case 1:
      n.rope[4] = TVector3();
      break;
    case 2:  // the middle of the rope is at the vessel's centre
      n.rope[1] = TVector3(5880.0, 0, 0);
      n.rope[4] = TVector3(-5880.0, 0, 0);
      break;
    case 3:
      n.rope[2] = TVector3();
      n.rope[3] = TVector3();
      break;
    case 4:  // ends beyond the sphere on which ropes end
      n.rope[1] = TVector3(8600.0, 300.0, 0);
      n.rope[4] = TVector3(-8000.0, 4000.0, 0);
      break;
    case 5:  // an end on that sphere: a rope without length
      n.rope[1] = TVector3(0, 8500.0, 0);
      break;
    case 6:  // legs without length
      n.rope[0] = n.rope[1];
      n.rope[5] = n.rope[4];
      break;
    default:
      n.rope[1].SetZ(random.Uniform(-7000.0, 7000.0));
      n.rope[4].SetZ(random.Uniform(-7000.0, 7000.0));
  }
}

void ResizeTemplate(Numbers& n, Random& random) {
  constexpr std::array<std::size_t, 5> kSizes = {0, 4, 5, 7, 9};
  n.rope.resize(random.Pick(kSizes), TVector3(100.0, 200.0, 300.0));
}

void EmptyAList(Numbers& n, Random& random) {
  if (random.Chance(0.2)) {
    n.rollDegrees.clear();
  } else {
    random.Pick(n.Lists())->clear();
  }
}

void ZeroAPosition(Numbers& n, Random& random) {
  std::vector<TVector3>& list = *random.Pick(n.Lists());
  if (list.empty()) return;
  list[random.Chance(0.5) ? 0 : random.Below(list.size())] = TVector3();
}

void PlatesWithoutExtent(Numbers& n, Random& random) {
  n.plateHalfHeight = random.Chance(0.7) ? 0.0 : -100.0;
  if (!n.plates.empty()) n.plates[random.Below(n.plates.size())] = TVector3();
}

void StrayAnchors(Numbers& n, Random& random) {
  // Near the centre, where paths of unknown type are judged.
  n.anchors.push_back(random.Uniform(0.0, 400.0) * random.Direction());
}

void RepeatPipePoints(Numbers& n, Random& random) {
  for (auto& pipe : n.pipes) {
    if (pipe.empty()) continue;
    const TVector3 last = pipe.back();
    pipe.assign(static_cast<std::size_t>(random.Whole(1, 3)), last);
  }
}

void SinkSupports(Numbers& n, Random& random) {
  // Below the centre, so that even paths without points are followed; sometimes
  // beyond the sphere on which the ropes end.
  const double z = random.Chance(0.7) ? -300.0 : -9000.0;
  for (TVector3& v : n.supports) v.SetZ(z);
}

void WideSupports(Numbers& n, Random& random) {
  for (TVector3& v : n.supports) v *= random.Uniform(1.2, 1.6);
}

void PlatesOnAxis(Numbers& n, Random& random) {
  if (n.plates.empty()) return;
  const double z = random.Chance(0.5) ? n.outerRadius : -n.outerRadius;
  n.plates[random.Below(n.plates.size())].SetXYZ(0.0, 0.0, z);
}

/// A position so small that its square has few digits or underflows.
void ShrinkAPosition(Numbers& n, Random& random) {
  std::vector<TVector3>& list = *random.Pick(n.Lists());
  if (list.empty()) return;
  TVector3& v = list[random.Chance(0.3) ? 0 : random.Below(list.size())];
  v *= std::pow(10.0, random.Uniform(-172.0, -157.0));
}

void HundredsOfParts(Numbers& n, Random& random) {
  for (std::vector<TVector3>* list : {&n.supports, &n.plates, &n.anchors}) {
    if (list->empty()) continue;
    const int count = random.Whole(20, 200);
    for (int i = 0; i < count; ++i) {
      list->push_back(random.Pick(*list));
      list->back().RotateZ(random.Uniform(-kPi, kPi));
    }
  }
}

/// Hold-down ropes that end above the feet of the support ropes, so that points
/// between are tested against both; or far below them, so that some points are
/// tested against neither.
void CrossHeights(Numbers& n, Random& random) {
  if (n.rope.size() < 6) return;
  n.rope[1].SetZ(random.Uniform(-4000.0, 4000.0));
  n.rope[4].SetZ(random.Uniform(-4000.0, 4000.0));
  const double z = random.Uniform(-4000.0, 4000.0);
  for (TVector3& v : n.supports) v.SetZ(z);
}

/// Both kinds of ropes on exactly the same cylinder.
void ShareCylinder(Numbers& n, Random& random) {
  if (n.rope.size() < 6 || n.rollDegrees.empty()) return;
  n.rollDegrees[0] = 0.0;
  for (TVector3& v : n.supports) {
    const double z = v.Z();
    v = n.rope[1];
    v.RotateZ(random.Uniform(-kPi, kPi));
    if (random.Chance(0.5)) v.SetZ(z);
  }
  if (!n.supports.empty()) n.supports[0] = n.rope[1];
}

Tables TablesOf(const Numbers& n) {
  Tables t;
  t.Set("SOLID", "acrylic_vessel_inner", "r_sphere", n.innerRadius);
  t.Set("SOLID", "acrylic_vessel_outer", "r_sphere", n.outerRadius);
  t.Set("SOLID", "acrylic_vessel_outer", "r_neck", n.neckRadius);

  t.Set("GEO", "hold_down_ropes", "solid_definition", std::string("down_rope"));
  t.Set("GEO", "hold_down_ropes", "locations", std::string("down_rolls"));
  t.Set("SOLID", "down_rope", "r_rope", n.holdDownRadius);
  t.SetPositions("SOLID", "down_rope", n.rope, "rope_");
  t.Set("GEO_LOCATIONS", "down_rolls", "roll", n.rollDegrees);

  t.Set("GEO", "hold_up_ropes", "solid_definition", std::string("up_rope"));
  t.Set("GEO", "hold_up_ropes", "locations", std::string("up_places"));
  t.Set("SOLID", "up_rope", "r_rope", n.supportRadius);
  t.Set("SOLID", "up_rope", "z_rope", n.supportLength);
  t.SetPositions("GEO_LOCATIONS", "up_places", n.supports);

  t.Set("SOLID", "belly_plate_vintar", "octahedron_half_height",
        n.plateHalfHeight);
  t.Set("GEO", "inner_av", "belly_plate_locations", std::string("plates"));
  t.SetPositions("GEO_LOCATIONS", "plates", n.plates);

  t.Set("GEO", "inner_av", "ncd_anchor_definition", std::string("anchor"));
  t.Set("GEO", "inner_av", "ncd_anchor_locations", std::string("anchors"));
  t.Set("SOLID", "anchor", "half_z", n.anchorHalfZ);
  t.Set("SOLID", "anchor", "r_max", n.anchorRadius);
  t.SetPositions("GEO_LOCATIONS", "anchors", n.anchors);

  for (std::size_t i = 0; i < kPipes.size(); ++i) {
    t.SetPositions("SOLID", kPipes[i], n.pipes[i]);
  }
  t.Set("SOLID", "av_pipe-1", "r_max", n.pipeRadius);
  t.Set("SOLID", "av_pipe-labs", "r_max", n.labsRadius);

  t.Set("GEO", "av", "neck_boss_z", n.bossZ);
  t.Set("SOLID", "neck_boss", "half_height1", n.bossHalfHeight1);
  t.Set("SOLID", "neck_boss", "half_height2", n.bossHalfHeight2);
  return t;
}

}  // namespace

Detector MakeDetector(Random& random, std::size_t mostRopes) {
  using Oddity = void (*)(Numbers&, Random&);
  constexpr std::array<Oddity, 19> kOddities = {
      SetOddScalar,   SetOddCoordinate, SetOddRadii,         DegenerateRope,
      DegenerateRope, ResizeTemplate,   EmptyAList,          ZeroAPosition,
      PlatesOnAxis,   StrayAnchors,     PlatesWithoutExtent, SinkSupports,
      WideSupports,   RepeatPipePoints, HundredsOfParts,     CrossHeights,
      CrossHeights,   ShareCylinder,    ShrinkAPosition};
  Numbers numbers = MakeNumbers(random);
  const bool odd = random.Chance(0.5);
  if (odd) {
    const int count = random.Whole(1, 3);
    for (int i = 0; i < count; ++i) random.Pick(kOddities)(numbers, random);
  }
  auto& rolls = numbers.rollDegrees;
  if (rolls.size() > mostRopes) rolls.resize(mostRopes);
  Detector detector{TablesOf(numbers), numbers.plates.size()};
  if (random.Chance(0.5)) LeaveSomeOut(detector.tables, random);
  if (odd && random.Chance(0.4)) {
    const int count = random.Whole(1, 2);
    for (int i = 0; i < count; ++i) {
      DamageAField(detector.tables, random);
    }
  }
  if (odd && random.Chance(0.04)) {
    DamageAVesselField(detector.tables, random);
  }
  return detector;
}

}  // namespace ZARN::Testing

#include "io/PairColumns.hpp"

#include <algorithm>

namespace ZARN::IO {
namespace {

using DU::eMedium;
using Path = DU::LightPathCalculator;

using ValueOfPath = double (*)(const Path& path);

template <ValueOfPath kValue>
std::optional<double> OfPath(const JudgedPair& pair) {
  if (!DU::HasPath(pair.verdict)) return std::nullopt;
  return kValue(pair.lightPath);
}

template <eMedium kMedium>
double Length(const Path& path) {
  return path.GetLength(kMedium);
}

double OpticalLength(const Path& path) { return path.GetOpticalLength(); }

double Time(const Path& path) { return path.GetTimeOfFlight(); }

double Angle(const Path& path) { return path.GetIncidenceAngle(); }

template <int kAxis>
double Initial(const Path& path) {
  return path.GetInitialDirection()[kAxis];
}

template <int kAxis>
double Final(const Path& path) {
  return path.GetFinalDirection()[kAxis];
}

std::optional<double> Code(const JudgedPair& pair) {
  return static_cast<double>(pair.verdict);
}

template <int kAxis>
std::optional<double> Event(const JudgedPair& pair) {
  return pair.event[kAxis];
}

template <int kAxis>
std::optional<double> PMT(const JudgedPair& pair) {
  return pair.pmt[kAxis];
}

std::optional<double> SmearedFraction(const JudgedPair& pair) {
  if (pair.smearedPaths == 0) return std::nullopt;
  return static_cast<double>(pair.smearedShadowed) /
         static_cast<double>(pair.smearedPaths);
}

std::optional<double> SmearedPaths(const JudgedPair& pair) {
  return static_cast<double>(pair.smearedPaths);
}

template <ValueOfPath kValue>
PairColumn PathColumn(const char* name, const char* description) {
  return {name, description, true, false, OfPath<kValue>};
}

std::vector<PairColumn> MakeColumns() {
  return {
      PathColumn<Time>("time", "time of flight, ns"),
      PathColumn<Length<eMedium::kInnerAV>>("length_inner",
                                            "length inside the vessel, mm"),
      PathColumn<Length<eMedium::kAcrylic>>("length_av",
                                            "length in the vessel's wall, mm"),
      PathColumn<Length<eMedium::kWater>>("length_water",
                                          "length in the water, mm"),
      PathColumn<OpticalLength>("optical_length",
                                "sum of refractive index times length, mm"),
      PathColumn<Angle>("angle",
                        "angle of incidence on a PMT that faces the centre, "
                        "rad"),
      PathColumn<Initial<0>>("initial_x", "direction of travel at the event"),
      PathColumn<Initial<1>>("initial_y", "direction of travel at the event"),
      PathColumn<Initial<2>>("initial_z", "direction of travel at the event"),
      PathColumn<Final<0>>("final_x", "direction of travel at the PMT"),
      PathColumn<Final<1>>("final_y", "direction of travel at the PMT"),
      PathColumn<Final<2>>("final_z", "direction of travel at the PMT"),
      {"code", "number of the verdict", false, true, Code},
      {"event_x", "position of the event, mm", false, false, Event<0>},
      {"event_y", "position of the event, mm", false, false, Event<1>},
      {"event_z", "position of the event, mm", false, false, Event<2>},
      {"pmt_x", "position of the PMT, mm", false, false, PMT<0>},
      {"pmt_y", "position of the PMT, mm", false, false, PMT<1>},
      {"pmt_z", "position of the PMT, mm", false, false, PMT<2>},
  };
}

}  // namespace

const std::vector<PairColumn>& PairColumns() {
  static const std::vector<PairColumn> columns = MakeColumns();
  return columns;
}

const std::vector<PairColumn>& SmearedColumns() {
  static const std::vector<PairColumn> columns = {
      {"smeared_fraction",
       "share of the positions with a path that are shadowed", false, false,
       SmearedFraction},
      {"smeared_paths", "number of positions with a path", false, true,
       SmearedPaths}};
  return columns;
}

const PairColumn* FindPairColumn(const std::string& name) {
  const std::vector<PairColumn>& columns = PairColumns();
  const auto found = std::find_if(
      columns.begin(), columns.end(),
      [&](const PairColumn& column) { return column.name == name; });
  return found == columns.end() ? nullptr : &*found;
}

}  // namespace ZARN::IO

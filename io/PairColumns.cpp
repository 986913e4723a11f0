#include "io/PairColumns.hpp"

#include <algorithm>

#include "io/PathDetails.hpp"

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

std::optional<double> CriticalTolerance(const JudgedPair& pair) {
  if (!DU::HasPath(pair.verdict)) return std::nullopt;
  return pair.details->critical.Smallest();
}

std::string_view CriticalBy(const JudgedPair& pair) {
  if (!DU::HasPath(pair.verdict)) return "";
  return DU::NameOf(pair.details->critical.By());
}

std::string_view Item(const JudgedPair& pair) {
  if (!DU::HasPath(pair.verdict)) return "";
  return pair.details->item;
}

template <ValueOfPath kValue>
PairColumn PathColumn(const char* name, const char* description) {
  return {name, description, eNeed::kPath, eValue::kNumber, OfPath<kValue>};
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
      {"code", "number of the verdict", eNeed::kNothing, eValue::kWholeNumber,
       Code},
      {"event_x", "position of the event, mm", eNeed::kNothing, eValue::kNumber,
       Event<0>},
      {"event_y", "position of the event, mm", eNeed::kNothing, eValue::kNumber,
       Event<1>},
      {"event_z", "position of the event, mm", eNeed::kNothing, eValue::kNumber,
       Event<2>},
      {"pmt_x", "position of the PMT, mm", eNeed::kNothing, eValue::kNumber,
       PMT<0>},
      {"pmt_y", "position of the PMT, mm", eNeed::kNothing, eValue::kNumber,
       PMT<1>},
      {"pmt_z", "position of the PMT, mm", eNeed::kNothing, eValue::kNumber,
       PMT<2>},
      {"critical_tolerance", "smallest tolerance that blocks the path, mm",
       eNeed::kCriticalTolerances, eValue::kNumber, CriticalTolerance},
      {"critical_by", "the component that blocks it at this tolerance",
       eNeed::kCriticalTolerances, eValue::kText, nullptr, CriticalBy},
      {"item", "the rope, plate or anchor that blocks it", eNeed::kItem,
       eValue::kText, nullptr, Item},
  };
}

}  // namespace

JudgedPair JudgedPath(DU::eVerdict verdict, const PathDetails& details) {
  static const TVector3 noPosition;
  static const DU::LightPathCalculator noPath;
  return {noPosition, noPosition, verdict, noPath, 0, 0, &details};
}

const std::vector<PairColumn>& PairColumns() {
  static const std::vector<PairColumn> columns = MakeColumns();
  return columns;
}

const std::vector<std::string>& GivenPathColumns() {
  static const std::vector<std::string> names = {"code", "critical_tolerance",
                                                 "critical_by", "item"};
  return names;
}

const std::vector<PairColumn>& SmearedColumns() {
  static const std::vector<PairColumn> columns = {
      {"smeared_fraction",
       "share of the positions with a path that are shadowed", eNeed::kNothing,
       eValue::kNumber, SmearedFraction},
      {"smeared_paths", "number of positions with a path", eNeed::kNothing,
       eValue::kWholeNumber, SmearedPaths}};
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

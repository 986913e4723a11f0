#include "lightpath/LightPathCalculator.hpp"

#include <cmath>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "db/DB.hpp"
#include "db/DBErrors.hpp"
#include "db/ReadField.hpp"
#include "lightpath/PathBatch.hpp"
#include "lightpath/PathBetween.hpp"
#include "lightpath/PathLengths.hpp"
#include "log/Log.hpp"

namespace ZARN::DU {
namespace {

/// Entries of the table OPTICS, by eMedium.
constexpr std::array<const char*, 3> kMediumNames = {"inner_av", "acrylic",
                                                     "water"};

double ReadRadius(const TableSet& tables, const std::string& index) {
  const double radius = ReadNumber(tables, "SOLID", index, "r_sphere");
  if (!(radius > 0.0) || !std::isfinite(radius)) {
    throw DBValueError("SOLID", index, "r_sphere",
                       "is not a finite number > 0");
  }
  return radius;
}

}  // namespace

LightPathCalculator::LightPathCalculator() {
  for (std::size_t type = 0; type < kLightPathTypeNames.size(); ++type) {
    typeNames_[static_cast<eLightPathType>(type)] = kLightPathTypeNames[type];
  }
}

void LightPathCalculator::BeginOfRun() { BeginOfRun(DB::Get()); }

void LightPathCalculator::BeginOfRun(const TableSet& tables) {
  const double innerRadius = ReadRadius(tables, "acrylic_vessel_inner");
  const double outerRadius = ReadRadius(tables, "acrylic_vessel_outer");
  if (!(outerRadius > innerRadius)) {
    throw DBValueError("SOLID", "acrylic_vessel_outer", "r_sphere",
                       "is not larger than that of acrylic_vessel_inner");
  }
  std::array<OpticalMedium, 3> media;
  for (std::size_t i = 0; i < media.size(); ++i) {
    media[i] = OpticalMedium::Read(tables, kMediumNames[i]);
  }
  media_.InnerRadius = innerRadius;
  media_.OuterRadius = outerRadius;
  dispersions_ = std::move(media);
  isWarned_ = {};
  LookUpIndices();
}

void LightPathCalculator::SetWavelength(double wavelength) {
  if (!(wavelength > 0.0) || !std::isfinite(wavelength)) {
    throw std::invalid_argument(
        "LightPathCalculator: the wavelength is not a finite number > 0");
  }
  wavelength_ = wavelength;
  if (IsRunBegun()) LookUpIndices();
}

void LightPathCalculator::LookUpIndices() {
  for (std::size_t i = 0; i < dispersions_.size(); ++i) {
    const OpticalMedium& medium = dispersions_[i];
    media_.RefractiveIndex[i] = medium.RefractiveIndexAt(wavelength_);
    groupIndices_[i] = medium.GroupIndexAt(wavelength_);
    if (isWarned_[i] || medium.Reaches(wavelength_)) continue;
    std::ostringstream text;
    text << "LightPathCalculator: " << wavelength_
         << " nm is outside the wavelengths of OPTICS " << kMediumNames[i]
         << ", " << medium.FirstWavelength() << " to "
         << medium.LastWavelength() << " nm: using the index at their end.\n";
    warn << text.str();
    isWarned_[i] = true;
  }
}

void LightPathCalculator::CalcByPosition(const TVector3& eventPos,
                                         const TVector3& pmtPos) {
  RequireRun();
  FindDirectPath(media_, eventPos, pmtPos, path_);
}

void LightPathCalculator::CalcReflectionByPosition(const TVector3& eventPos,
                                                   const TVector3& pmtPos) {
  RequireRun();
  FindReflectedPath(media_, eventPos, pmtPos, path_);
}

void LightPathCalculator::CalcRow(const TVector3& eventPos,
                                  const PMTArray& pmts,
                                  const LightPathRow& row) const {
  RequireRun();
  PathBatch(media_, groupIndices_, eventPos, pmts).Calc(row);
}

void LightPathCalculator::RequireRun() const {
  if (IsRunBegun()) return;
  throw std::logic_error(
      "LightPathCalculator: call BeginOfRun before computing a path");
}

double LightPathCalculator::GetLength(eMedium medium) const {
  return LengthsOf(path_)[IndexOf(medium)];
}

double LightPathCalculator::GetOpticalLength() const {
  return OpticalLengthOf(LengthsOf(path_), media_.RefractiveIndex);
}

double LightPathCalculator::GetTimeOfFlight() const {
  return TimeOfFlightOf(LengthsOf(path_), groupIndices_);
}

double LightPathCalculator::GetIncidenceAngle() const {
  return IncidenceAngleOf(path_);
}

}  // namespace ZARN::DU

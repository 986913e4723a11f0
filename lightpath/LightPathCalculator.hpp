#pragma once

#include <array>
#include <map>
#include <string>

#include "TVector3.h"
#include "db/TableSet.hpp"
#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/LightPath.hpp"
#include "lightpath/LightPathRow.hpp"
#include "lightpath/LightPathType.hpp"
#include "lightpath/OpticalMedium.hpp"
#include "lightpath/PMTArray.hpp"

namespace ZARN::DU {

/// Computes the path of light from an event to a PMT, and holds it for the
/// ShadowingCalculator.
///
///     ZARN::DU::LightPathCalculator lightPath;
///     lightPath.BeginOfRun();                      // once per run
///     lightPath.CalcByPosition(eventPos, pmtPos);  // for each pair
///     if (lightPath.HasPath()) calculator.CheckForShadowing(lightPath);
///
/// Every result can also be set, so that a path computed elsewhere can be
/// judged; this needs no BeginOfRun. Lengths in mm; see LightPath for the
/// meaning of the points. Copies are independent: use one per thread.
class LightPathCalculator {
 public:
  /// Names of path types, by type.
  using TypeNames = std::map<eLightPathType, std::string>;

  static constexpr double kDefaultWavelength = 400.0;  // nm
  /// Positions farther from the centre are treated as not finite, mm: products
  /// of their coordinates overflow.
  static constexpr double kFarthest = 1e70;

  /// An uninitialised path, and the names of all known types.
  LightPathCalculator();

  /// Read the vessel's radii and the media from @p tables, for the run set
  /// there: table OPTICS, indices inner_av, acrylic and water
  /// (OpticalMedium.hpp). A medium whose table does not cover the wavelength is
  /// logged to ZARN::warn, once.
  ///
  /// @param tables  used only during the call
  /// @throws ZARN::DBNotFoundError if a radius or a medium is missing,
  ///         ZARN::DBValueError if one is invalid; both name table, index and
  ///         field, and keep the values read before
  void BeginOfRun(const TableSet& tables);
  /// The same from ZARN::DB::Get().
  void BeginOfRun();

  /// Set the wavelength of the light, nm, before or after BeginOfRun.
  ///
  /// @throws std::invalid_argument unless it is finite and > 0
  void SetWavelength(double wavelength);
  double GetWavelength() const { return wavelength_; }

  /// The media at the wavelength.
  const ConcentricMedia& GetMedia() const { return media_; }
  /// The group indices at the wavelength, which give the speed of a pulse.
  const PerMedium& GetGroupIndices() const { return groupIndices_; }

  /// Compute the direct path from an event to a PMT, refracted by Snell's law
  /// at the vessel's surfaces; the neck is ignored.
  ///
  /// If event and PMT are in the water and the straight line between them
  /// misses or only touches the vessel, the type is "Water". Otherwise, of
  /// several paths, the one with the shortest optical length is used; if event,
  /// PMT and centre are on one line, the path is straight. Directions are unit
  /// vectors, and points that the type does not use are zero.
  ///
  /// There is no path (HasPath) if total reflection leaves none, if the PMT is
  /// not in the water, if the event is at the PMT, or if a position is not
  /// finite (or farther than kFarthest).
  ///
  /// Allocates nothing. Use one calculator per thread.
  ///
  /// @throws std::logic_error before BeginOfRun
  void CalcByPosition(const TVector3& eventPos, const TVector3& pmtPos);

  /// Compute the path that is reflected at the vessel's outer surface, from an
  /// event in the water to a PMT. It exists if the straight line between them
  /// misses or touches the vessel; otherwise as CalcByPosition.
  void CalcReflectionByPosition(const TVector3& eventPos,
                                const TVector3& pmtPos);

  /// Compute the direct paths from an event to many PMTs as columns, several
  /// times faster.
  ///
  /// This promises less than CalcByPosition: every number is within 1e-9 (mm,
  /// ns, rad) of that of CalcByPosition and the getters, often not equal to it.
  /// So verdicts never use these paths (ShadowingCalculator::FindVerdicts). The
  /// row's Bound tells how near each path is. A path that is not known so well
  /// is computed as by CalcByPosition; so are all of events in the wall or the
  /// water.
  ///
  /// Thread-safe; keeps no path.
  ///
  /// @throws std::logic_error before BeginOfRun
  void CalcRow(const TVector3& eventPos, const PMTArray& pmts,
               const LightPathRow& row) const;

  /// Whether BeginOfRun has read the vessel and the media.
  bool IsRunBegun() const { return media_.OuterRadius > 0.0; }
  /// @throws std::logic_error before BeginOfRun
  void RequireRun() const;

  /// Whether there is a path; false before one was computed or set.
  bool HasPath() const { return path_.LightPathType != kUninitialised; }

  // Derived from the points of the path and the media of the run; all 0 without
  // a path and for unknown types.

  /// Length of the path in a medium, mm.
  double GetLength(eMedium medium) const;
  /// Sum of refractive index times length, mm.
  double GetOpticalLength() const;
  /// Time that a pulse of light takes, ns.
  double GetTimeOfFlight() const;
  /// Angle of incidence on a PMT that faces the centre, rad; 0 is head-on.
  double GetIncidenceAngle() const;

  const TVector3& GetFinalDirection() const { return path_.FinalDirection; }
  const TVector3& GetInitialDirection() const { return path_.InitialDirection; }
  const TVector3& GetStartPos() const { return path_.StartPos; }
  const TVector3& GetEndPos() const { return path_.EndPos; }
  const TVector3& GetAVPoint1() const { return path_.AVPoint1; }
  const TVector3& GetAVPoint2() const { return path_.AVPoint2; }
  const TVector3& GetAVPoint3() const { return path_.AVPoint3; }
  const TVector3& GetAVPoint4() const { return path_.AVPoint4; }
  eLightPathType GetLightPathType() const { return path_.LightPathType; }

  void SetFinalDirection(const TVector3& v) { path_.FinalDirection = v; }
  void SetInitialDirection(const TVector3& v) { path_.InitialDirection = v; }
  void SetStartPos(const TVector3& v) { path_.StartPos = v; }
  void SetEndPos(const TVector3& v) { path_.EndPos = v; }
  void SetAVPoint1(const TVector3& v) { path_.AVPoint1 = v; }
  void SetAVPoint2(const TVector3& v) { path_.AVPoint2 = v; }
  void SetAVPoint3(const TVector3& v) { path_.AVPoint3 = v; }
  void SetAVPoint4(const TVector3& v) { path_.AVPoint4 = v; }
  void SetLightPathType(eLightPathType type) { path_.LightPathType = type; }

  /// The whole path at once.
  const LightPath& GetLightPath() const { return path_; }
  void SetLightPath(const LightPath& path) { path_ = path; }

  /// The names, modifiable: looking up a type without a name adds an empty
  /// name.
  TypeNames& LightPathTypeNames() { return typeNames_; }
  const TypeNames& LightPathTypeNames() const { return typeNames_; }

 private:
  void LookUpIndices();

  double wavelength_ = kDefaultWavelength;
  std::array<OpticalMedium, 3> dispersions_;  // by eMedium
  std::array<bool, 3> isWarned_ = {};
  ConcentricMedia media_;
  PerMedium groupIndices_ = {1.0, 1.0, 1.0};
  LightPath path_;
  TypeNames typeNames_;
};

}  // namespace ZARN::DU

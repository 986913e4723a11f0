#pragma once

#include <string>
#include <vector>

#include "TVector3.h"
#include "db/TableSet.hpp"
#include "du/hardware/ShadowingComponent.hpp"

namespace ZARN::DU {

/// How much a finding matters.
enum class eSeverity {
  /// BeginOfRun fails, or a component is off or has nothing to test. Where the
  /// tables have media, also: LightPathCalculator::BeginOfRun fails.
  kError,
  kWarning,  ///< read, but hardly meant: verdicts may be wrong
  kNote      ///< no verdict depends on it
};

/// "error", "warning" or "note".
const char* NameOf(eSeverity severity);

/// What is wrong with one entry or field of geometry tables.
struct TableFinding {
  eSeverity severity = eSeverity::kNote;
  /// The component that reads the field first; kNone for the vessel, the media,
  /// PMTs and what nothing reads.
  eShadowingComponent component = eShadowingComponent::kNone;
  std::string table;
  std::string index;
  std::string field;  ///< empty if the finding is about the entry
  /// Where the entry stands, in words: "detector/ropes.json:12:5" of a text,
  /// "sqlite:tables.db, pass 2, runs 1000 to 1999" of a database. Empty for an
  /// entry that is missing.
  std::string place;
  std::string problem;  ///< what is wrong: "there is no field r_rope"
  std::string value;    ///< the value, shortened; empty if there is none
  std::string remedy;   ///< what would be right: "found r_rop: a typo?"
};

/// Check the tables that are valid for the current run, entry by entry. Reads
/// what ShadowingCalculator::BeginOfRun reads, but writes no
/// messages. Tells what is missing (with the nearest name that exists), has
/// the wrong type or length, is read by nothing, or is implausible: radii that
/// are zero, negative or out of order, hardware inside the vessel or far from
/// it, lengths in m beside a vessel in mm, angles in the other unit, positions
/// given twice.
///
/// @return findings, errors first, then in the order of the components;
///         no finding is an error exactly if BeginOfRun succeeds with every
///         component loaded and with something to test, and, if there are media
///         (table OPTICS), LightPathCalculator::BeginOfRun succeeds
std::vector<TableFinding> CheckTables(const TableSet& tables);

/// Check the positions of PMTs beside the vessel of the current run: PMTs
/// inside the vessel or far from it, positions given twice or not finite, and
/// lengths in m. A problem of several PMTs is one finding, about the first of
/// them.
///
/// @param names  of the PMTs, as many as positions
/// @return warnings with table "PMT", the name of the PMT as index, and without
///         a place
std::vector<TableFinding> CheckPMTs(const TableSet& tables,
                                    const std::vector<std::string>& names,
                                    const std::vector<TVector3>& positions);

/// One line for people:
/// "error: detector/ropes.json:12:5: SOLID/hold_down_rope: there is no field
/// r_rope; found r_rop: a typo?"
std::string TextOf(const TableFinding& finding);

}  // namespace ZARN::DU

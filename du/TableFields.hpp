#pragma once

#include <vector>

#include "du/hardware/ShadowingComponent.hpp"

namespace ZARN::DU {

/// What a field holds.
enum class eFieldType {
  kNumber,
  kNumbers,          ///< an array of numbers
  kNumberOrNumbers,  ///< one of both
  kString
};

/// "a number", "an array of numbers", ... as in messages about a wrong type.
const char* NameOf(eFieldType type);

/// What reads a field.
enum class eFieldUse {
  kVerdicts,  ///< read, and verdicts (or light paths) depend on it
  kDrawings,  ///< read and required, but for drawings only
  kOptional,  ///< read where another field of its entry is an array
  kOther      ///< read by nothing here, but known: it may be there
};

/// The index of an entry: fixed, or in a field of table GEO that names it.
struct TableIndex {
  const char* name;  ///< the fixed index, or the index in GEO of the entry ...
  const char* namedBy = nullptr;  ///< ... whose field with this name has it

  bool IsFixed() const { return namedBy == nullptr; }
};

/// One field of the geometry tables.
struct KnownField {
  /// Who reads it; kNone: the vessel, the media, or nothing.
  eShadowingComponent component;
  const char* table;
  TableIndex index;
  const char* field;
  eFieldType type;
  const char* unit;  ///< "mm", "degrees", "nm"; empty: none
  eFieldUse use = eFieldUse::kVerdicts;
};

/// Every field of the geometry tables: those of the vessel and of the media,
/// then those of each component, in the order in which they are read. A field
/// that two components read is in the list of both. docs/tables.md and
/// docs/tables.schema.json are tested against this list.
const std::vector<KnownField>& KnownFields();

}  // namespace ZARN::DU

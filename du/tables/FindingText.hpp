#pragma once

#include <string>
#include <vector>

#include "TVector3.h"
#include "db/TableEntry.hpp"

namespace ZARN::DU {

// Values and places in the words of a finding.

/// The shortest text that reads back as the same number: 12, 0.1, nan.
std::string TextOf(double number);

/// "(1, 2, 3)".
std::string TextOf(const TVector3& position);

/// A field as in JSON, shortened: "anchors", 12, [1, 2, ... 96 numbers].
std::string TextOf(const TableField& field);

/// Where a field, or with an empty field an entry, stands (TableFinding).
std::string TextOfPlace(const TableEntry& entry, const std::string& field = "");

/// "a, b and c".
std::string TextOfList(const std::vector<std::string>& names);

/// ", and 1 more", ", and 5 more"; empty for 0.
std::string AndMore(std::size_t others);

}  // namespace ZARN::DU

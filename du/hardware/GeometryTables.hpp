#pragma once

#include <string>
#include <vector>

#include "TVector3.h"
#include "db/TableSet.hpp"

namespace ZARN::DU {

/// Fill a list of positions, mm, from three parallel coordinate arrays of one
/// entry, read in the order x, y, z.
///
/// @param positions  replaced by the positions that were read. Not changed when
///                   a read throws or when the arrays differ in length, which
///                   is logged to ZARN::warn in two messages.
void FillXYZPositions(const TableSet& tables, std::vector<TVector3>& positions,
                      const std::string& table, const std::string& index,
                      const std::string& xField, const std::string& yField,
                      const std::string& zField);

}  // namespace ZARN::DU

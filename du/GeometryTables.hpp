#pragma once

#include <string>
#include <vector>

#include "TVector3.h"

namespace ZARN::DU {

// Each read takes a link of its own with pass -1, the highest pass, and
// releases it at once. All throw ZARN::DBNotFoundError if the table, the entry
// or the field is missing or the field has another type.

double ReadNumber(const std::string& table, const std::string& index,
                  const std::string& field);
std::vector<double> ReadNumbers(const std::string& table,
                                const std::string& index,
                                const std::string& field);
std::string ReadText(const std::string& table, const std::string& index,
                     const std::string& field);

/// Fill a list of positions, mm, from three parallel coordinate arrays of one
/// entry, read in the order x, y, z.
///
/// @param positions  replaced by the positions that were read. Left as it was
///                   when the arrays differ in length, which ZARN::warn tells
///                   in two messages, and when a read throws.
void FillXYZPositions(std::vector<TVector3>& positions,
                      const std::string& table, const std::string& index,
                      const std::string& xField, const std::string& yField,
                      const std::string& zField);

}  // namespace ZARN::DU

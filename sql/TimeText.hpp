#pragma once

#include <string>

namespace ZARN::SQL {

/// Microseconds since the begin of 1970 (UTC) of a time as people write it; see
/// ParseTime.
///
/// @throws std::invalid_argument
long long ToMicroseconds(const std::string& text);

/// The time as the store writes it: 2026-01-31T12:00:00.000000Z. Of two such
/// texts, the earlier time is the lesser text.
std::string TimeText(long long microseconds);

}  // namespace ZARN::SQL

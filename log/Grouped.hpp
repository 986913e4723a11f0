#pragma once

#include <string>

namespace ZARN {

/// @p value with thousands separators: 1234567 is "1,234,567".
std::string Grouped(unsigned long long value);

}  // namespace ZARN

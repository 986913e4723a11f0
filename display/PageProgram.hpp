#pragma once

#include <string_view>

namespace ZARN::Display {

/// The page without data, as display/web builds it; empty if this build has
/// none.
std::string_view PageProgram();

}  // namespace ZARN::Display

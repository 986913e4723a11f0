#pragma once

#include <string>

#include "io/ColumnNames.hpp"
#include "io/PositionReader.hpp"

namespace ZARN::App {

/// The event or PMT with this name.
///
/// @param file   as for IO::PositionReader
/// @param names  what its columns are called
/// @param kind   "event" or "pmt"
/// @throws IO::BadInput if no row or more than one has this name, and as
///         IO::PositionReader
IO::NamedPosition FindPosition(const std::string& file,
                               const IO::ColumnNames& names,
                               const std::string& kind,
                               const std::string& name);

}  // namespace ZARN::App

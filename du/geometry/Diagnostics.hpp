#pragma once

namespace ZARN::DU {

/// Whether an operation writes what it notices: crossings that miss to
/// ZARN::debug, zero vectors through ROOT's own warning. Results are the same.
enum class eDiagnostics { kWritten, kSilent };

}  // namespace ZARN::DU

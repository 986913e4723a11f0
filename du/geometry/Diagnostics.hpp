#pragma once

namespace ZARN::DU {

/// Whether an operation writes messages: about crossings that miss to
/// ZARN::debug, about zero vectors as a warning of ROOT. Results are the same.
enum class eDiagnostics { kWritten, kSilent };

}  // namespace ZARN::DU

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ZARN::IO {

/// The descriptor that a name refers to, if it names an open file: /dev/stdout,
/// /dev/fd/3, /proc/self/fd/3 or a link to one. Opening such a name again would
/// truncate a file that the caller's shell opened for appending.
std::optional<int> DescriptorNamed(const std::string& name);

/// Whether a file of this name can be replaced: a regular file, or none yet.
bool CanReplace(const std::string& name);

/// The path to write for this name: symbolic links are followed and kept, and
/// the file they point to is replaced.
std::string TargetOf(const std::string& name);

/// Whether a name is that of a ROOT file: it ends in ".root".
bool IsRootFileName(std::string_view name);

}  // namespace ZARN::IO

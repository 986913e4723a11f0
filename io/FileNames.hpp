#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ZARN::IO {

/// The descriptor that a name stands for where it names what is already open:
/// /dev/stdout, /dev/fd/3, /proc/self/fd/3 or a link to one. To open such a
/// name anew would cut a file that the caller's shell has open to append to.
std::optional<int> DescriptorNamed(const std::string& name);

/// Whether a file of this name can be replaced: a regular one, or none.
bool CanReplace(const std::string& name);

/// Where a file of this name will stand: a link stays, what it points to is
/// replaced.
std::string TargetOf(const std::string& name);

/// Whether a name asks for a ROOT file: it ends in ".root".
bool IsRootFileName(std::string_view name);

}  // namespace ZARN::IO

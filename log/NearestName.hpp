#pragma once

#include <string>
#include <vector>

namespace ZARN {

/// The name with the smallest number of changed, missing, added or swapped
/// characters relative to @p name; empty if more than a third of @p name
/// differs.
std::string NearestName(const std::string& name,
                        const std::vector<std::string>& names);

/// "; did you mean <nearest>?"; empty for an empty name.
std::string Suggest(const std::string& nearest);

}  // namespace ZARN

#include "io/ColumnNames.hpp"

#include <algorithm>

#include "io/Quoted.hpp"
#include "log/NearestName.hpp"

namespace ZARN::IO {

std::string ColumnNames::DescribeMissing(
    const std::vector<std::string>& missing,
    const std::vector<std::string>& known) const {
  std::string text;
  std::string nearest;
  for (const std::string& name : missing) {
    text += (text.empty() ? "missing columns: " : ", ") + Printable(name);
    const bool isGiven =
        std::any_of(others_.begin(), others_.end(),
                    [&](const auto& other) { return other.second == name; });
    if (isGiven && nearest.empty()) nearest = NearestName(name, known);
  }
  return text + Suggest(Printable(nearest));
}

}  // namespace ZARN::IO

#include "log/Grouped.hpp"

namespace ZARN {

std::string Grouped(unsigned long long value) {
  std::string text = std::to_string(value);
  for (auto at = static_cast<long>(text.size()) - 3; at > 0; at -= 3) {
    text.insert(static_cast<std::size_t>(at), ",");
  }
  return text;
}

}  // namespace ZARN

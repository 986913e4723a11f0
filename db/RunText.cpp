#include "db/RunText.hpp"

namespace ZARN {

std::string TextOf(const RunRange& runs) {
  const RunRange all;
  const std::string first = std::to_string(runs.first);
  const std::string last = std::to_string(runs.last);
  if (runs.first == runs.last) return "run " + first;
  if (runs.first == all.first) {
    return runs.last == all.last ? "all runs" : "runs up to " + last;
  }
  return runs.last == all.last ? "runs from " + first
                               : "runs " + first + " to " + last;
}

}  // namespace ZARN

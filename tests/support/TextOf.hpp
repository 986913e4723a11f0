#pragma once

#include <string>
#include <utility>

namespace ZARN::Testing {

/// The text of the exception of this type that @p action throws; says so if it
/// throws none. Exceptions of other types pass.
template <class Exception, class Action>
std::string TextOf(Action&& action) {
  try {
    std::forward<Action>(action)();
  } catch (const Exception& error) {
    return error.what();
  }
  return "(nothing was thrown)";
}

}  // namespace ZARN::Testing

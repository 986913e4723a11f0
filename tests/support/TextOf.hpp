#pragma once

#include <string>
#include <utility>

namespace ZARN::Testing {

/// The text of the exception of this type that @p action throws, or a text that
/// says that nothing was thrown. Exceptions of other types are not caught.
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

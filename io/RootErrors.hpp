#pragma once

#include <string>

namespace ZARN::IO {

/// While this exists, ROOT does not print the errors and warnings of this
/// thread; the first error is kept as a reason for our message.
class RootErrors {
 public:
  RootErrors();
  RootErrors(const RootErrors&) = delete;
  RootErrors& operator=(const RootErrors&) = delete;
  ~RootErrors();

  /// The first error; @p otherwise if there is none.
  std::string FirstOr(const std::string& otherwise) const {
    return first_.empty() ? otherwise : first_;
  }

 private:
  static void Keep(int level, bool abort, const char* place, const char* text);

  RootErrors* outer_;  // of this thread
  std::string first_;
};

}  // namespace ZARN::IO

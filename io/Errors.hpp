#pragma once

#include <stdexcept>

namespace ZARN::IO {

/// Input from the user (a file, a column, a number) cannot be used. The text
/// names the place.
class BadInput : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Output cannot be written. The text names the file.
class OutputFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Standard output was closed by its reader. This is not an error: the reader
/// (a pager, head) needs no more.
class ClosedPipe : public OutputFailure {
 public:
  using OutputFailure::OutputFailure;
};

}  // namespace ZARN::IO

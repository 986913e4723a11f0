#pragma once

#include <stdexcept>

namespace ZARN::IO {

/// What the user gave (a file, a column, a number) cannot be used. The text
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

/// Nobody reads standard output any more, which is no fault: what reads it (a
/// pager, head) has seen enough.
class ClosedPipe : public OutputFailure {
 public:
  using OutputFailure::OutputFailure;
};

}  // namespace ZARN::IO

#pragma once

#include <exception>

namespace ZARN::App {

/// Exit status of a command that did its work and found what it looks for:
/// tables that differ, or that switch a component off.
constexpr int kFound = 3;

/// Ends a command whose output is written, with this status and no message.
class Ended : public std::exception {
 public:
  explicit Ended(int status) : status_(status) {}
  int Status() const { return status_; }

 private:
  int status_;
};

}  // namespace ZARN::App

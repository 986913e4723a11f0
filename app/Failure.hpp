#pragma once

#include <stdexcept>

namespace ZARN::App {

/// What the user gave cannot be used: exit status 2. The text names the place.
class BadInput : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Output cannot be written: exit status 1.
class OutputFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The exit status of a command that a signal ended, as shells have it: 130 for
/// an interrupt from the keyboard.
constexpr int StatusOfSignal(int signal) { return 128 + signal; }

/// A signal asked the command to stop: exit status StatusOfSignal.
class Interrupted : public std::runtime_error {
 public:
  explicit Interrupted(int signal)
      : std::runtime_error("interrupted"), signal_(signal) {}
  int Signal() const { return signal_; }

 private:
  int signal_;
};

}  // namespace ZARN::App

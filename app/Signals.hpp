#pragma once

#include <stdexcept>

namespace ZARN::App {

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

/// Take over the signals that matter to a command that writes files.
///
/// An interrupt, a termination or a hang-up (unless the caller ignores it) ends
/// the command at once with status 128 + signal, or waits while a
/// DeferredSignals lives. A closed pipe and a file over the size limit become
/// errors of the write that met them.
void HandleSignals();

/// While it lives, a signal does not end the command but waits for
/// ThrowIfInterrupted: temporary files are then removed on the way out.
class DeferredSignals {
 public:
  DeferredSignals();
  DeferredSignals(const DeferredSignals&) = delete;
  DeferredSignals& operator=(const DeferredSignals&) = delete;
  ~DeferredSignals();
};

/// @throws Interrupted if a signal waits. Long loops call it often, and so
///         does all reading and writing of io/.
void ThrowIfInterrupted();

}  // namespace ZARN::App

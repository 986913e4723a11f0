#pragma once

#include <stdexcept>

namespace ZARN::App {

/// Exit status of a command that was ended by a signal, as in shells: 130 for
/// an interrupt from the keyboard.
constexpr int StatusOfSignal(int signal) { return 128 + signal; }

/// A signal asked the command to stop; the exit status is StatusOfSignal.
class Interrupted : public std::runtime_error {
 public:
  explicit Interrupted(int signal)
      : std::runtime_error("interrupted"), signal_(signal) {}
  int Signal() const { return signal_; }

 private:
  int signal_;
};

/// Install the signal handling of a command that writes files.
///
/// An interrupt, a termination or a hang-up (unless the caller ignores it) ends
/// the command at once with status 128 + signal, or is deferred while a
/// DeferredSignals object exists. A closed pipe and a file over the size limit
/// become errors of the write.
void HandleSignals();

/// While it exists, a signal does not end the command; the next
/// ThrowIfInterrupted throws, so that temporary files are removed.
class DeferredSignals {
 public:
  DeferredSignals();
  DeferredSignals(const DeferredSignals&) = delete;
  DeferredSignals& operator=(const DeferredSignals&) = delete;
  ~DeferredSignals();
};

/// @throws Interrupted if a signal arrived. Long loops call this often, and so
///         does all reading and writing in io/.
void ThrowIfInterrupted();

}  // namespace ZARN::App

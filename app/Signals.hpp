#pragma once

#include <csignal>

namespace ZARN::App {

/// Take over the signals that matter to a command that writes files.
///
/// An interrupt, a termination or a hang-up (unless the caller ignores it) ends
/// the command at once with status 128 + signal, or is kept while a KeptSignals
/// lives. A closed pipe and a file over the size limit become errors of the
/// write that met them.
void HandleSignals();

/// While it lives, a signal does not end the command but is kept for
/// ThrowIfInterrupted: temporary files are then removed on the way out.
class KeptSignals {
 public:
  KeptSignals();
  KeptSignals(const KeptSignals&) = delete;
  KeptSignals& operator=(const KeptSignals&) = delete;
  ~KeptSignals();
};

/// While it lives, the calling thread and those that it starts are spared the
/// signals: they go to another one. A thread that works must not be the one to
/// hear of an interrupt while another waits for input.
class BlockedSignals {
 public:
  BlockedSignals();
  BlockedSignals(const BlockedSignals&) = delete;
  BlockedSignals& operator=(const BlockedSignals&) = delete;
  ~BlockedSignals();

 private:
  sigset_t before_ = {};
};

/// @throws Interrupted if a signal was kept. Long loops call it often; calls
///         that wait call it when they were interrupted.
void ThrowIfInterrupted();

}  // namespace ZARN::App

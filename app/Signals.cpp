#include "app/Signals.hpp"

#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>

#include "TSystem.h"
#include "io/InterruptCheck.hpp"

namespace ZARN::App {
namespace {

constexpr std::array kStopSignals = {SIGINT, SIGTERM, SIGHUP};

// Lock-free, so that a signal handler may use them; atomic, since any thread
// may receive the signal while others read them.
static_assert(std::atomic<int>::is_always_lock_free);
std::atomic<int> areSignalsDeferred = 0;
std::atomic<int> deferredSignal = 0;

extern "C" void TakeSignal(int signal) {
  if (areSignalsDeferred == 0) _exit(StatusOfSignal(signal));
  deferredSignal = signal;
}

}  // namespace

void HandleSignals() {
  // ROOT's core library installs its own handlers, which print a stack trace
  // and continue or abort.
  gSystem->ResetSignals();

  struct sigaction take = {};
  take.sa_handler = TakeSignal;
  sigemptyset(&take.sa_mask);
  // No SA_RESTART: a waiting read or write must return to be interrupted.
  for (const int signal : kStopSignals) {
    struct sigaction found = {};
    sigaction(signal, nullptr, &found);
    // nohup and background jobs rely on ignored signals staying ignored.
    if (found.sa_handler != SIG_IGN) sigaction(signal, &take, nullptr);
  }
  struct sigaction ignore = {};
  ignore.sa_handler = SIG_IGN;
  sigemptyset(&ignore.sa_mask);
  for (const int signal : {SIGPIPE, SIGXFSZ}) {
    sigaction(signal, &ignore, nullptr);
  }
  IO::SetInterruptCheck(ThrowIfInterrupted);
}

DeferredSignals::DeferredSignals() { areSignalsDeferred = 1; }
DeferredSignals::~DeferredSignals() { areSignalsDeferred = 0; }

void ThrowIfInterrupted() {
  if (deferredSignal != 0) throw Interrupted(deferredSignal);
}

}  // namespace ZARN::App

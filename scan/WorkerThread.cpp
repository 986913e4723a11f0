#include "scan/WorkerThread.hpp"

#include <csignal>
#include <utility>

namespace ZARN::Scan {
namespace {

/// Blocks the signals in this thread; threads that it starts inherit that.
class BlockedStopSignals {
 public:
  BlockedStopSignals() {
    sigset_t blocked;
    sigemptyset(&blocked);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
      sigaddset(&blocked, signal);
    }
    pthread_sigmask(SIG_BLOCK, &blocked, &before_);
  }
  BlockedStopSignals(const BlockedStopSignals&) = delete;
  BlockedStopSignals& operator=(const BlockedStopSignals&) = delete;
  ~BlockedStopSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_ = {};
};

}  // namespace

std::thread StartWorkerThread(std::function<void()> work) {
  const BlockedStopSignals blockedStopSignals;
  return std::thread(std::move(work));
}

}  // namespace ZARN::Scan

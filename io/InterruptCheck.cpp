#include "io/InterruptCheck.hpp"

#include <atomic>

namespace ZARN::IO {
namespace {

std::atomic<InterruptCheck> currentCheck = nullptr;

}  // namespace

void SetInterruptCheck(InterruptCheck check) { currentCheck = check; }

void CheckForInterrupt() {
  if (const InterruptCheck check = currentCheck) check();
}

}  // namespace ZARN::IO

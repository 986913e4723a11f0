#pragma once

#include <functional>
#include <thread>

namespace ZARN::Scan {

/// Start a thread with the stop signals (SIGINT, SIGTERM, SIGHUP) blocked, so
/// that another thread receives them. If a worker received the interrupt, a
/// thread that waits for input would go on waiting.
///
/// @throws std::system_error if no thread can be started
std::thread StartWorkerThread(std::function<void()> work);

}  // namespace ZARN::Scan

#pragma once

#include <functional>
#include <thread>

namespace ZARN::Scan {

/// Start a thread that is spared the signals that ask a program to stop
/// (SIGINT, SIGTERM, SIGHUP): they go to another thread. A thread that works
/// must not be the one to hear of an interrupt while another waits for input.
///
/// @throws std::system_error if there are no more threads to be had
std::thread StartWorkerThread(std::function<void()> work);

}  // namespace ZARN::Scan

#pragma once

#include <Python.h>
#include <unistd.h>

namespace ZARN::Python {

/// Releases the interpreter lock while it lives, so that other Python threads
/// run.
///
/// Once the interpreter is shutting down, Python ends a thread that asks for
/// the lock by unwinding its stack, which must not pass a destructor. Such a
/// thread, a daemon, waits here for the end of the process.
class Unlocked {
 public:
  Unlocked() : state_(PyEval_SaveThread()) {}
  Unlocked(const Unlocked&) = delete;
  Unlocked& operator=(const Unlocked&) = delete;
  ~Unlocked() {
    try {
      PyEval_RestoreThread(state_);
    } catch (...) {
      while (true) pause();
    }
  }

 private:
  PyThreadState* state_;
};

}  // namespace ZARN::Python

#pragma once

namespace ZARN::IO {

/// A function that throws if the program was asked to stop.
using InterruptCheck = void (*)();

/// Set the function that every read and write calls before it waits, and after
/// a signal interrupted its wait (install the handler without SA_RESTART). An
/// exception from the check leaves the read or write; otherwise the wait
/// continues. The check applies to the whole process; setting it is
/// thread-safe.
///
/// @param check  null for none
void SetInterruptCheck(InterruptCheck check);

/// Call the check that was set, if any.
void CheckForInterrupt();

}  // namespace ZARN::IO

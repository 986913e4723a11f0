#pragma once

namespace ZARN::IO {

/// A function that throws if the program was asked to stop.
using InterruptCheck = void (*)();

/// Set what all reading and writing calls before it waits, and when a signal
/// interrupted its wait (the handler must be installed without SA_RESTART).
/// What the check throws leaves from the read or write; otherwise the wait goes
/// on, as it does without a check. Holds for the whole process and is
/// thread-safe.
///
/// @param check  null for none
void SetInterruptCheck(InterruptCheck check);

/// Call the check that was set, if any.
void CheckForInterrupt();

}  // namespace ZARN::IO

#pragma once

#include <nanobind/nanobind.h>

#include <string>

namespace ZARN::Python {

/// A text of the library for Python. Bytes that are not UTF-8, for example of a
/// file's name, become escape sequences.
nanobind::str TextOf(const std::string& text);

/// Send what the library logs to Python's logger "zarn" instead of standard
/// error, until the interpreter ends.
///
/// A message can come from any thread, and while another one that has the
/// interpreter lock waits for the log. So it is only queued, and Python is
/// asked to call DeliverMessages soon.
void QueueMessages();

/// Hand the queued messages to logging: warnings as WARNING, that a component
/// was loaded as INFO, diagnostics as DEBUG. Requires the interpreter lock.
void DeliverMessages();

/// Write to standard error again, before the interpreter ends.
void StopQueueingMessages();

}  // namespace ZARN::Python

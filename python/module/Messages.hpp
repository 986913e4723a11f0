#pragma once

namespace ZARN::Python {

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

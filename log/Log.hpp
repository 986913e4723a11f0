#pragma once

#include <atomic>
#include <iosfwd>
#include <string>

#include "log/Colours.hpp"

/// A text stream for messages: several threads may write, and every message
/// arrives whole.
///
/// A message is whatever one thread inserts up to a newline at the end of an
/// insertion. Until then its text waits in the writing thread; the newline
/// sends it to the output in one piece. Text without a newline is sent by
/// flush, by SetOutput, or when the thread ends.
///
/// The global objects are constant-initialised, so the constructors of other
/// statics may use them, also to write to standard error.
class otext {
 public:
  enum class eState { kSilent, kOn };

  /// A stream that writes to standard error, with no prefix and no colour.
  constexpr explicit otext(eState state) : on_(state == eState::kOn) {}

  otext(const otext&) = delete;
  otext& operator=(const otext&) = delete;

  otext& operator<<(const char* text);
  otext& operator<<(const std::string& text);
  /// Six significant digits, as a std::ostream prints by default, whatever the
  /// locale.
  otext& operator<<(double value);
  otext& operator<<(void (*manipulator)(otext&));

  /// Switch the stream on or off; what is inserted while it is off is dropped.
  void Switch(eState state) { on_.store(state == eState::kOn); }
  bool IsOn() const { return on_.load(std::memory_order_relaxed); }

  /// Write to @p output from now on; nullptr goes back to standard error. What
  /// this thread has not sent yet goes to the old output first.
  ///
  /// @param output  must outlive its use here; written under a lock that all
  ///                otext objects share, so two of them may share an output.
  void SetOutput(std::ostream* output);

  /// Send what this thread has inserted so far, newline or not.
  void Flush();

 private:
  void Insert(const char* text, std::size_t length);

  std::atomic<bool> on_;
  std::ostream* output_ = nullptr;  // guarded by the lock shared by all otext
};

/// End a line: a newline, which sends the message.
void endl(otext& stream);
/// Send an unfinished message.
void flush(otext& stream);

namespace ZARN {

/// Warnings, and the messages of a run's set-up.
extern otext warn;
/// Diagnostics; silent until switched on with debug.Switch(otext::eState::kOn).
extern otext debug;

}  // namespace ZARN

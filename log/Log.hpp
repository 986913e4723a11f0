#pragma once

#include <atomic>
#include <iosfwd>
#include <string>

#include "log/Colours.hpp"

/// A text stream for messages. Several threads may write; messages are never
/// mixed.
///
/// A message is the text that one thread inserts until an insertion ends with a
/// newline. Until then the text is kept in that thread; the newline sends it to
/// the output in one piece. Text without a newline is sent by flush, by
/// SetOutput, or when the thread ends.
///
/// The global objects are constant-initialised, so constructors of other
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
  /// Six significant digits, as a std::ostream prints by default, in every
  /// locale.
  otext& operator<<(double value);
  otext& operator<<(void (*manipulator)(otext&));

  /// Switch the stream on or off; text inserted while it is off is dropped.
  void Switch(eState state) { on_.store(state == eState::kOn); }
  bool IsOn() const { return on_.load(std::memory_order_relaxed); }

  /// Write to @p output from now on; nullptr selects standard error again.
  /// Unsent text of this thread goes to the old output first.
  ///
  /// @param output  must outlive its use here; written under a lock that all
  ///                otext objects share, so two of them may share an output.
  void SetOutput(std::ostream* output);

  /// Send what this thread has inserted so far, with or without a newline.
  void Flush();

 private:
  void Insert(const char* text, std::size_t length);

  std::atomic<bool> on_;
  std::ostream* output_ = nullptr;  // guarded by the lock shared by all otext
};

/// End a line: insert a newline, which sends the message.
void endl(otext& stream);
/// Send an unfinished message.
void flush(otext& stream);

namespace ZARN {

/// Warnings, and messages about the set-up of a run.
extern otext warn;
/// Diagnostics; silent until switched on with debug.Switch(otext::eState::kOn).
extern otext debug;

}  // namespace ZARN

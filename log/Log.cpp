#include "log/Log.hpp"

#include <charconv>
#include <cstring>
#include <iostream>
#include <map>
#include <mutex>

namespace ZARN {
otext warn(otext::eState::kOn);
otext debug(otext::eState::kSilent);
}  // namespace ZARN

namespace {

std::mutex outputLock;

/// Unfinished messages of this thread. They are sent when the thread ends, so
/// that no text is lost.
struct UnsentTexts {
  std::map<otext*, std::string> byStream;
  UnsentTexts() = default;
  UnsentTexts(const UnsentTexts&) = delete;
  UnsentTexts& operator=(const UnsentTexts&) = delete;
  ~UnsentTexts() {
    while (!byStream.empty()) byStream.begin()->first->Flush();
  }
};

thread_local UnsentTexts unsent;

std::ostream& StandardError() {
  // The constructor of another unit's static may write before std::cerr exists.
  static const std::ios_base::Init standardStreams;
  return std::cerr;
}

}  // namespace

otext& otext::operator<<(const char* text) {
  Insert(text, std::strlen(text));
  return *this;
}

otext& otext::operator<<(const std::string& text) {
  Insert(text.data(), text.size());
  return *this;
}

otext& otext::operator<<(double value) {
  constexpr int kSignificantDigits = 6;  // the default of std::ostream
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, value,
                                 std::chars_format::general, kSignificantDigits)
                       .ptr;
  Insert(text, static_cast<std::size_t>(end - text));
  return *this;
}

otext& otext::operator<<(void (*manipulator)(otext&)) {
  manipulator(*this);
  return *this;
}

void otext::Insert(const char* text, std::size_t length) {
  if (!IsOn() || length == 0) return;
  unsent.byStream[this].append(text, length);
  if (text[length - 1] == '\n') Flush();
}

void otext::Flush() {
  const auto message = unsent.byStream.extract(this);
  if (message.empty()) return;
  const std::lock_guard<std::mutex> lock(outputLock);
  std::ostream& output = output_ != nullptr ? *output_ : StandardError();
  output.write(message.mapped().data(),
               static_cast<std::streamsize>(message.mapped().size()));
  output.flush();
}

void otext::SetOutput(std::ostream* output) {
  Flush();
  const std::lock_guard<std::mutex> lock(outputLock);
  output_ = output;
}

void endl(otext& stream) { stream << "\n"; }
void flush(otext& stream) { stream.Flush(); }

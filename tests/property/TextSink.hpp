#pragma once

#include <ostream>
#include <stdexcept>
#include <streambuf>
#include <string>

namespace ZARN::Testing {

/// A stream into a string that can be read and cleared without a copy: four of
/// them are compared for every path.
class TextSink : public std::ostream {
 public:
  TextSink() : std::ostream(nullptr) { rdbuf(&buffer_); }

  const std::string& Text() const { return buffer_.text; }
  void Empty() { buffer_.text.clear(); }

  /// Keep text or drop it.
  void Switch(bool on) {
    isOn_ = on;
    exceptions(std::ios::goodbit);
    clear(on ? std::ios::goodbit : std::ios::badbit);
  }

  /// Throw as soon as this text has been written; empty: never throw.
  void ThrowAt(const std::string& text) {
    buffer_.throwAt = text;
    Switch(isOn_);  // an exception leaves it in a bad state
    if (!text.empty() && isOn_) exceptions(std::ios::badbit);
  }

 private:
  struct Buffer : std::streambuf {
    std::string text;
    std::string throwAt;

    int overflow(int c) override {
      if (c == traits_type::eof()) return 0;
      text.push_back(static_cast<char>(c));
      ThrowIfAsked();
      return c;
    }
    std::streamsize xsputn(const char* from, std::streamsize length) override {
      text.append(from, static_cast<std::size_t>(length));
      ThrowIfAsked();
      return length;
    }
    void ThrowIfAsked() const {
      if (throwAt.empty() || text.find(throwAt) == std::string::npos) return;
      throw std::runtime_error(throwAt);
    }
  };

  Buffer buffer_;
  bool isOn_ = true;
};

}  // namespace ZARN::Testing

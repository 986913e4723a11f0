#include "app/ProgressBar.hpp"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <streambuf>
#include <string>

#include "log/Grouped.hpp"

namespace ZARN::App {

namespace {

/// A duration in a unit that suits its length.
std::string Duration(double seconds) {
  constexpr double kMinute = 60;
  constexpr double kHour = 60 * kMinute;
  const auto whole = [](double value) {
    return Grouped(static_cast<unsigned long long>(value));
  };
  if (seconds < 2 * kMinute) return whole(std::ceil(seconds)) + " s";
  if (seconds < 2 * kHour) return whole(seconds / kMinute) + " min";
  return whole(seconds / kHour) + " h";
}

}  // namespace

/// Forwards messages to standard error after clearing the bar.
class ProgressBar::ClearingBuffer : public std::streambuf {
 public:
  explicit ClearingBuffer(ProgressBar& bar) : bar_(bar) {}

 protected:
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    bar_.Finish();
    std::cerr.write(text, size);
    return size;
  }
  int_type overflow(int_type c) override {
    if (traits_type::eq_int_type(c, traits_type::eof())) return 0;
    const char text = traits_type::to_char_type(c);
    return xsputn(&text, 1) == 1 ? c : traits_type::eof();
  }

 private:
  ProgressBar& bar_;
};

ProgressBar::ProgressBar()
    : isTerminal_(isatty(STDERR_FILENO) == 1),
      nextDraw_(begin_ + std::chrono::seconds(1)),
      buffer_(std::make_unique<ClearingBuffer>(*this)),
      messages_(std::make_unique<std::ostream>(buffer_.get())) {}

ProgressBar::~ProgressBar() { Finish(); }

void ProgressBar::Update(std::uint64_t count, std::optional<double> done) {
  if (!isTerminal_ || Clock::now() < nextDraw_) return;
  Draw(count, done);
  nextDraw_ = Clock::now() + std::chrono::milliseconds(100);
}

void ProgressBar::Draw(std::uint64_t count, std::optional<double> done) {
  constexpr int kWidth = 20;  // the line with all numbers fits 80 columns
  const double part = std::min(1.0, done.value_or(0.0));
  std::string line = "\r\033[K";
  if (done.has_value()) {
    const int filled = static_cast<int>(part * kWidth);
    line += "[" + std::string(static_cast<std::size_t>(filled), '#') +
            std::string(static_cast<std::size_t>(kWidth - filled), '.') + "] " +
            std::to_string(static_cast<int>(part * 100)) + " %  ";
  }
  const double seconds =
      std::chrono::duration<double>(Clock::now() - begin_).count();
  const double rate = static_cast<double>(count) / seconds;
  line += Grouped(count) + " paths, " +
          Grouped(static_cast<unsigned long long>(rate)) + " a second";
  if (part > 0) line += ", " + Duration(seconds * (1 - part) / part) + " left";
  std::cerr << line << std::flush;
  isShown_ = true;
}

void ProgressBar::Finish() {
  if (!isShown_) return;
  std::cerr << "\r\033[K" << std::flush;
  isShown_ = false;
}

}  // namespace ZARN::App

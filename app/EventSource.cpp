#include "app/EventSource.hpp"

#include <algorithm>

#include "app/ProgressBar.hpp"

namespace ZARN::App {

EventSource::EventSource(const std::string& path) {
  reader_.emplace(input_.emplace(path), "event");
}

EventSource::EventSource(const TVector3& position)
    : events_{{"0", "0", position}} {}

bool EventSource::Next(std::size_t pmts) {
  if (isAtEnd_) return false;
  if (!reader_.has_value()) {
    isAtEnd_ = true;
    return true;
  }
  constexpr std::size_t kPairs = 1UL << 14U;
  const std::size_t wanted =
      std::max<std::size_t>(1, kPairs / std::max<std::size_t>(1, pmts));
  bytesBefore_ = reader_->BytesTaken();
  events_.clear();
  IO::NamedPosition event;
  while (events_.size() < wanted && !isAtEnd_) {
    isAtEnd_ = !reader_->Next(event);
    if (!isAtEnd_) events_.push_back(event);
  }
  return !events_.empty();
}

std::optional<double> EventSource::Done(double share) const {
  if (!reader_.has_value()) return share;
  const auto size = input_->Size();
  const auto before = Share(bytesBefore_, size);
  const auto after = Share(reader_->BytesTaken(), size);
  if (!before.has_value()) return std::nullopt;
  return *before + share * (*after - *before);
}

}  // namespace ZARN::App

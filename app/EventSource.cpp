#include "app/EventSource.hpp"

#include "io/IntegerName.hpp"
#include "io/Quoted.hpp"

namespace ZARN::App {

EventSource::EventSource(const std::string& input,
                         const IO::ColumnNames& names) {
  reader_.emplace(input, "event", names);
}

EventSource::EventSource(const TVector3& position) : position_(position) {}

bool EventSource::Next(std::vector<IO::NamedPosition>& events,
                       std::size_t most) {
  events.clear();
  if (!reader_.has_value()) {
    if (position_.has_value()) events.push_back({"0", "0", *position_});
    position_.reset();
    return !events.empty();
  }
  IO::NamedPosition event;
  while (events.size() < most && !isAtEnd_) {
    isAtEnd_ = !reader_->Next(event);
    if (isAtEnd_) break;
    if (requiresIntegers_ && !IO::IntegerOf(event.name).has_value()) {
      reader_->FailName(IO::Quoted(event.name) +
                        " is not an integer; the first events have integers, "
                        "so the ROOT file stores integers");
    }
    events.push_back(event);
  }
  return !events.empty();
}

std::optional<double> EventSource::Done() const {
  if (!reader_.has_value()) return 1.0;
  return reader_->Done();
}

}  // namespace ZARN::App

#include "app/EventSource.hpp"

#include "app/ProgressBar.hpp"
#include "io/IntegerName.hpp"
#include "io/Quoted.hpp"

namespace ZARN::App {

EventSource::EventSource(const std::string& path) {
  reader_.emplace(input_.emplace(path), "event");
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
  return Share(reader_->BytesTaken(), input_->Size());
}

}  // namespace ZARN::App

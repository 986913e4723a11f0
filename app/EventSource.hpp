#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "TVector3.h"
#include "io/InputFile.hpp"
#include "io/PositionReader.hpp"

namespace ZARN::App {

/// Events as they come, some at a time: however many there are, only those
/// being worked on are in memory.
class EventSource {
 public:
  /// @param path  CSV file of events, as for IO::InputFile
  /// @throws IO::BadInput if it cannot be read or a column is missing
  explicit EventSource(const std::string& path);

  /// One event, whose name is 0.
  explicit EventSource(const TVector3& position);

  EventSource(const EventSource&) = delete;
  EventSource& operator=(const EventSource&) = delete;

  /// Go on to the next events; false after the last.
  ///
  /// @param pmts  how many PMTs each will be judged with: with few, more events
  ///              are taken at once
  /// @throws as IO::PositionReader::Next
  bool Next(std::size_t pmts);

  const std::vector<IO::NamedPosition>& Events() const { return events_; }

  /// The part of all events that is done when @p share of the current ones is;
  /// nothing where their number is not known.
  std::optional<double> Done(double share) const;

 private:
  std::optional<IO::InputFile> input_;
  std::optional<IO::PositionReader> reader_;
  std::vector<IO::NamedPosition> events_;
  bool isAtEnd_ = false;
  std::uint64_t bytesBefore_ = 0;  // up to the current events
};

}  // namespace ZARN::App

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "TVector3.h"
#include "io/InputFile.hpp"
#include "io/PositionReader.hpp"

namespace ZARN::App {

/// Reads events in batches, so that memory does not grow with their number.
class EventSource {
 public:
  /// @param path  CSV file of events, as for IO::InputFile
  /// @throws IO::BadInput if it cannot be read or a column is missing
  explicit EventSource(const std::string& path);

  /// One event, whose name is 0.
  explicit EventSource(const TVector3& position);

  EventSource(const EventSource&) = delete;
  EventSource& operator=(const EventSource&) = delete;

  /// Read the next batch of events; false after the last.
  ///
  /// @param pmts  number of PMTs that each event is judged with; fewer PMTs
  ///              make larger batches
  /// @throws as IO::PositionReader::Next
  bool Next(std::size_t pmts);

  const std::vector<IO::NamedPosition>& Events() const { return events_; }

  /// Fraction of all events done when @p share of the current batch is done;
  /// nullopt if the total is unknown.
  std::optional<double> Done(double share) const;

 private:
  std::optional<IO::InputFile> input_;
  std::optional<IO::PositionReader> reader_;
  std::vector<IO::NamedPosition> events_;
  bool isAtEnd_ = false;
  std::uint64_t bytesBefore_ = 0;  // file position before the current batch
};

}  // namespace ZARN::App

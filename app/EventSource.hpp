#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "TVector3.h"
#include "io/PositionReader.hpp"

namespace ZARN::App {

/// Reads events in blocks, so that memory does not grow with their number.
class EventSource {
 public:
  /// @param input  as for IO::PositionReader
  /// @param names  what the columns are called
  /// @throws IO::BadInput if it cannot be read or a column is missing
  explicit EventSource(const std::string& input,
                       const IO::ColumnNames& names = {});

  /// One event, whose name is 0.
  explicit EventSource(const TVector3& position);

  EventSource(const EventSource&) = delete;
  EventSource& operator=(const EventSource&) = delete;

  /// Read the next events; false after the last.
  ///
  /// @param most  number of events to read, unless fewer are left
  /// @throws as IO::PositionReader::Next
  bool Next(std::vector<IO::NamedPosition>& events, std::size_t most);

  /// From now on refuse events whose name is not an integer (IO::IntegerOf), as
  /// all names so far were.
  void RequireIntegers() { requiresIntegers_ = true; }

  /// Fraction of the events that has been read; nullopt if the total is
  /// unknown.
  std::optional<double> Done() const;

 private:
  std::optional<IO::PositionReader> reader_;
  std::optional<TVector3> position_;  // of the only event, until it is read
  bool isAtEnd_ = false;
  bool requiresIntegers_ = false;
};

}  // namespace ZARN::App

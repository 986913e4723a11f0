#pragma once

#include <optional>
#include <string>
#include <vector>

#include "TVector3.h"
#include "app/EventSource.hpp"
#include "io/ColumnNames.hpp"

namespace CLI {
class App;
}

namespace ZARN::App {

/// The events and PMTs between which light is judged.
struct InputOptions {
  std::optional<std::string> events;
  std::optional<TVector3> at;  // instead of events
  std::string pmts;
  IO::ColumnNames names;  // of the columns of events and PMTs
};

/// Add --events, --at, --pmts and --input-columns; @p options must outlive the
/// parsing.
void AddInputOptions(CLI::App& command, InputOptions& options);

/// Check that events are given once.
///
/// @param command  its name, for the message
/// @throws BadUsage
void RequireEvents(const InputOptions& options, const std::string& command);

/// Open the events; @p options are as RequireEvents wants them.
///
/// @throws IO::BadInput as EventSource does
EventSource OpenEvents(const InputOptions& options);

/// The files that are read.
std::vector<std::string> FilesOf(const InputOptions& options);

}  // namespace ZARN::App

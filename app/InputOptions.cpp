#include "app/InputOptions.hpp"

#include "app/CommandLine.hpp"
#include "app/InputColumnsOption.hpp"
#include "app/PositionOption.hpp"
#include "app/Usage.hpp"

namespace ZARN::App {

void AddInputOptions(CLI::App& command, InputOptions& options) {
  AddOption(command, "--events", options.events, "EVENTS",
            "CSV or ROOT file of events; - reads CSV from standard input");
  AddPositionOption(
      command, "--at", options.at,
      "One event, named 0, at this position in mm, instead of a file");
  AddRequiredOption(
      command, "--pmts", options.pmts, "PMTS",
      "CSV or ROOT file of PMTs; - reads CSV from standard input");
  AddInputColumnsOption(command, options.names, PositionColumns(),
                        "event_x=evt.x,pmt=id");
}

void RequireEvents(const InputOptions& options, const std::string& command) {
  if (options.events.has_value() == options.at.has_value()) {
    throw BadUsage(command + " needs either --events or --at");
  }
}

EventSource OpenEvents(const InputOptions& options) {
  return options.at.has_value() ? EventSource(*options.at)
                                : EventSource(*options.events, options.names);
}

std::vector<std::string> FilesOf(const InputOptions& options) {
  std::vector<std::string> files = {options.pmts};
  if (options.events.has_value()) files.push_back(*options.events);
  return files;
}

}  // namespace ZARN::App

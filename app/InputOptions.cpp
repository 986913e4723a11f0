#include "app/InputOptions.hpp"

#include <CLI/CLI.hpp>

#include "app/InputColumnsOption.hpp"
#include "app/PositionOption.hpp"
#include "app/Usage.hpp"

namespace ZARN::App {

void AddInputOptions(CLI::App& command, InputOptions& options) {
  command
      .add_option("--events", options.events,
                  "CSV or ROOT file of events; - reads CSV from standard input")
      ->type_name("EVENTS");
  AddPositionOption(
      command, "--at", options.at,
      "One event, named 0, at this position in mm, instead of a file");
  command
      .add_option("--pmts", options.pmts,
                  "CSV or ROOT file of PMTs; - reads CSV from standard input")
      ->required()
      ->type_name("PMTS");
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

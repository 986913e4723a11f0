#include "app/CommandLine.hpp"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cmath>
#include <system_error>

#include "app/Usage.hpp"
#include "io/Numbers.hpp"
#include "io/Quoted.hpp"

namespace ZARN::App {

CLI::App& AddCommand(CLI::App& parent, const std::string& name,
                     const std::string& description, const Action& action) {
  CLI::App& command = *parent.add_subcommand(name, description);
  command.callback(action);
  return command;
}

CLI::App& AddCommandGroup(CLI::App& parent, const std::string& name,
                          const std::string& description) {
  CLI::App& group = *parent.add_subcommand(name, description);
  group.require_subcommand(1);
  return group;
}

void SetFooter(CLI::App& command, const std::string& text) {
  command.footer(text);
}

void AddOption(CLI::App& command, const std::string& name, std::string& value,
               const std::string& type, const std::string& description) {
  command.add_option(name, value, description)->type_name(type);
}

void AddOption(CLI::App& command, const std::string& name,
               std::optional<std::string>& value, const std::string& type,
               const std::string& description) {
  command.add_option(name, value, description)->type_name(type);
}

void AddOption(CLI::App& command, const std::string& name, int& value,
               const std::string& type, const std::string& description) {
  const auto read = [name, &value](const std::string& text) {
    value = WholeNumberOf(name, text);
  };
  AddOption(command, name, read, type, description);
}

void AddOption(CLI::App& command, const std::string& name,
               std::optional<int>& value, const std::string& type,
               const std::string& description) {
  const auto read = [name, &value](const std::string& text) {
    value = WholeNumberOf(name, text);
  };
  AddOption(command, name, read, type, description);
}

void AddOption(CLI::App& command, const std::string& name,
               std::optional<double>& value, const std::string& type,
               const std::string& description) {
  const auto read = [name, &value](const std::string& text) {
    value = NumberOf(name, text);
  };
  AddOption(command, name, read, type, description);
}

void AddOption(CLI::App& command, const std::string& name, const ReadText& read,
               const std::string& type, const std::string& description) {
  command.add_option_function<std::string>(name, read, description)
      ->type_name(type);
}

void AddRequiredOption(CLI::App& command, const std::string& name,
                       std::string& value, const std::string& type,
                       const std::string& description) {
  command.add_option(name, value, description)->required()->type_name(type);
}

void AddFlag(CLI::App& command, const std::string& name, bool& isGiven,
             const std::string& description) {
  command.add_flag(name, isGiven, description);
}

int WholeNumberOf(const std::string& option, const std::string& text) {
  int number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) {
    throw BadUsage(option + ": " + IO::Quoted(text) + " is not a whole number");
  }
  return number;
}

double NumberOf(const std::string& option, const std::string& text) {
  const IO::NumberOrReason number = IO::ParseNumber(text);
  if (number.reason != nullptr) {
    throw BadUsage(option + ": " + IO::Quoted(text) + " " + number.reason);
  }
  if (!std::isfinite(number.value)) {
    throw BadUsage(option + ": " + IO::Quoted(text) + " is not finite");
  }
  return number.value;
}

std::string WithoutBlanks(const std::string& text) {
  const std::size_t begin = text.find_first_not_of(' ');
  if (begin == std::string::npos) return "";
  return text.substr(begin, text.find_last_not_of(' ') + 1 - begin);
}

}  // namespace ZARN::App

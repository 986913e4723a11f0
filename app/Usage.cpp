#include "app/Usage.hpp"

#include <CLI/CLI.hpp>
#include <cstddef>

#include "io/Quoted.hpp"
#include "log/NearestName.hpp"

namespace ZARN::App {
namespace {

/// The commands that were given, outermost first: the main one, its subcommand,
/// the subcommand of that.
std::vector<const CLI::App*> GivenCommands(const CLI::App& app) {
  std::vector<const CLI::App*> commands = {&app};
  for (;;) {
    const auto subcommands = commands.back()->get_subcommands();
    if (subcommands.empty()) return commands;
    commands.push_back(subcommands.front());
  }
}

bool IsMain(const CLI::App& command) { return command.get_parent() == nullptr; }

/// "scan" or "tables import"; "zarn-shadow" for the main command.
std::string FullName(const CLI::App& command) {
  if (IsMain(command) || IsMain(*command.get_parent())) {
    return command.get_name();
  }
  return FullName(*command.get_parent()) + " " + command.get_name();
}

bool IsOption(const std::string& argument) {
  return argument.size() > 1 && argument.front() == '-';
}

/// "-o" and "--output" of every option.
std::vector<std::string> OptionNames(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::Option* const option : command.get_options()) {
    for (const std::string& name : option->get_lnames()) {
      names.push_back("--" + name);
    }
    for (const std::string& name : option->get_snames()) {
      names.push_back("-" + name);
    }
  }
  return names;
}

std::vector<std::string> SubcommandNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* const subcommand : app.get_subcommands(nullptr)) {
    names.push_back(subcommand->get_name());
  }
  return names;
}

/// Message for an argument that means nothing at its place.
std::string DescribeUnknown(const CLI::App& command,
                            const std::string& argument) {
  if (IsOption(argument)) {
    const std::string name = argument.substr(0, argument.find('='));
    return FullName(command) + " has no option " + IO::Quoted(name) +
           Suggest(NearestName(name, OptionNames(command)));
  }
  const std::vector<std::string> names = SubcommandNames(command);
  if (names.empty()) {
    return "too many arguments for " + FullName(command) + ": " +
           IO::Quoted(argument);
  }
  const std::string nearest = NearestName(argument, names);
  return "unknown subcommand " + IO::Quoted(argument) +
         (IsMain(command) ? "" : " of " + FullName(command)) +
         (nearest.empty() ? "; use " + Joined(names, "or") : Suggest(nearest));
}

std::string DescribeMissing(const CLI::App& command) {
  const std::vector<std::string> names = SubcommandNames(command);
  if (!names.empty()) {
    return "a subcommand is missing: " + Joined(names, "or");
  }
  std::vector<std::string> missing;
  for (const CLI::Option* const option : command.get_options()) {
    if (option->get_required() && option->count() == 0) {
      missing.push_back(option->get_name());
    }
  }
  return FullName(command) + " needs " + Joined(missing, "and");
}

/// Message for an option with too many or too few values.
std::string DescribeValues(const CLI::App& command,
                           const std::vector<std::string>& arguments) {
  for (const CLI::Option* const option : command.get_options()) {
    if (option->count() > 1 && option->get_items_expected_max() == 1) {
      return option->get_name() + " is given more than once";
    }
  }
  // The parser reached the end of the arguments while looking for the value.
  return arguments.back() + " needs a value";
}

/// Message for a flag that was given a value.
std::string DescribeFlag(const std::vector<std::string>& arguments,
                         const CLI::ParseError& error) {
  for (const std::string& argument : arguments) {
    const std::size_t equals = argument.find('=');
    if (!IsOption(argument) || equals == std::string::npos) continue;
    const std::string name = argument.substr(0, equals);
    if (std::string(error.what()).find(name + " ") != std::string::npos) {
      return name + " takes no value, but was given " +
             IO::Quoted(argument.substr(equals + 1));
    }
  }
  return error.what();
}

}  // namespace

std::string DescribeBadUsage(const CLI::App& app, const CLI::ParseError& error,
                             const std::vector<std::string>& arguments) {
  const std::vector<const CLI::App*> given = GivenCommands(app);
  const CLI::App& command = *given.back();
  // A misspelt name is often the reason why another one is missing.
  for (const CLI::App* const place : given) {
    const std::vector<std::string> unknown = place->remaining();
    if (!unknown.empty()) return DescribeUnknown(*place, unknown.front());
  }
  const std::string kind = error.get_name();
  if (kind == "RequiredError") return DescribeMissing(command);
  if (kind == "ArgumentMismatch") return DescribeValues(command, arguments);
  if (kind == "ConversionError") return DescribeFlag(arguments, error);
  return error.what();
}

std::string HintAtHelp(const CLI::App& app) {
  const CLI::App& command = *GivenCommands(app).back();
  return "See " + app.get_name() + " " +
         (IsMain(command) ? "" : FullName(command) + " ") + "--help.";
}

std::string Joined(const std::vector<std::string>& names,
                   const std::string& last) {
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) text += i + 1 == names.size() ? " " + last + " " : ", ";
    text += names[i];
  }
  return text;
}

}  // namespace ZARN::App

#pragma once

#include <functional>
#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace ZARN::App {

/// What a command does with its options, and what an option does with the text
/// that was given for it; both may throw BadUsage.
using Action = std::function<void()>;
using ReadText = std::function<void(const std::string&)>;

/// Add a subcommand, which calls @p action once its options are read.
///
/// These operations are all that commands use of the parser: its templates are
/// compiled once, in their source, and not for every command.
CLI::App& AddCommand(CLI::App& parent, const std::string& name,
                     const std::string& description, const Action& action);

/// Add one that only groups its own subcommands, of which one must be given.
CLI::App& AddCommandGroup(CLI::App& parent, const std::string& name,
                          const std::string& description);

/// Set what the help prints below the options.
void SetFooter(CLI::App& command, const std::string& text);

/// Add an option ("--name", or "-n,--name") or an argument ("NAME").
///
/// @param value        must outlive the parsing and keeps its value if the
///                     option is not given; a number that is not one, or not
///                     finite, is BadUsage
/// @param type         what the help calls the value
void AddOption(CLI::App& command, const std::string& name, std::string& value,
               const std::string& type, const std::string& description);
void AddOption(CLI::App& command, const std::string& name,
               std::optional<std::string>& value, const std::string& type,
               const std::string& description);
void AddOption(CLI::App& command, const std::string& name, int& value,
               const std::string& type, const std::string& description);
void AddOption(CLI::App& command, const std::string& name,
               std::optional<int>& value, const std::string& type,
               const std::string& description);
void AddOption(CLI::App& command, const std::string& name,
               std::optional<double>& value, const std::string& type,
               const std::string& description);
void AddOption(CLI::App& command, const std::string& name, const ReadText& read,
               const std::string& type, const std::string& description);

/// The same for one that must be given.
void AddRequiredOption(CLI::App& command, const std::string& name,
                       std::string& value, const std::string& type,
                       const std::string& description);

/// Add an option without a value, which sets @p isGiven.
void AddFlag(CLI::App& command, const std::string& name, bool& isGiven,
             const std::string& description);

/// Read an option's value, or throw BadUsage naming the option. The parser's
/// own conversions accept octal and hexadecimal numbers and blanks, and round
/// numbers twice.
int WholeNumberOf(const std::string& option, const std::string& text);
double NumberOf(const std::string& option, const std::string& text);

/// The text without blanks at its ends.
std::string WithoutBlanks(const std::string& text);

}  // namespace ZARN::App

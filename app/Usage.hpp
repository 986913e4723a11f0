#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace CLI {
class App;
class ParseError;
}  // namespace CLI

namespace ZARN::App {

/// The command was used in a wrong way: exit status 2.
class BadUsage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Describe arguments that the parser refused, in the words of the help, with
/// the nearest known name for an unknown one. (The parser's own texts are about
/// its internals.)
///
/// @param arguments  of the command line, without the program name
std::string DescribeBadUsage(const CLI::App& app, const CLI::ParseError& error,
                             const std::vector<std::string>& arguments);

/// A line that says how to show the help.
std::string HintAtHelp(const CLI::App& app);

/// "a, b and c", with @p last as the last word between two names.
std::string Joined(const std::vector<std::string>& names,
                   const std::string& last);

}  // namespace ZARN::App

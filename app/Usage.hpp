#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace CLI {
class App;
class ParseError;
}  // namespace CLI

namespace ZARN::App {

/// The command was not used as its help says: exit status 2.
class BadUsage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What is wrong with arguments that the parser refused, named as the help
/// names them, with the nearest name where one is unknown; the parser's own
/// texts tell of its workings.
///
/// @param arguments  of the command line, without the program
std::string DescribeBadUsage(const CLI::App& app, const CLI::ParseError& error,
                             const std::vector<std::string>& arguments);

/// Where the help is told that was needed.
std::string HintAtHelp(const CLI::App& app);

/// Of some names the one that the fewest changed, missing, added or swapped
/// characters tell from @p name; empty where that is more than a third of it.
std::string NearestName(const std::string& name,
                        const std::vector<std::string>& names);

}  // namespace ZARN::App

#include "app/InputColumnsOption.hpp"

#include <algorithm>
#include <map>
#include <sstream>

#include "app/CommandLine.hpp"
#include "app/RunOptions.hpp"
#include "app/Usage.hpp"
#include "io/LightPathColumns.hpp"
#include "io/Quoted.hpp"
#include "log/NearestName.hpp"

namespace ZARN::App {

std::vector<std::string> PathColumns() {
  std::vector<std::string> names = IO::LightPathColumns();
  names.insert(names.end(), {"event", "pmt"});
  return names;
}

std::vector<std::string> PositionColumns() {
  return {"event", "event_x", "event_y", "event_z",
          "pmt",   "pmt_x",   "pmt_y",   "pmt_z"};
}

IO::ColumnNames InputColumnsOf(const std::string& list,
                               const std::vector<std::string>& known) {
  std::map<std::string, std::string> others;
  std::istringstream pairs(list + ",");
  for (std::string pair; std::getline(pairs, pair, ',');) {
    const std::size_t equals = pair.find('=');
    const std::string ours = WithoutBlanks(pair.substr(0, equals));
    const std::string theirs = equals == std::string::npos
                                   ? ""
                                   : WithoutBlanks(pair.substr(equals + 1));
    if (theirs.empty()) {
      throw BadUsage("--input-columns: " + IO::Quoted(pair) +
                     " is not of the form start_x=NAME");
    }
    if (std::find(known.begin(), known.end(), ours) == known.end()) {
      const std::string nearest = NearestName(ours, known);
      throw BadUsage("--input-columns: there is no column " + IO::Quoted(ours) +
                     (nearest.empty() ? "; use " + Joined(known, "or")
                                      : Suggest(nearest)));
    }
    if (!others.emplace(ours, theirs).second) {
      throw BadUsage("--input-columns: the column " + IO::Quoted(ours) +
                     " is given more than once");
    }
  }
  return IO::ColumnNames(others);
}

void AddInputColumnsOption(CLI::App& command, IO::ColumnNames& names,
                           const std::vector<std::string>& known,
                           const std::string& example) {
  AddOption(
      command, "--input-columns",
      [&names, known](const std::string& list) {
        names = InputColumnsOf(list, known);
      },
      "LIST", "Names of columns in the input, for example " + example);
}

}  // namespace ZARN::App

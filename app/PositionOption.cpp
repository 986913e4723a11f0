#include "app/PositionOption.hpp"

#include <array>

#include "app/CommandLine.hpp"
#include "app/RunOptions.hpp"
#include "app/Usage.hpp"
#include "io/Quoted.hpp"

namespace ZARN::App {
namespace {

TVector3 PositionOf(const std::string& option, const std::string& text) {
  std::array<double, 3> values = {};
  std::size_t begin = 0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const std::size_t comma = text.find(',', begin);
    const bool isLast = i + 1 == values.size();
    if ((comma == std::string::npos) != isLast) {
      throw BadUsage(option + ": " + IO::Quoted(text) +
                     " is not three numbers separated by commas");
    }
    values[i] =
        NumberOf(option, WithoutBlanks(text.substr(begin, comma - begin)));
    begin = comma + 1;
  }
  return {values[0], values[1], values[2]};
}

}  // namespace

void AddPositionOption(CLI::App& command, const std::string& option,
                       std::optional<TVector3>& position,
                       const std::string& description) {
  AddOption(
      command, option,
      [option, &position](const std::string& text) {
        position = PositionOf(option, text);
      },
      "X,Y,Z", description);
}

}  // namespace ZARN::App

#include "app/FindPosition.hpp"

#include <optional>

#include "io/Errors.hpp"
#include "io/Quoted.hpp"
#include "log/NearestName.hpp"

namespace ZARN::App {

IO::NamedPosition FindPosition(const std::string& file,
                               const IO::ColumnNames& names,
                               const std::string& kind,
                               const std::string& name) {
  IO::PositionReader reader(file, kind, names);
  std::optional<IO::NamedPosition> found;
  std::string nearest;
  for (IO::NamedPosition item; reader.Next(item);) {
    if (item.name != name) {
      nearest = NearestName(name, {nearest, item.name});
      continue;
    }
    if (found.has_value()) {
      reader.FailName(IO::Quoted(name) + " is the name of an earlier row, too");
    }
    found = item;
  }
  if (!found.has_value()) {
    throw IO::BadInput(reader.Name() + ": there is no " + kind + " " +
                       IO::Quoted(name) + Suggest(nearest));
  }
  return *found;
}

}  // namespace ZARN::App

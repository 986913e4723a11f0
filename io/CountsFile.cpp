#include "io/CountsFile.hpp"

#include "io/CsvText.hpp"

namespace ZARN::IO {

CountsFile::CountsFile(const std::optional<std::string>& path,
                       const std::string& nameColumn, eCounts counts)
    : file_(path), counts_(counts) {
  file_.Write(nameColumn + ",paths,shadowed,fraction,by" +
              (counts_ == eCounts::kSmeared ? ",smeared_fraction\n" : "\n"));
}

void CountsFile::Write(const std::string& cell, std::uint64_t paths,
                       std::uint64_t shadowed, DU::eShadowingComponent by,
                       std::optional<double> smearedFraction) {
  std::string line =
      cell + "," + std::to_string(paths) + "," + std::to_string(shadowed) + ",";
  if (paths > 0) {
    AppendNumber(line,
                 static_cast<double>(shadowed) / static_cast<double>(paths));
  }
  line += ",";
  line += DU::NameOf(by);
  if (counts_ == eCounts::kSmeared) {
    line += ",";
    if (smearedFraction.has_value()) AppendNumber(line, *smearedFraction);
  }
  line += "\n";
  file_.Write(line);
}

}  // namespace ZARN::IO

#include "app/TallyFile.hpp"

#include "app/CsvText.hpp"

namespace ZARN::App {

TallyFile::TallyFile(const std::optional<std::string>& path,
                     const std::string& nameColumn)
    : file_(path) {
  file_.Write(nameColumn + ",paths,shadowed,fraction,by\n");
}

void TallyFile::Write(const std::string& cell, const VerdictTally& tally) {
  const std::uint64_t paths = tally.Paths();
  const std::uint64_t shadowed = tally.Shadowed();
  std::string line =
      cell + "," + std::to_string(paths) + "," + std::to_string(shadowed) + ",";
  if (paths > 0) {
    AppendNumber(line,
                 static_cast<double>(shadowed) / static_cast<double>(paths));
  }
  line += ",";
  line += DU::NameOf(tally.MostFrequent());
  line += "\n";
  file_.Write(line);
}

}  // namespace ZARN::App

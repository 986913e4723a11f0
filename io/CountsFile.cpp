#include "io/CountsFile.hpp"

#include "io/CsvText.hpp"
#include "io/FileNames.hpp"

namespace ZARN::IO {

CountsFile::CountsFile(const std::optional<std::string>& path,
                       const std::string& nameColumn, const Origin& origin,
                       eCounts counts)
    : counts_(counts) {
  if (path.has_value() && IsRootFileName(*path)) {
    ntuple_.emplace(*path, nameColumn, origin, counts);
  } else {
    csv_.emplace(path);
    csv_->Write(nameColumn +
                (counts_ == eCounts::kAtTolerances ? ",tolerance" : "") +
                ",paths,shadowed,fraction,by" +
                (counts_ == eCounts::kSmeared ? ",smeared_fraction\n" : "\n"));
  }
}

void CountsFile::Begin(bool hasIntegerNames) {
  if (ntuple_.has_value()) ntuple_->Begin(hasIntegerNames);
}

void CountsFile::Write(const NamedPosition& item, std::uint64_t paths,
                       std::uint64_t shadowed, DU::eShadowingComponent by,
                       std::optional<double> smearedFraction,
                       double tolerance) {
  if (ntuple_.has_value()) {
    ntuple_->Write(item.name, paths, shadowed, by, smearedFraction, tolerance);
  } else {
    WriteLine(item.cell, paths, shadowed, by, smearedFraction, tolerance);
  }
}

void CountsFile::WriteLine(const std::string& cell, std::uint64_t paths,
                           std::uint64_t shadowed, DU::eShadowingComponent by,
                           std::optional<double> smearedFraction,
                           double tolerance) {
  std::string line = cell + ",";
  if (counts_ == eCounts::kAtTolerances) {
    AppendNumber(line, tolerance);
    line += ',';
  }
  line += std::to_string(paths) + "," + std::to_string(shadowed) + ",";
  if (paths > 0) {
    AppendNumber(line,
                 static_cast<double>(shadowed) / static_cast<double>(paths));
  }
  line += ',';
  line += DU::NameOf(by);
  if (counts_ == eCounts::kSmeared) {
    line += ',';
    if (smearedFraction.has_value()) AppendNumber(line, *smearedFraction);
  }
  line += '\n';
  csv_->Write(line);
}

void CountsFile::Finish() {
  if (ntuple_.has_value()) {
    ntuple_->Finish();
  } else {
    csv_->Finish();
  }
}

void CountsFile::Commit() {
  if (ntuple_.has_value()) {
    ntuple_->Commit();
  } else {
    csv_->Commit();
  }
}

}  // namespace ZARN::IO

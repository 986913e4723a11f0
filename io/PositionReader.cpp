#include "io/PositionReader.hpp"

#include <map>

#include "io/PositionSource.hpp"
#include "io/RootFile.hpp"

namespace ZARN::IO {
namespace {

/// The names for one file: x instead of event_x.
ColumnNames NamesOfFile(const std::string& nameColumn,
                        const ColumnNames& names) {
  std::map<std::string, std::string> others;
  if (names.Has(nameColumn)) others[nameColumn] = names.Of(nameColumn);
  for (const char* const axis : {"x", "y", "z"}) {
    const std::string ours = nameColumn + "_" + axis;
    if (names.Has(ours)) others[axis] = names.Of(ours);
  }
  return ColumnNames(others);
}

}  // namespace

std::vector<TVector3> PositionsOf(const std::vector<NamedPosition>& items) {
  std::vector<TVector3> positions;
  positions.reserve(items.size());
  for (const NamedPosition& item : items) positions.push_back(item.position);
  return positions;
}

PositionReader::PositionReader(const std::string& input,
                               const std::string& nameColumn,
                               const ColumnNames& names)
    : source_((IsRootInput(input) ? OpenRootPositions : OpenCsvPositions)(
          input, nameColumn, NamesOfFile(nameColumn, names))) {}

PositionReader::~PositionReader() = default;

bool PositionReader::Next(NamedPosition& item) { return source_->Next(item); }

void PositionReader::FailName(const std::string& reason) const {
  source_->FailName(reason);
}

std::optional<double> PositionReader::Done() const { return source_->Done(); }

const std::string& PositionReader::Name() const { return source_->Name(); }

std::vector<NamedPosition> ReadPositions(const std::string& input,
                                         const std::string& nameColumn,
                                         const ColumnNames& names) {
  PositionReader reader(input, nameColumn, names);
  std::vector<NamedPosition> items;
  for (NamedPosition item; reader.Next(item);) items.push_back(item);
  return items;
}

}  // namespace ZARN::IO

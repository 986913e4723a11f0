#include "io/PositionReader.hpp"

#include "io/CsvText.hpp"
#include "io/Numbers.hpp"
#include "io/Quoted.hpp"

namespace ZARN::IO {

std::vector<TVector3> PositionsOf(const std::vector<NamedPosition>& items) {
  std::vector<TVector3> positions;
  positions.reserve(items.size());
  for (const NamedPosition& item : items) positions.push_back(item.position);
  return positions;
}

PositionReader::PositionReader(InputFile& input, const std::string& nameColumn)
    : table_(input) {
  const auto columns = table_.RequireColumns({nameColumn, "x", "y", "z"});
  nameColumn_ = columns[0];
  columns_ = {columns[1], columns[2], columns[3]};
}

bool PositionReader::Next(NamedPosition& item) {
  if (!table_.NextRow()) return false;
  item.name = table_.Cell(nameColumn_);
  item.cell = CsvCell(item.name);
  std::array<double, 3> values = {};
  for (std::size_t i = 0; i < values.size(); ++i) {
    const std::string_view cell = table_.Cell(columns_[i]);
    const NumberOrReason number = ParseNumber(cell);
    if (number.reason != nullptr) {
      table_.Fail(columns_[i], Quoted(cell) + " " + number.reason);
    }
    values[i] = number.value;
  }
  item.position.SetXYZ(values[0], values[1], values[2]);
  return true;
}

std::vector<NamedPosition> ReadPositions(const std::string& path,
                                         const std::string& nameColumn) {
  InputFile input(path);
  PositionReader reader(input, nameColumn);
  std::vector<NamedPosition> items;
  for (NamedPosition item; reader.Next(item);) items.push_back(item);
  return items;
}

}  // namespace ZARN::IO

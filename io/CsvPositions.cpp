#include <array>

#include "io/CsvTable.hpp"
#include "io/CsvText.hpp"
#include "io/InputFile.hpp"
#include "io/Numbers.hpp"
#include "io/PositionSource.hpp"
#include "io/Quoted.hpp"

namespace ZARN::IO {
namespace {

class CsvPositions : public PositionReader::Source {
 public:
  CsvPositions(const std::string& input, const std::string& nameColumn,
               const ColumnNames& names)
      : input_(input),
        table_(input_),
        columns_(table_.RequireColumns({nameColumn, "x", "y", "z"}, names)) {}

  bool Next(NamedPosition& item) override {
    if (!table_.NextRow()) return false;
    item.name = table_.Cell(columns_[0]);
    item.cell = CsvCell(item.name);
    item.position.SetXYZ(Number(1), Number(2), Number(3));
    return true;
  }

  void FailName(const std::string& reason) const override {
    table_.Fail(columns_[0], reason);
  }

  std::optional<double> Done() const override {
    return input_.Share(table_.BytesTaken());
  }

  const std::string& Name() const override { return input_.Name(); }

 private:
  double Number(std::size_t number) const {
    const std::size_t column = columns_[number];
    const std::string_view cell = table_.Cell(column);
    const NumberOrReason parsed = ParseNumber(cell);
    if (parsed.reason != nullptr) {
      table_.Fail(column, Quoted(cell) + " " + parsed.reason);
    }
    return parsed.value;
  }

  InputFile input_;
  CsvTable table_;
  std::vector<std::size_t> columns_;  // of names, x, y, z
};

}  // namespace

std::unique_ptr<PositionReader::Source> OpenCsvPositions(
    const std::string& input, const std::string& nameColumn,
    const ColumnNames& names) {
  return std::make_unique<CsvPositions>(input, nameColumn, names);
}

}  // namespace ZARN::IO

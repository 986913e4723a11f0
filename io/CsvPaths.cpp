#include <algorithm>

#include "io/Errors.hpp"
#include "io/InputFile.hpp"
#include "io/LightPathColumns.hpp"
#include "io/LightPathReader.hpp"
#include "io/PathSource.hpp"

namespace ZARN::IO {
namespace {

class CsvPathBlock : public PathBlock {
 public:
  explicit CsvPathBlock(LightPathReader& reader) : reader_(reader) {}

  bool Read() override { return reader_.Table().NextBlock(text_); }

  void Parse() override {
    names.clear();
    lines_.clear();
    paths.unknownTypes.clear();
    error.reset();
    CsvRows rows = reader_.Table().RowsOf(text_);
    try {
      for (DU::LightPath path; reader_.Next(rows, path);) Add(rows, path);
    } catch (const TableError& found) {
      error = found;
    }
    paths.Resize(lines_.size());
    extent_ = rows.Read();
  }

  void Count() override { reader_.Table().Count(extent_); }

  TableError TypeError(std::size_t path,
                       const std::string& reason) const override {
    return {{lines_[path], path, reader_.TypePlace()}, reason};
  }
  TableError NameError(std::size_t path, std::size_t number,
                       const std::string& reason) const override {
    return {{lines_[path], path, reader_.NamePlace(number)}, reason};
  }

 private:
  void Add(const CsvRows& rows, const DU::LightPath& path) {
    const std::size_t row = lines_.size();
    lines_.push_back(rows.RowLine());
    if (row >= paths.Size()) {
      constexpr std::size_t kLeast = 256;
      paths.Resize(std::max(kLeast, 2 * row));
    }
    paths.types[row] = path.LightPathType;
    if (path.LightPathType == LightPathBlock::kUnknownType) {
      paths.unknownTypes.push_back({row, std::string(reader_.TypeName(rows))});
    }
    auto coordinate = paths.coordinates.begin();
    for (const LightPathVector& vector : kLightPathVectors) {
      const TVector3& values = path.*vector.member;
      (*coordinate++)[row] = values.X();
      (*coordinate++)[row] = values.Y();
      (*coordinate++)[row] = values.Z();
    }
    for (std::size_t i = 0; i < reader_.NameColumns().size(); ++i) {
      names.push_back(reader_.Name(rows, i));
    }
  }

  LightPathReader& reader_;
  CsvBlock text_;
  std::vector<std::uint64_t> lines_;  // of the rows
  CsvExtent extent_;
};

class CsvPaths : public PathSource {
 public:
  CsvPaths(const std::string& input, const ColumnNames& names)
      : input_(input), reader_(input_, names) {}

  const std::vector<std::string>& NameColumns() const override {
    return reader_.NameColumns();
  }
  std::unique_ptr<PathBlock> MakeBlock() override {
    return std::make_unique<CsvPathBlock>(reader_);
  }
  bool WouldWait() const override { return reader_.Table().WouldWait(); }

  std::optional<double> Done() const override {
    return input_.Share(reader_.Table().BytesTaken());
  }

  void Fail(const TableError& error) const override {
    reader_.Table().Fail(error);
  }

  DU::LightPath ReadRow(std::uint64_t row) override {
    CsvTable& table = reader_.Table();
    std::uint64_t count = 0;
    for (CsvBlock block; table.NextBlock(block);) {
      CsvRows rows = table.RowsOf(block);
      try {
        for (; count < row && rows.Next(); ++count) {
        }
        DU::LightPath path;
        if (count == row && reader_.Next(rows, path)) return path;
      } catch (const TableError& error) {
        table.Fail(error);
      }
      table.Count(rows.Read());
    }
    throw BadInput(input_.Name() + ": there is no row " +
                   std::to_string(row + 1) + "; the number of rows is " +
                   std::to_string(count));
  }

 private:
  InputFile input_;
  LightPathReader reader_;
};

}  // namespace

std::unique_ptr<PathSource> OpenCsvPaths(const std::string& input,
                                         const ColumnNames& names) {
  return std::make_unique<CsvPaths>(input, names);
}

}  // namespace ZARN::IO

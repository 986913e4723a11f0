#include <ROOT/RDF/RColumnReaderBase.hxx>
#include <ROOT/RDataFrame.hxx>
#include <ROOT/RDataSource.hxx>
#include <algorithm>
#include <functional>
#include <memory>
#include <stdexcept>
#include <typeinfo>
#include <utility>

#include "io/LightPathColumns.hpp"
#include "rdf/DataFrame.hpp"
#include "rdf/JudgedPaths.hpp"

namespace ZARN::RDF {
namespace {

using ColumnReader = ::ROOT::Detail::RDF::RColumnReaderBase;

/// Tells the frame where the value of an entry is.
template <class Values>
class BlockReader final : public ColumnReader {
 public:
  /// @param values  gives the column of the current block
  BlockReader(JudgedPaths& paths, const Values& values)
      : paths_(paths), values_(values) {}

 private:
  void* GetImpl(Long64_t entry) override {
    const std::size_t i = paths_.Find(static_cast<std::uint64_t>(entry));
    // A frame does not write to it, although ROOT's interface would let it.
    return const_cast<void*>(static_cast<const void*>(&values_(paths_)[i]));
  }

  JudgedPaths& paths_;
  Values values_;
};

class RowReader final : public ColumnReader {
 private:
  void* GetImpl(Long64_t entry) override {
    row_ = static_cast<ULong64_t>(entry);
    return &row_;
  }

  ULong64_t row_ = 0;
};

struct Column {
  std::string name;
  const char* typeName;
  const std::type_info& type;
  std::function<std::unique_ptr<ColumnReader>(JudgedPaths&)> makeReader;
};

/// A column whose values stand in the blocks.
template <class Values>
Column InBlocks(const std::string& name, const char* typeName,
                const Values& values) {
  using Value = std::decay_t<decltype(values(std::declval<JudgedPaths&>())[0])>;
  return {name, typeName, typeid(Value), [values](JudgedPaths& paths) {
            return std::make_unique<BlockReader<Values>>(paths, values);
          }};
}

std::vector<Column> ColumnsOf(const IO::RootPaths& file) {
  std::vector<Column> columns;
  columns.push_back({"row", "ULong64_t", typeid(ULong64_t), [](JudgedPaths&) {
                       return std::make_unique<RowReader>();
                     }});
  const std::vector<std::string> names = IO::LightPathColumns();
  columns.push_back(InBlocks(names[0], "int",
                             [](JudgedPaths& paths) -> const std::vector<int>& {
                               return paths.Block().paths.types;
                             }));
  for (std::size_t i = 1; i < names.size(); ++i) {
    columns.push_back(
        InBlocks(names[i], "double",
                 [i](JudgedPaths& paths) -> const std::vector<double>& {
                   return paths.Block().paths.coordinates[i - 1];
                 }));
  }
  for (std::size_t i = 0; i < file.NameColumns().size(); ++i) {
    const IO::RootPaths::NameColumn& column = file.NameColumns()[i];
    if (column.isText) {
      columns.push_back(
          InBlocks(column.name, "std::string",
                   [i](JudgedPaths& paths) -> const std::vector<std::string>& {
                     return paths.Block().names[i].texts;
                   }));
    } else {
      columns.push_back(
          InBlocks(column.name, "std::int64_t",
                   [i](JudgedPaths& paths) -> const std::vector<std::int64_t>& {
                     return paths.Block().names[i].integers;
                   }));
    }
  }
  return columns;
}

/// Refuse names for columns that light paths do not have.
void RequireKnown(const std::map<std::string, std::string>& columns) {
  std::vector<std::string> known = IO::LightPathColumns();
  known.insert(known.end(), {"event", "pmt"});
  for (const auto& [ours, theirs] : columns) {
    if (std::find(known.begin(), known.end(), ours) != known.end()) continue;
    throw std::invalid_argument("FromPaths: light paths have no column " +
                                ours + " to be named");
  }
}

/// The light paths of a file, and the verdicts on them, for a frame.
class PathSource final : public ::ROOT::RDF::RDataSource {
 public:
  PathSource(std::string input, IO::ColumnNames names,
             std::shared_ptr<const DU::ShadowingCalculator> calculator,
             const std::string& code)
      : input_(std::move(input)),
        columnNames_(std::move(names)),
        calculator_(std::move(calculator)) {
    const IO::RootPaths file(input_, columnNames_);
    entries_ = file.Entries();
    clusterStarts_ = file.ClusterStarts();
    columns_ = ColumnsOf(file);
    if (calculator_ != nullptr) {
      if (HasColumn(code)) {
        throw std::invalid_argument("FromPaths: the column " + code +
                                    " exists already");
      }
      columns_.push_back(InBlocks(
          code, "int", [](JudgedPaths& paths) -> const std::vector<int>& {
            return paths.Codes();
          }));
    }
    for (const Column& column : columns_) names_.push_back(column.name);
  }

  void SetNSlots(unsigned int slots) override {
    RDataSource::SetNSlots(slots);
    slots_.resize(slots);
  }

  const std::vector<std::string>& GetColumnNames() const override {
    return names_;
  }

  bool HasColumn(std::string_view name) const override {
    return Find(name) != columns_.end();
  }

  std::string GetTypeName(std::string_view name) const override {
    return Find(name)->typeName;
  }

  void Initialize() override { areRangesGiven_ = false; }

  std::vector<std::pair<ULong64_t, ULong64_t>> GetEntryRanges() override {
    std::vector<std::pair<ULong64_t, ULong64_t>> ranges;
    if (std::exchange(areRangesGiven_, true)) return ranges;
    for (std::size_t i = 0; i < clusterStarts_.size(); ++i) {
      const bool isLast = i + 1 == clusterStarts_.size();
      ranges.emplace_back(clusterStarts_[i],
                          isLast ? entries_ : clusterStarts_[i + 1]);
    }
    return ranges;
  }

  bool SetEntry(unsigned int /*slot*/, ULong64_t /*entry*/) override {
    return true;
  }

  std::unique_ptr<ColumnReader> GetColumnReaders(
      unsigned int slot, std::string_view name,
      const std::type_info& type) override {
    const Column& column = *Find(name);
    if (column.type != type) {
      throw std::invalid_argument(input_ + ": the column " + column.name +
                                  " is of type " + column.typeName);
    }
    // Opened by the thread that reads it.
    std::unique_ptr<JudgedPaths>& paths = slots_[slot];
    if (paths == nullptr) {
      paths = std::make_unique<JudgedPaths>(input_, columnNames_,
                                            calculator_.get());
    }
    return column.makeReader(*paths);
  }

  std::string GetLabel() override { return "light paths"; }
  std::size_t GetNFiles() const override { return 1; }

 protected:
  /// None: the readers are those of GetColumnReaders.
  Record_t GetColumnReadersImpl(std::string_view /*name*/,
                                const std::type_info& /*type*/) override {
    return {};
  }

 private:
  std::vector<Column>::const_iterator Find(std::string_view name) const {
    return std::find_if(
        columns_.begin(), columns_.end(),
        [&](const Column& column) { return column.name == name; });
  }

  std::string input_;
  IO::ColumnNames columnNames_;
  std::shared_ptr<const DU::ShadowingCalculator> calculator_;
  std::vector<Column> columns_;
  std::vector<std::string> names_;  // of columns_
  std::vector<std::uint64_t> clusterStarts_;
  std::uint64_t entries_ = 0;
  std::vector<std::unique_ptr<JudgedPaths>> slots_;
  bool areRangesGiven_ = false;  // in this loop
};

}  // namespace

::ROOT::RDataFrame FromPaths(const std::string& input,
                             const DU::ShadowingCalculator* calculator,
                             const std::map<std::string, std::string>& columns,
                             const std::string& code) {
  RequireKnown(columns);
  std::shared_ptr<const DU::ShadowingCalculator> copy;
  if (calculator != nullptr) {
    copy = std::make_shared<const DU::ShadowingCalculator>(*calculator);
  }
  return {std::make_unique<PathSource>(input, IO::ColumnNames(columns),
                                       std::move(copy), code)};
}

}  // namespace ZARN::RDF

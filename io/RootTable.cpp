#include "io/RootTable.hpp"

#include "io/Errors.hpp"
#include "io/Quoted.hpp"
#include "io/RootErrors.hpp"

namespace ZARN::IO {

RootTable::RootTable(const std::string& input) : file_(input) {
  const RootErrors errors;
  try {
    columns_ =
        file_.IsNTuple() ? MakeNTupleColumns(file_) : MakeTreeColumns(file_);
  } catch (const RootReadError& error) {
    throw BadInput(file_.Name() + ": cannot be read: " + error.what());
  }
}

std::optional<std::size_t> RootTable::FindColumn(
    const std::string& name) const {
  const std::vector<RootColumn>& columns = columns_->Columns();
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (columns[i].name == name) return i;
  }
  return std::nullopt;
}

std::vector<std::size_t> RootTable::RequireColumns(
    const std::vector<std::string>& ours, const ColumnNames& names) const {
  std::vector<std::size_t> positions;
  std::vector<std::string> missing;
  for (const std::string& our : ours) {
    const auto position = FindColumn(names.Of(our));
    if (!position.has_value()) missing.push_back(names.Of(our));
    positions.push_back(position.value_or(0));
  }
  if (missing.empty()) return positions;
  std::vector<std::string> known;
  for (const RootColumn& column : columns_->Columns()) {
    known.push_back(column.name);
  }
  throw BadInput(file_.Name() + ": " + names.DescribeMissing(missing, known));
}

std::size_t RootTable::SelectNumbers(std::size_t position) {
  const eRootValue value = Column(position).value;
  if (value != eRootValue::kNumber && value != eRootValue::kInteger) {
    FailType(position, "numbers");
  }
  return Select(position, eRootValue::kNumber);
}

std::size_t RootTable::SelectNames(std::size_t position) {
  if (!HoldsNames(position)) FailType(position, "integers or text");
  return Select(position, Column(position).value);
}

bool RootTable::HoldsNames(std::size_t position) const {
  const eRootValue value = Column(position).value;
  return value == eRootValue::kInteger || value == eRootValue::kText;
}

std::size_t RootTable::Select(std::size_t position, eRootValue type) {
  selected_.push_back(position);
  types_.push_back(type);
  return selected_.size() - 1;
}

/// Let the columns prepare for reading, before the first time.
void RootTable::Begin() {
  if (hasBegun_) return;
  const RootErrors errors;
  try {
    columns_->Select(selected_, types_);
  } catch (const RootReadError& error) {
    throw BadInput(file_.Name() + ": cannot be read: " + error.what());
  }
  hasBegun_ = true;
}

void RootTable::Fail(std::size_t number, std::uint64_t entry,
                     const std::string& reason) const {
  throw BadInput(file_.Name() + ", column " +
                 Printable(Column(selected_[number]).name) + ", entry " +
                 std::to_string(entry) + ": " + reason);
}

void RootTable::FailType(std::size_t position,
                         const std::string& wanted) const {
  const RootColumn& column = Column(position);
  throw BadInput(file_.Name() + ", column " + Printable(column.name) +
                 ": holds " + Printable(column.type) + ", not " + wanted);
}

}  // namespace ZARN::IO

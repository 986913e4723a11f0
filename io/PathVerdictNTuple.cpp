#include "io/PathVerdictNTuple.hpp"

#include <cstdint>
#include <utility>

#include "du/Verdict.hpp"
#include "io/NTupleFile.hpp"

namespace ZARN::IO {

struct PathVerdictNTuple::Fields {
  explicit Fields(const std::string& path) : file(path) {}

  NTupleFile file;
  NTupleFile::Rows* rows = nullptr;
  std::uint64_t* row = nullptr;
  std::vector<NameField> names;
  std::int32_t* shadowed = nullptr;
  std::string* by = nullptr;
  std::vector<ColumnField> columns;
};

PathVerdictNTuple::PathVerdictNTuple(const std::string& path, Origin origin,
                                     std::vector<const PairColumn*> columns)
    : origin_(std::move(origin)),
      columns_(std::move(columns)),
      fields_(new Fields(path)) {}

PathVerdictNTuple::~PathVerdictNTuple() = default;

void PathVerdictNTuple::Begin(const std::vector<NameColumn>& names) {
  auto model = ROOT::RNTupleModel::Create();
  model->MakeField<std::uint64_t>("row", "number of the path, from 0");
  for (const NameColumn& name : names) {
    NameField::AddTo(*model, name.name, name.isInteger);
  }
  model->MakeField<std::int32_t>("shadowed", "1 shadowed, 0 not");
  model->MakeField<std::string>("by", "the component that shadows it, if any");
  for (const PairColumn* const column : columns_)
    ColumnField::AddTo(*model, *column);
  fields_->file.Begin("verdicts", origin_, std::move(model));
  NTupleFile::Rows& rows = fields_->file.AddRows();
  fields_->rows = &rows;
  fields_->row = rows.Field<std::uint64_t>("row");
  for (const NameColumn& name : names) {
    fields_->names.emplace_back(rows, name.name, name.isInteger);
  }
  fields_->shadowed = rows.Field<std::int32_t>("shadowed");
  fields_->by = rows.Field<std::string>("by");
  for (const PairColumn* const column : columns_) {
    fields_->columns.emplace_back(rows, *column);
  }
}

bool PathVerdictNTuple::HasBegun() const { return fields_->rows != nullptr; }

void PathVerdictNTuple::Fill(const std::string_view* names,
                             const JudgedPair& path) {
  for (NameField& name : fields_->names) name.Set(*names++);
  *fields_->shadowed = DU::IsShadowed(path.verdict) ? 1 : 0;
  *fields_->by = DU::NameOf(DU::ComponentOf(path.verdict));
  for (ColumnField& column : fields_->columns) column.Set(path);
  fields_->rows->Fill();
  ++*fields_->row;
}

void PathVerdictNTuple::Finish() {
  fields_->rows->Flush();
  fields_->rows->Commit();
  fields_->file.Finish();
}

void PathVerdictNTuple::Commit() { fields_->file.Commit(); }

}  // namespace ZARN::IO

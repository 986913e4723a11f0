#include "io/PathVerdictNTuple.hpp"

#include <cstdint>
#include <utility>

#include "du/Verdict.hpp"
#include "io/NTupleFile.hpp"

namespace ZARN::IO {

struct PathVerdictNTuple::Fields {
  Fields(const std::string& path,
         const std::vector<const PairColumn*>& itsColumns)
      : file(path), columns(itsColumns.begin(), itsColumns.end()) {}

  NTupleFile file;
  NTupleFile::Rows* rows = nullptr;
  std::uint64_t* row = nullptr;
  std::vector<NameField> names;
  std::int32_t* shadowed = nullptr;
  std::string* by = nullptr;
  std::vector<ColumnField> columns;
};

PathVerdictNTuple::PathVerdictNTuple(
    const std::string& path, Origin origin,
    const std::vector<const PairColumn*>& columns)
    : origin_(std::move(origin)), fields_(new Fields(path, columns)) {}

PathVerdictNTuple::~PathVerdictNTuple() = default;

void PathVerdictNTuple::Begin(const std::vector<NameColumn>& names) {
  auto model = ROOT::RNTupleModel::Create();
  model->MakeField<std::uint64_t>("row", "number of the path, from 0");
  for (const NameColumn& name : names) {
    NameField::AddTo(*model, name.name, name.isInteger);
  }
  model->MakeField<std::int32_t>("shadowed", "1 shadowed, 0 not");
  model->MakeField<std::string>("by", "the component that shadows it, if any");
  for (const ColumnField& column : fields_->columns) column.AddTo(*model);
  fields_->file.Begin("verdicts", origin_, std::move(model));
  NTupleFile::Rows& rows = fields_->file.AddRows();
  fields_->rows = &rows;
  fields_->row = rows.Field<std::uint64_t>("row");
  for (const NameColumn& name : names) {
    fields_->names.emplace_back(rows, name.name, name.isInteger);
  }
  fields_->shadowed = rows.Field<std::int32_t>("shadowed");
  fields_->by = rows.Field<std::string>("by");
  for (ColumnField& column : fields_->columns) column.BindTo(rows.Entry());
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

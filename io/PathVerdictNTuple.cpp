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
  std::int32_t* code = nullptr;  // null without this field
};

PathVerdictNTuple::PathVerdictNTuple(const std::string& path, Origin origin,
                                     bool hasCode)
    : origin_(std::move(origin)),
      hasCode_(hasCode),
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
  if (hasCode_) {
    model->MakeField<std::int32_t>("code", "number of the verdict");
  }
  fields_->file.Begin("verdicts", origin_, std::move(model));
  NTupleFile::Rows& rows = fields_->file.AddRows();
  fields_->rows = &rows;
  fields_->row = rows.Field<std::uint64_t>("row");
  for (const NameColumn& name : names) {
    fields_->names.emplace_back(rows, name.name, name.isInteger);
  }
  fields_->shadowed = rows.Field<std::int32_t>("shadowed");
  fields_->by = rows.Field<std::string>("by");
  if (hasCode_) fields_->code = rows.Field<std::int32_t>("code");
}

bool PathVerdictNTuple::HasBegun() const { return fields_->rows != nullptr; }

void PathVerdictNTuple::Fill(const std::string_view* names,
                             DU::eShadowingComponent by) {
  for (NameField& name : fields_->names) name.Set(*names++);
  *fields_->shadowed = by == DU::eShadowingComponent::kNone ? 0 : 1;
  *fields_->by = DU::NameOf(by);
  if (hasCode_) {
    *fields_->code = static_cast<std::int32_t>(DU::VerdictOf(by));
  }
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

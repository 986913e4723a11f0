#include "io/CountsNTuple.hpp"

#include <cmath>
#include <optional>
#include <utility>

#include "io/NTupleFile.hpp"

namespace ZARN::IO {

struct CountsNTuple::Fields {
  explicit Fields(const std::string& path) : file(path) {}

  NTupleFile file;
  NTupleFile::Rows* rows = nullptr;
  std::optional<NameField> name;
  double* tolerance = nullptr;  // null except at several tolerances
  std::uint64_t* paths = nullptr;
  std::uint64_t* shadowed = nullptr;
  double* fraction = nullptr;
  std::string* by = nullptr;
  double* smearedFraction = nullptr;  // null except for smeared counts
};

CountsNTuple::CountsNTuple(const std::string& path,
                           const std::string& nameColumn, Origin origin,
                           eCounts counts)
    : nameColumn_(nameColumn),
      origin_(std::move(origin)),
      counts_(counts),
      fields_(new Fields(path)) {}

CountsNTuple::~CountsNTuple() = default;

void CountsNTuple::Begin(bool hasIntegerNames) {
  auto model = ROOT::RNTupleModel::Create();
  NameField::AddTo(*model, nameColumn_, hasIntegerNames);
  if (counts_ == eCounts::kAtTolerances) {
    model->MakeField<double>("tolerance", "mm");
  }
  model->MakeField<std::uint64_t>("paths", "number of light paths");
  model->MakeField<std::uint64_t>("shadowed", "number of those shadowed");
  model->MakeField<double>("fraction",
                           "shadowed / paths; NaN if there are no paths");
  model->MakeField<std::string>(
      "by", "the component that shadows most paths; empty if none does");
  if (counts_ == eCounts::kSmeared) {
    model->MakeField<double>(
        "smeared_fraction",
        "mean share of the positions around the event that are shadowed");
  }
  fields_->file.Begin("counts", origin_, std::move(model));
  NTupleFile::Rows& rows = fields_->file.AddRows();
  fields_->rows = &rows;
  fields_->name.emplace(rows, nameColumn_, hasIntegerNames);
  if (counts_ == eCounts::kAtTolerances) {
    fields_->tolerance = rows.Field<double>("tolerance");
  }
  fields_->paths = rows.Field<std::uint64_t>("paths");
  fields_->shadowed = rows.Field<std::uint64_t>("shadowed");
  fields_->fraction = rows.Field<double>("fraction");
  fields_->by = rows.Field<std::string>("by");
  if (counts_ == eCounts::kSmeared) {
    fields_->smearedFraction = rows.Field<double>("smeared_fraction");
  }
}

void CountsNTuple::Write(const std::string& name, std::uint64_t paths,
                         std::uint64_t shadowed, DU::eShadowingComponent by,
                         std::optional<double> smearedFraction,
                         double tolerance) {
  fields_->name->Set(name);
  if (fields_->tolerance != nullptr) *fields_->tolerance = tolerance;
  *fields_->paths = paths;
  *fields_->shadowed = shadowed;
  *fields_->fraction =
      paths > 0 ? static_cast<double>(shadowed) / static_cast<double>(paths)
                : std::nan("");
  *fields_->by = DU::NameOf(by);
  if (fields_->smearedFraction != nullptr) {
    *fields_->smearedFraction = smearedFraction.value_or(std::nan(""));
  }
  fields_->rows->Fill();
}

void CountsNTuple::Finish() {
  if (fields_->rows == nullptr) Begin(false);
  fields_->rows->Flush();
  fields_->rows->Commit();
  fields_->file.Finish();
}

void CountsNTuple::Commit() { fields_->file.Commit(); }

}  // namespace ZARN::IO

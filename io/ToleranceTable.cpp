#include "io/ToleranceTable.hpp"

#include <cmath>
#include <utility>

#include "io/CsvText.hpp"
#include "io/FileNames.hpp"
#include "io/NTupleFile.hpp"

namespace ZARN::IO {

struct ToleranceTable::Fields {
  Fields(const std::string& path, const Origin& origin) : file(path) {
    auto model = ROOT::RNTupleModel::Create();
    model->MakeField<double>("tolerance", "mm");
    model->MakeField<std::string>("component", "its name, or any");
    model->MakeField<std::uint64_t>("paths", "number of light paths");
    model->MakeField<std::uint64_t>("shadowed", "number of those shadowed");
    model->MakeField<double>("fraction",
                             "shadowed / paths; NaN if there are no paths");
    model->MakeField<double>("fraction_error",
                             "binomial standard error of the fraction");
    file.Begin("tolerances", origin, std::move(model));
    rows = &file.AddRows();
    tolerance = rows->Field<double>("tolerance");
    component = rows->Field<std::string>("component");
    paths = rows->Field<std::uint64_t>("paths");
    shadowed = rows->Field<std::uint64_t>("shadowed");
    fraction = rows->Field<double>("fraction");
    fractionError = rows->Field<double>("fraction_error");
  }

  NTupleFile file;
  NTupleFile::Rows* rows = nullptr;
  double* tolerance = nullptr;
  std::string* component = nullptr;
  std::uint64_t* paths = nullptr;
  std::uint64_t* shadowed = nullptr;
  double* fraction = nullptr;
  double* fractionError = nullptr;
};

ToleranceTable::ToleranceTable(const std::optional<std::string>& path,
                               const Origin& origin) {
  if (path.has_value() && IsRootFileName(*path)) {
    ntuple_ = std::make_unique<Fields>(*path, origin);
    return;
  }
  csv_.emplace(path);
  csv_->Write("tolerance,component,paths,shadowed,fraction,fraction_error\n");
}

ToleranceTable::~ToleranceTable() = default;

void ToleranceTable::Write(double tolerance, const std::string& component,
                           std::uint64_t paths, std::uint64_t shadowed) {
  double fraction = std::nan("");
  double error = std::nan("");
  if (paths > 0) {
    const auto all = static_cast<double>(paths);
    fraction = static_cast<double>(shadowed) / all;
    error = std::sqrt(fraction * (1.0 - fraction) / all);
  }
  if (ntuple_ != nullptr) {
    *ntuple_->tolerance = tolerance;
    *ntuple_->component = component;
    *ntuple_->paths = paths;
    *ntuple_->shadowed = shadowed;
    *ntuple_->fraction = fraction;
    *ntuple_->fractionError = error;
    ntuple_->rows->Fill();
    return;
  }
  std::string line;
  AppendNumber(line, tolerance);
  line += "," + component + "," + std::to_string(paths) + "," +
          std::to_string(shadowed) + ",";
  if (paths > 0) AppendNumber(line, fraction);
  line += ',';
  if (paths > 0) AppendNumber(line, error);
  csv_->Write(line + "\n");
}

void ToleranceTable::Finish() {
  if (ntuple_ == nullptr) {
    csv_->Finish();
    return;
  }
  ntuple_->rows->Flush();
  ntuple_->rows->Commit();
  ntuple_->file.Finish();
}

void ToleranceTable::Commit() {
  if (ntuple_ == nullptr) {
    csv_->Commit();
  } else {
    ntuple_->file.Commit();
  }
}

}  // namespace ZARN::IO

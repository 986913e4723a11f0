#include "io/NTupleFile.hpp"

#include <TError.h>
#include <ROOT/RError.hxx>
#include <cmath>
#include <type_traits>
#include <utility>

#include "io/Errors.hpp"
#include "io/FileNames.hpp"
#include "io/IntegerName.hpp"

namespace ZARN::IO {
namespace {

/// Turn ROOT's exceptions into OutputFailure.
template <class Work>
void Writing(const std::string& name, const Work& work) {
  try {
    work();
  } catch (const ROOT::RException& error) {
    // The lines after the first say where in ROOT the error occurred.
    const std::string report = error.GetError().GetReport();
    throw OutputFailure(
        name + ": cannot be written: " + report.substr(0, report.find('\n')));
  }
}

const std::string& Replaceable(const std::string& path) {
  if (CanReplace(path)) return path;
  throw OutputFailure(
      path + ": cannot be written: ROOT output requires a regular file");
}

}  // namespace

NTupleFile::NTupleFile(const std::string& path)
    : file_(Replaceable(path)), name_(path) {}

NTupleFile::~NTupleFile() {
  // An unfinished writer writes what it has buffered, and prints an error if
  // that fails. Keep it silent: this file is discarded.
  const int level = gErrorIgnoreLevel;
  gErrorIgnoreLevel = kFatal;
  rows_.clear();
  writer_.reset();
  gErrorIgnoreLevel = level;
}

void NTupleFile::Begin(const std::string& name, const Origin& origin,
                       std::unique_ptr<ROOT::RNTupleModel> model) {
  model->SetDescription(Describe(origin));
  Writing(name_, [&] {
    writer_ = ROOT::RNTupleParallelWriter::Recreate(std::move(model), name,
                                                    file_.TemporaryPath());
  });
}

NTupleFile::Rows& NTupleFile::AddRows() {
  Writing(name_, [&] {
    rows_.push_back(
        std::unique_ptr<Rows>(new Rows(name_, writer_->CreateFillContext())));
  });
  return *rows_.back();
}

void NTupleFile::Finish() {
  Writing(name_, [&] {
    rows_.clear();
    writer_->CommitDataset();
    writer_.reset();
  });
  file_.Finish();
}

NTupleFile::Rows::Rows(const std::string& fileName,
                       std::shared_ptr<ROOT::RNTupleFillContext> context)
    : fileName_(fileName), context_(std::move(context)) {
  context_->EnableStagedClusterCommitting();
}

void NTupleFile::Rows::Fill() {
  Writing(fileName_, [&] { context_->Fill(*entry_); });
}

void NTupleFile::Rows::Fill(ROOT::Detail::RRawPtrWriteEntry& entry) {
  Writing(fileName_, [&] { context_->Fill(entry); });
}

void NTupleFile::Rows::Flush() {
  Writing(fileName_, [&] { context_->FlushCluster(); });
}

void NTupleFile::Rows::Commit() {
  Writing(fileName_, [&] { context_->CommitStagedClusters(); });
}

void NameField::AddTo(ROOT::RNTupleModel& model, const std::string& field,
                      bool isInteger) {
  const std::string description =
      "name of the " + (field == "pmt" ? "PMT" : field);
  if (isInteger) {
    model.MakeField<std::int64_t>(field, description);
  } else {
    model.MakeField<std::string>(field, description);
  }
}

NameField::NameField(NTupleFile::Rows& rows, const std::string& field,
                     bool isInteger) {
  if (isInteger) {
    integer_ = rows.Field<std::int64_t>(field);
  } else {
    text_ = rows.Field<std::string>(field);
  }
}

void NameField::Set(std::string_view name) {
  if (integer_ != nullptr) {
    *integer_ = IntegerOf(name).value();
  } else {
    *text_ = name;
  }
}

ColumnField::ColumnField(const PairColumn* column) : column_(column) {
  switch (column->kind) {
    case eValue::kNumber:
      value_ = 0.0;
      break;
    case eValue::kWholeNumber:
      value_ = std::int32_t{0};
      break;
    case eValue::kText:
      value_ = std::string();
      break;
  }
}

void ColumnField::AddTo(ROOT::RNTupleModel& model) const {
  const auto add = [&](const auto& value) {
    using Value = std::decay_t<decltype(value)>;
    model.MakeField<Value>(column_->name, column_->description);
  };
  std::visit(add, value_);
}

void ColumnField::Set(const JudgedPair& pair) {
  switch (column_->kind) {
    case eValue::kNumber:
      value_ = column_->value(pair).value_or(std::nan(""));
      break;
    case eValue::kWholeNumber:
      value_ = static_cast<std::int32_t>(column_->value(pair).value());
      break;
    case eValue::kText:
      std::get<std::string>(value_) = column_->text(pair);
      break;
  }
}

}  // namespace ZARN::IO

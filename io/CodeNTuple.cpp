#include "io/CodeNTuple.hpp"

#include <utility>

#include "io/IntegerName.hpp"
#include "io/NTupleFile.hpp"

namespace ZARN::IO {
namespace {

/// Rows that are compressed and written together: few enough that a file of any
/// size needs little memory.
constexpr std::uint64_t kRowsOfCluster = 1U << 20U;

std::unique_ptr<ROOT::RNTupleModel> ModelOf(const CodeNTuple::Fields& fields) {
  auto model = ROOT::RNTupleModel::Create();
  NameField::AddTo(*model, "event", fields.hasIntegerEvents);
  NameField::AddTo(*model, "pmt", fields.hasIntegerPMTs);
  model->MakeField<std::uint8_t>("code", "number of the verdict");
  if (fields.hasReflections) {
    model->MakeField<std::uint8_t>("reflected_code",
                                   "the same for reflected light");
  }
  return model;
}

}  // namespace

struct CodeNTuple::Row {
  NTupleFile file;
  NTupleFile::Rows& rows;
  NameField event;
  NameField pmt;
  std::uint8_t* code;
  std::uint8_t* reflected;  // null without reflections
  std::uint64_t buffered = 0;

  Row(const std::string& path, const Origin& origin, const Fields& fields)
      : file(path),
        rows(Begin(file, origin, ModelOf(fields))),
        event(rows, "event", fields.hasIntegerEvents),
        pmt(rows, "pmt", fields.hasIntegerPMTs),
        code(rows.Field<std::uint8_t>("code")),
        reflected(fields.hasReflections
                      ? rows.Field<std::uint8_t>("reflected_code")
                      : nullptr) {}

  void WriteBuffered() {
    rows.Flush();
    rows.Commit();
    buffered = 0;
  }

 private:
  static NTupleFile::Rows& Begin(NTupleFile& file, const Origin& origin,
                                 std::unique_ptr<ROOT::RNTupleModel> model) {
    file.Begin("verdicts", origin, std::move(model));
    return file.AddRows();
  }
};

CodeNTuple::CodeNTuple(const std::string& path, const Origin& origin,
                       std::vector<std::string> pmts, const Fields& fields)
    : pmts_(std::move(pmts)), fields_(fields) {
  if (fields.hasIntegerPMTs) {
    for (const std::string& name : pmts_) {
      integerPMTs_.push_back(IntegerOf(name).value());
    }
  }
  row_ = std::make_unique<Row>(path, origin, fields);
}

CodeNTuple::~CodeNTuple() = default;

void CodeNTuple::Add(const std::string& event, const std::uint8_t* codes,
                     const std::uint8_t* reflected) {
  row_->event.Set(event);
  for (std::size_t i = 0; i < pmts_.size(); ++i) {
    SetPMT(i);
    *row_->code = codes[i];
    if (fields_.hasReflections) *row_->reflected = reflected[i];
    row_->rows.Fill();
    if (++row_->buffered == kRowsOfCluster) row_->WriteBuffered();
  }
}

void CodeNTuple::SetPMT(std::size_t pmt) {
  if (integerPMTs_.empty()) {
    row_->pmt.Set(pmts_[pmt]);
  } else {
    row_->pmt.Set(integerPMTs_[pmt]);
  }
}

void CodeNTuple::Commit() {
  row_->WriteBuffered();
  row_->file.Finish();
  row_->file.Commit();
}

}  // namespace ZARN::IO

#include "io/VerdictNTuple.hpp"

#include <array>
#include <cmath>
#include <optional>
#include <utility>

#include "io/IntegerName.hpp"
#include "io/NTupleFile.hpp"
#include "io/VerdictText.hpp"

namespace ZARN::IO {
namespace {

/// The integers of all names; empty if one is not an integer.
std::vector<std::int64_t> IntegersOf(const std::vector<NamedPosition>& items) {
  std::vector<std::int64_t> integers;
  for (const NamedPosition& item : items) {
    const std::optional<std::int64_t> integer = IntegerOf(item.name);
    if (!integer.has_value()) return {};
    integers.push_back(*integer);
  }
  return integers;
}

/// The texts of the fields type and by, by their numbers.
struct Texts {
  std::array<std::string, DU::kNumberOfLightPathTypes> types;
  std::array<std::string, DU::kNumberOfComponents + 1> components;
  std::string noPath = kNoPath;

  Texts() {
    // The type of a path that does not exist stays empty.
    for (std::size_t type = 1; type < types.size(); ++type) {
      types[type] = DU::kLightPathTypeNames[type];
    }
    for (const auto component : DU::kShadowingComponents) {
      components[static_cast<std::size_t>(component)] = DU::NameOf(component);
    }
  }
};

const Texts& AllTexts() {
  static const Texts texts;
  return texts;
}

}  // namespace

/// The fields point to their values, so that a row is not copied before it is
/// written.
struct VerdictNTuple::Block::Entry {
  NTupleFile::Rows& rows;
  std::unique_ptr<ROOT::Detail::RRawPtrWriteEntry> row;
  ROOT::RFieldToken event, pmt, type, shadowed, by;
  std::vector<ROOT::RFieldToken> columns;

  std::int64_t eventInteger = 0;
  std::int32_t shadowedValue = 0;
  std::vector<double> values;             // of the columns
  std::vector<std::int32_t> wholeValues;  // of those that are whole
  std::vector<std::string> texts;         // of those that are text

  explicit Entry(NTupleFile::Rows& itsRows)
      : rows(itsRows),
        row(rows.MakeRawEntry()),
        event(row->GetToken("event")),
        pmt(row->GetToken("pmt")),
        type(row->GetToken("type")),
        shadowed(row->GetToken("shadowed")),
        by(row->GetToken("by")) {
    row->BindRawPtr(shadowed, &shadowedValue);
  }
};

VerdictNTuple::Block::Block(const VerdictNTuple& owner)
    : owner_(owner), entry_(std::make_unique<Entry>(owner.file_->AddRows())) {
  Entry& entry = *entry_;
  const std::vector<const PairColumn*>& columns = owner_.fields_.columns;
  entry.values.resize(columns.size());
  entry.wholeValues.resize(columns.size());
  entry.texts.resize(columns.size());
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const ROOT::RFieldToken token = entry.row->GetToken(columns[i]->name);
    switch (columns[i]->kind) {
      case eValue::kNumber:
        entry.row->BindRawPtr(token, &entry.values[i]);
        break;
      case eValue::kWholeNumber:
        entry.row->BindRawPtr(token, &entry.wholeValues[i]);
        break;
      case eValue::kText:
        entry.row->BindRawPtr(token, &entry.texts[i]);
        break;
    }
  }
}

VerdictNTuple::Block::~Block() = default;

void VerdictNTuple::Block::SetEvent(const NamedPosition& event) {
  if (owner_.fields_.hasIntegerEvents) {
    entry_->eventInteger = IntegerOf(event.name).value();
    entry_->row->BindRawPtr(entry_->event, &entry_->eventInteger);
  } else {
    entry_->row->BindRawPtr(entry_->event, &event.name);
  }
}

void VerdictNTuple::Block::Fill(std::size_t pmt, DU::eLightPathType type,
                                const JudgedPair& pair) {
  Entry& entry = *entry_;
  if (owner_.pmtIntegers_.empty()) {
    entry.row->BindRawPtr(entry.pmt, &owner_.pmts_[pmt].name);
  } else {
    entry.row->BindRawPtr(entry.pmt, &owner_.pmtIntegers_[pmt]);
  }
  const Texts& texts = AllTexts();
  if (DU::HasPath(pair.verdict)) {
    const auto by = static_cast<std::size_t>(DU::ComponentOf(pair.verdict));
    entry.row->BindRawPtr(entry.type, &texts.types[type]);
    entry.row->BindRawPtr(entry.by, &texts.components[by]);
    entry.shadowedValue = DU::IsShadowed(pair.verdict) ? 1 : 0;
  } else {
    entry.row->BindRawPtr(entry.type, &texts.types[DU::kUninitialised]);
    entry.row->BindRawPtr(entry.by, &texts.noPath);
    entry.shadowedValue = -1;
  }
  const std::vector<const PairColumn*>& columns = owner_.fields_.columns;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    switch (columns[i]->kind) {
      case eValue::kNumber:
        entry.values[i] = columns[i]->value(pair).value_or(std::nan(""));
        break;
      case eValue::kWholeNumber:
        entry.wholeValues[i] =
            static_cast<std::int32_t>(columns[i]->value(pair).value());
        break;
      case eValue::kText:
        entry.texts[i] = columns[i]->text(pair);
        break;
    }
  }
  entry.rows.Fill(*entry.row);
}

void VerdictNTuple::Block::Flush() { entry_->rows.Flush(); }
void VerdictNTuple::Block::Commit() { entry_->rows.Commit(); }

VerdictNTuple::VerdictNTuple(const std::string& path, Origin origin,
                             const std::vector<NamedPosition>& pmts)
    : file_(new NTupleFile(path)),
      origin_(std::move(origin)),
      pmts_(pmts),
      pmtIntegers_(IntegersOf(pmts)) {}

VerdictNTuple::~VerdictNTuple() = default;

void VerdictNTuple::Begin(const Fields& fields, std::size_t blocks) {
  fields_ = fields;
  auto model = ROOT::RNTupleModel::Create();
  NameField::AddTo(*model, "event", fields.hasIntegerEvents);
  NameField::AddTo(*model, "pmt", !pmtIntegers_.empty());
  model->MakeField<std::string>("type",
                                "type of the light path; empty for no path");
  model->MakeField<std::int32_t>("shadowed",
                                 "1 shadowed, 0 not, -1 for no path");
  model->MakeField<std::string>(
      "by", "the component that shadows it, if any; or no path");
  for (const PairColumn* const column : fields.columns) {
    ColumnField::AddTo(*model, *column);
  }
  file_->Begin("verdicts", origin_, std::move(model));
  for (std::size_t i = 0; i < blocks; ++i) {
    blocks_.push_back(std::unique_ptr<Block>(new Block(*this)));
  }
}

void VerdictNTuple::Finish() {
  if (!file_->HasBegun()) Begin({}, 0);
  blocks_.clear();
  file_->Finish();
}

void VerdictNTuple::Commit() { file_->Commit(); }

}  // namespace ZARN::IO

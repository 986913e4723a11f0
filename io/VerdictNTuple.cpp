#include "io/VerdictNTuple.hpp"

#include <array>
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
  std::vector<ColumnField> columns;

  std::int64_t eventInteger = 0;
  std::int32_t shadowedValue = 0;

  Entry(NTupleFile::Rows& itsRows,
        const std::vector<const PairColumn*>& itsColumns)
      : rows(itsRows),
        row(rows.MakeRawEntry()),
        event(row->GetToken("event")),
        pmt(row->GetToken("pmt")),
        type(row->GetToken("type")),
        shadowed(row->GetToken("shadowed")),
        by(row->GetToken("by")),
        columns(itsColumns.begin(), itsColumns.end()) {
    row->BindRawPtr(shadowed, &shadowedValue);
    for (ColumnField& column : columns) column.BindTo(*row);
  }
};

VerdictNTuple::Block::Block(const VerdictNTuple& owner)
    : owner_(owner),
      entry_(std::make_unique<Entry>(owner.file_->AddRows(),
                                     owner.fields_.columns)) {}

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
  for (ColumnField& column : entry.columns) column.Set(pair);
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
    ColumnField(column).AddTo(*model);
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

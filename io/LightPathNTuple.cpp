#include "io/LightPathNTuple.hpp"

#include <array>
#include <cmath>
#include <utility>

#include "io/LightPathColumns.hpp"
#include "io/NTupleFile.hpp"
#include "lightpath/Crossings.hpp"

namespace ZARN::IO {
namespace {

constexpr std::size_t kAxes = 3;

}  // namespace

struct LightPathNTuple::Block::Fields {
  NTupleFile::Rows& rows;
  NameField event;
  NameField pmt;
  std::string* type;
  std::array<double*, kAxes * kLightPathVectors.size()> coordinates;

  Fields(NTupleFile::Rows& itsRows, const Names& names)
      : rows(itsRows),
        event(rows, "event", names.areEventsIntegers),
        pmt(rows, "pmt", names.arePMTsIntegers) {
    const std::vector<std::string> columns = LightPathColumns();
    type = rows.Field<std::string>(columns[0]);
    for (std::size_t i = 0; i < coordinates.size(); ++i) {
      coordinates[i] = rows.Field<double>(columns[i + 1]);
    }
  }
};

LightPathNTuple::Block::Block(std::unique_ptr<Fields> fields)
    : fields_(std::move(fields)) {}

LightPathNTuple::Block::~Block() = default;

void LightPathNTuple::Block::Fill(const std::string& event,
                                  const std::string& pmt,
                                  const DU::LightPath& path) {
  fields_->event.Set(event);
  fields_->pmt.Set(pmt);
  *fields_->type = DU::kLightPathTypeNames[path.LightPathType];
  const std::size_t used = VectorsOf(path.LightPathType);
  auto coordinate = fields_->coordinates.begin();
  for (std::size_t i = 0; i < kLightPathVectors.size(); ++i) {
    const TVector3& vector = path.*kLightPathVectors[i].member;
    for (const double value : {vector.X(), vector.Y(), vector.Z()}) {
      **coordinate++ = i < used ? value : std::nan("");
    }
  }
  fields_->rows.Fill();
}

void LightPathNTuple::Block::Flush() { fields_->rows.Flush(); }
void LightPathNTuple::Block::Commit() { fields_->rows.Commit(); }

LightPathNTuple::LightPathNTuple(const std::string& path, Origin origin)
    : origin_(std::move(origin)), file_(new NTupleFile(path)) {}

LightPathNTuple::~LightPathNTuple() = default;

void LightPathNTuple::Begin(const Names& names, std::size_t blocks) {
  auto model = ROOT::RNTupleModel::Create();
  NameField::AddTo(*model, "event", names.areEventsIntegers);
  NameField::AddTo(*model, "pmt", names.arePMTsIntegers);
  const std::vector<std::string> columns = LightPathColumns();
  model->MakeField<std::string>(columns[0], "type of the light path");
  for (std::size_t i = 1; i < columns.size(); ++i) {
    model->MakeField<double>(columns[i]);
  }
  file_->Begin("paths", origin_, std::move(model));
  for (std::size_t i = 0; i < blocks; ++i) {
    auto fields = std::make_unique<Block::Fields>(file_->AddRows(), names);
    blocks_.push_back(std::unique_ptr<Block>(new Block(std::move(fields))));
  }
}

void LightPathNTuple::Finish() {
  if (!file_->HasBegun()) Begin({}, 0);
  file_->Finish();
}

void LightPathNTuple::Commit() { file_->Commit(); }

}  // namespace ZARN::IO

#include "db/ReadField.hpp"

#include "db/DB.hpp"

namespace ZARN {
namespace {

simple_ptr_nocopy<DBLink> LinkTo(const std::string& table,
                                 const std::string& index) {
  return DB::Get().GetLink(table, index, DB::kHighestPass);
}

}  // namespace

double ReadNumber(const std::string& table, const std::string& index,
                  const std::string& field) {
  return LinkTo(table, index)->GetD(field);
}

std::vector<double> ReadNumbers(const std::string& table,
                                const std::string& index,
                                const std::string& field) {
  return LinkTo(table, index)->GetDArray(field);
}

std::string ReadText(const std::string& table, const std::string& index,
                     const std::string& field) {
  return LinkTo(table, index)->GetS(field);
}

bool IsNumber(const std::string& table, const std::string& index,
              const std::string& field) {
  return LinkTo(table, index)->IsNumber(field);
}

}  // namespace ZARN

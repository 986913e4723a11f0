#include "db/ReadField.hpp"

#include "db/DB.hpp"

namespace ZARN {
namespace {

/// A link to the entry of a field; where there is none, the error tells which
/// field was wanted.
simple_ptr_nocopy<DBLink> LinkTo(const std::string& table,
                                 const std::string& index,
                                 const std::string& field) {
  try {
    return DB::Get().GetLink(table, index, DB::kHighestPass);
  } catch (const DBNotFoundError& error) {
    throw DBNotFoundError(error.what() + (", so no field " + field));
  }
}

}  // namespace

double ReadNumber(const std::string& table, const std::string& index,
                  const std::string& field) {
  return LinkTo(table, index, field)->GetD(field);
}

std::vector<double> ReadNumbers(const std::string& table,
                                const std::string& index,
                                const std::string& field) {
  return LinkTo(table, index, field)->GetDArray(field);
}

std::string ReadText(const std::string& table, const std::string& index,
                     const std::string& field) {
  return LinkTo(table, index, field)->GetS(field);
}

bool IsNumber(const std::string& table, const std::string& index,
              const std::string& field) {
  return LinkTo(table, index, field)->IsNumber(field);
}

}  // namespace ZARN

#include "db/DB.hpp"

namespace ZARN {

DB& DB::Get() {
  static DB instance;
  return instance;
}

}  // namespace ZARN

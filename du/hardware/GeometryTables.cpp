#include "du/hardware/GeometryTables.hpp"

#include "db/ReadField.hpp"
#include "log/Log.hpp"

namespace ZARN::DU {
void FillXYZPositions(const TableSet& tables, std::vector<TVector3>& positions,
                      const std::string& table, const std::string& index,
                      const std::string& xField, const std::string& yField,
                      const std::string& zField) {
  const std::vector<double> x = ReadNumbers(tables, table, index, xField);
  const std::vector<double> y = ReadNumbers(tables, table, index, yField);
  const std::vector<double> z = ReadNumbers(tables, table, index, zField);
  if (x.size() != y.size() || x.size() != z.size()) {
    warn << "ShadowingCalculator::FillXYZPositions: Inequal number of elements "
            "across the (X,Y,Z) coordinate arrays!\n";
    warn << "(X,Y,Z) positions not initialised for (" << table << ", " << index
         << ").\n";
    return;
  }
  positions.clear();
  positions.reserve(x.size());
  for (std::size_t i = 0; i < x.size(); ++i) {
    positions.emplace_back(x[i], y[i], z[i]);
  }
}

}  // namespace ZARN::DU

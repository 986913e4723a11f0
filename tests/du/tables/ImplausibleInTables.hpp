#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "tests/du/tables/MinimalTables.hpp"

namespace ZARN::DU {

using Numbers = std::vector<double>;

/// A mistake in one place of the minimal detector, which has no findings.
class ImplausibleInTables : public testing::Test {
 protected:
  double& Number(const std::string& table, const std::string& index,
                 const std::string& field) {
    return std::get<double>(tables_.Field(table, index, field));
  }
  Numbers& Array(const std::string& table, const std::string& index,
                 const std::string& field) {
    return std::get<Numbers>(tables_.Field(table, index, field));
  }
  Numbers& Anchors(const std::string& field) {
    return Array("GEO_LOCATIONS", "anchors", field);
  }
  Numbers& Feet(const std::string& field) {
    return Array("GEO_LOCATIONS", "support_rope_feet", field);
  }
  Numbers& Plates(const std::string& field) {
    return Array("GEO_LOCATIONS", "plates", field);
  }
  Numbers& Rope(const std::string& field) {
    return Array("SOLID", "hold_down_rope", field);
  }
  Numbers& Rolls() { return Array("GEO_LOCATIONS", "hold_down_rolls", "roll"); }

  /// Only the vessel has radii that a light path refuses.
  void RemoveMedia() {
    for (const char* const medium : {"inner_av", "acrylic", "water"}) {
      tables_.Remove("OPTICS", medium);
    }
  }

  static void InMetres(Numbers& numbers) {
    for (double& number : numbers) number /= 1000.0;
  }

  Testing::MinimalTables tables_;
};

}  // namespace ZARN::DU

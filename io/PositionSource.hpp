#pragma once

#include <memory>
#include <string>

#include "io/PositionReader.hpp"

namespace ZARN::IO {

/// Where a PositionReader reads from; members are as there.
class PositionReader::Source {
 public:
  virtual ~Source() = default;
  virtual bool Next(NamedPosition& item) = 0;
  virtual void FailName(const std::string& reason) const = 0;
  virtual std::optional<double> Done() const = 0;
  virtual const std::string& Name() const = 0;
};

/// @param nameColumn  "event" or "pmt"
/// @param names       for our names nameColumn, x, y and z
std::unique_ptr<PositionReader::Source> OpenCsvPositions(
    const std::string& input, const std::string& nameColumn,
    const ColumnNames& names);
std::unique_ptr<PositionReader::Source> OpenRootPositions(
    const std::string& input, const std::string& nameColumn,
    const ColumnNames& names);

}  // namespace ZARN::IO

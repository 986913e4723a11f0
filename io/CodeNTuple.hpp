#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "io/Origin.hpp"

namespace ZARN::IO {

/// A ROOT file with an RNTuple of the numbers of verdicts (DU::eVerdict), which
/// appears complete or not at all.
///
/// The RNTuple is called "verdicts" and has the fields event and pmt (integers
/// or strings), code, and with reflections reflected_code (8 bits). Its
/// description is a JSON object with the Origin.
class CodeNTuple {
 public:
  struct Fields {
    bool hasIntegerEvents = false;  ///< all names of events are integers
    bool hasIntegerPMTs = false;    ///< and all of PMTs
    bool hasReflections = false;
  };

  /// @param path  a regular file, or a new name
  /// @param pmts  their names
  /// @throws OutputFailure if the file cannot be created
  CodeNTuple(const std::string& path, const Origin& origin,
             std::vector<std::string> pmts, const Fields& fields);
  ~CodeNTuple();

  std::size_t PMTs() const { return pmts_.size(); }
  bool HasReflections() const { return fields_.hasReflections; }

  /// Add the rows of an event, one for each PMT.
  ///
  /// @param codes      the number of the verdict for each PMT
  /// @param reflected  the same for reflected light; unused without reflections
  /// @throws OutputFailure if writing fails
  void Add(const std::string& event, const std::uint8_t* codes,
           const std::uint8_t* reflected);

  /// Write what is buffered, and move the file to its final name.
  ///
  /// @throws OutputFailure
  void Commit();

 private:
  struct Row;  // in ROOT's terms
  void SetPMT(std::size_t pmt);

  std::vector<std::string> pmts_;
  std::vector<std::int64_t> integerPMTs_;  // empty unless they are integers
  Fields fields_;
  std::unique_ptr<Row> row_;
};

}  // namespace ZARN::IO

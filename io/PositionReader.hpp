#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TVector3.h"
#include "io/ColumnNames.hpp"

namespace ZARN::IO {

/// An event or a PMT.
struct NamedPosition {
  std::string name;   ///< as in the file
  std::string cell;   ///< the same as a CSV cell
  TVector3 position;  ///< mm
};

/// Their positions.
std::vector<TVector3> PositionsOf(const std::vector<NamedPosition>& items);

/// Reads positions from CSV, or from a TTree or an RNTuple: a column of names
/// and the columns x, y and z, mm, in any order; others are ignored. The
/// content decides what the file is.
class PositionReader {
 public:
  /// @param input       "-" is standard input; "pmts.root:tree" if a ROOT file
  ///                    has several trees
  /// @param nameColumn  the column of names, "event" or "pmt"
  /// @param names       what the columns are called; our names here are, for
  ///                    example, event, event_x, event_y and event_z
  /// @throws BadInput if it cannot be read or a column is missing
  PositionReader(const std::string& input, const std::string& nameColumn,
                 const ColumnNames& names = {});
  PositionReader(const PositionReader&) = delete;
  PositionReader& operator=(const PositionReader&) = delete;
  ~PositionReader();

  /// Read the next position into @p item; false after the last.
  ///
  /// @throws BadInput naming the place: file, line, row and column, or file,
  ///         tree, column and entry; also for an empty coordinate in CSV,
  ///         which must not be read as 0
  bool Next(NamedPosition& item);

  /// Report an error in the name that was read last: throws BadInput.
  void FailName(const std::string& reason) const;

  /// Share of the input up to the end of the current row; nullopt if its size
  /// is unknown.
  std::optional<double> Done() const;

  /// Name of the input for messages.
  const std::string& Name() const;

  class Source;  // of one kind

 private:
  std::unique_ptr<Source> source_;
};

/// Read all positions of a file.
///
/// @throws as PositionReader
std::vector<NamedPosition> ReadPositions(const std::string& input,
                                         const std::string& nameColumn,
                                         const ColumnNames& names = {});

}  // namespace ZARN::IO

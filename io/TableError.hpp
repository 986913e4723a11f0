#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace ZARN::IO {

/// An error in a block of a table, and its place. Lines, rows and columns count
/// from 0; lines and rows start at the beginning of the block.
class TableError : public std::runtime_error {
 public:
  struct Place {
    std::uint64_t line;  ///< where the row begins; only CSV has lines
    std::uint64_t row;
    std::size_t column;
  };

  TableError(const Place& place, const std::string& reason)
      : std::runtime_error(reason), place_(place) {}
  const Place& Where() const { return place_; }

 private:
  Place place_;
};

}  // namespace ZARN::IO

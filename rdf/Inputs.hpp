#pragma once

#include <Math/Vector3D.h>
#include <ROOT/RDF/RInterface.hxx>
#include <string>
#include <vector>

#include "TVector3.h"

namespace ZARN::RDF {

/// A vector of a frame, in the one type to which Inputs converts the others.
using Vector = ::ROOT::Math::XYZVector;

inline TVector3 AsTVector3(const Vector& vector) {
  return {vector.X(), vector.Y(), vector.Z()};
}

/// Finds the columns from which new ones are computed. Where one has another
/// type than is needed, a hidden column converts it.
class Inputs {
 public:
  /// @param user     the function that needs the columns, for messages
  /// @param results  the names of the columns that it defines
  Inputs(::ROOT::RDF::RNode frame, const std::string& user,
         const std::vector<std::string>& results);

  /// A column of int, for path types.
  void AddType(const std::string& name);

  /// A column of Vector.
  ///
  /// @param name  as described in DataFrame.hpp
  void AddVector(const std::string& name);

  /// The frame with the hidden columns.
  ///
  /// @throws std::invalid_argument if a column is missing or has another type,
  ///         or if a result exists already
  ::ROOT::RDF::RNode Frame() const;

  /// The names of the columns, in the order in which they were added.
  const std::vector<std::string>& Names() const { return names_; }

 private:
  template <class Number>
  bool AddIf(const std::string& name, const std::string& type);
  template <class SomeVector>
  bool AddVectorIf(const std::string& name, const std::string& type);
  template <class Number>
  bool AddCoordinatesIf(const std::vector<std::string>& names,
                        const std::vector<std::string>& types);
  template <class Convert>
  void AddHidden(const Convert& convert, const std::vector<std::string>& from);

  ::ROOT::RDF::RNode frame_;
  std::string user_;
  std::string hidden_;  // beginning of the names of hidden columns
  std::vector<std::string> names_;
  std::vector<std::string> missing_;
  std::vector<std::string> problems_;
};

}  // namespace ZARN::RDF

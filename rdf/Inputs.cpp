#include "rdf/Inputs.hpp"

#include <Math/Point3D.h>
#include <TClass.h>
#include <TDataType.h>
#include <TROOT.h>
#include <algorithm>
#include <limits>
#include <stdexcept>
#include <type_traits>

#include "io/LightPathBlock.hpp"
#include "lightpath/LightPathType.hpp"

namespace ZARN::RDF {
namespace {

/// Whether this is the name of a type, of which ROOT has several: "int",
/// "Int_t", "std::int32_t".
template <class Type>
bool IsNameOf(const std::string& name) {
  if constexpr (std::is_class_v<Type>) {
    const TClass* const found = TClass::GetClass(name.c_str());
    return found != nullptr && found->GetTypeInfo() != nullptr &&
           *found->GetTypeInfo() == typeid(Type);
  } else {
    const TDataType* const found = gROOT->GetType(name.c_str());
    return found != nullptr &&
           found->GetType() == TDataType::GetType(typeid(Type));
  }
}

/// A number that is no type stays one: it does not become one by losing digits.
template <class Number>
int AsType(Number number) {
  return DU::IsKnownType(static_cast<int>(number)) &&
                 static_cast<Number>(static_cast<int>(number)) == number
             ? static_cast<int>(number)
             : DU::kNumberOfLightPathTypes;
}

int TypeOfName(const std::string& name) {
  return static_cast<int>(IO::LightPathBlock::TypeOfName(name));
}

std::string Joined(const std::vector<std::string>& words, const char* between) {
  std::string text;
  for (const std::string& word : words) {
    text += (text.empty() ? "" : between) + word;
  }
  return text;
}

std::string OfType(const std::string& name, const std::string& type) {
  return "the column " + name + " is of type " + type;
}

}  // namespace

Inputs::Inputs(::ROOT::RDF::RNode frame, const std::string& user,
               const std::vector<std::string>& results)
    : frame_(std::move(frame)),
      user_(user),
      // ROOT hides columns that begin with "rdf" and end with "_".
      hidden_("rdf_" + results.front() + '_') {
  for (const std::string& result : results) {
    if (frame_.HasColumn(result)) {
      problems_.push_back("the column " + result + " exists already");
    }
  }
}

::ROOT::RDF::RNode Inputs::Frame() const {
  std::vector<std::string> problems = problems_;
  if (!missing_.empty()) {
    problems.insert(problems.begin(),
                    "there is no column " + Joined(missing_, ", "));
  }
  if (problems.empty()) return frame_;
  throw std::invalid_argument(user_ + ": " + Joined(problems, "; "));
}

template <class Convert>
void Inputs::AddHidden(const Convert& convert,
                       const std::vector<std::string>& from) {
  // A result that exists has hidden columns already.
  if (!problems_.empty()) return;
  names_.push_back(hidden_ + std::to_string(names_.size()) + '_');
  frame_ = frame_.Define(names_.back(), convert, from);
}

template <class Number>
bool Inputs::AddIf(const std::string& name, const std::string& type) {
  if (!IsNameOf<Number>(type)) return false;
  AddHidden(AsType<Number>, {name});
  return true;
}

void Inputs::AddType(const std::string& name) {
  if (!frame_.HasColumn(name)) {
    missing_.push_back(name);
    return;
  }
  const std::string type = frame_.GetColumnType(name);
  if (IsNameOf<int>(type)) {
    names_.push_back(name);
  } else if (IsNameOf<std::string>(type)) {
    AddHidden(TypeOfName, {name});
  } else if (!(AddIf<signed char>(name, type) ||
               AddIf<unsigned char>(name, type) || AddIf<short>(name, type) ||
               AddIf<unsigned short>(name, type) ||
               AddIf<unsigned int>(name, type) || AddIf<long>(name, type) ||
               AddIf<unsigned long>(name, type) ||
               AddIf<long long>(name, type) ||
               AddIf<unsigned long long>(name, type))) {
    problems_.push_back(OfType(name, type) +
                        ", expected an integer or std::string");
  }
}

template <class Number>
bool Inputs::AddCoordinatesIf(const std::vector<std::string>& names,
                              const std::vector<std::string>& types) {
  if (!std::all_of(types.begin(), types.end(), IsNameOf<Number>)) return false;
  AddHidden([](Number x, Number y, Number z) { return Vector(x, y, z); },
            names);
  return true;
}

template <class SomeVector>
bool Inputs::AddVectorIf(const std::string& name, const std::string& type) {
  if (!IsNameOf<SomeVector>(type)) return false;
  AddHidden([](const SomeVector& v) { return Vector(v.X(), v.Y(), v.Z()); },
            {name});
  return true;
}

void Inputs::AddVector(const std::string& name) {
  const std::vector<std::string> names = {name + "_x", name + "_y",
                                          name + "_z"};
  std::vector<std::string> types;
  std::vector<std::string> missing;
  for (const std::string& coordinate : names) {
    if (frame_.HasColumn(coordinate)) {
      types.push_back(frame_.GetColumnType(coordinate));
    } else {
      missing.push_back(coordinate);
    }
  }
  if (missing.empty()) {
    if (!AddCoordinatesIf<double>(names, types) &&
        !AddCoordinatesIf<float>(names, types)) {
      problems_.push_back("the columns " + Joined(names, ", ") +
                          " are of type " + Joined(types, ", ") +
                          ", expected all float or all double");
    }
    return;
  }
  // Not first: `event` and `pmt` of many files are names beside positions.
  if (!types.empty() || !frame_.HasColumn(name)) {
    missing_.insert(missing_.end(), missing.begin(), missing.end());
    return;
  }
  const std::string type = frame_.GetColumnType(name);
  if (IsNameOf<Vector>(type)) {
    names_.push_back(name);
  } else if (!(AddVectorIf<TVector3>(name, type) ||
               AddVectorIf<::ROOT::Math::XYZVectorF>(name, type) ||
               AddVectorIf<::ROOT::Math::XYZPoint>(name, type) ||
               AddVectorIf<::ROOT::Math::XYZPointF>(name, type))) {
    problems_.push_back(OfType(name, type) + ", expected a vector");
  }
}

}  // namespace ZARN::RDF

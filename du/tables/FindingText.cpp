#include "du/tables/FindingText.hpp"

#include <cstddef>
#include <variant>

#include "db/CanonicalJson.hpp"
#include "db/RunText.hpp"

namespace ZARN::DU {
namespace {

std::string TextOfArray(const std::vector<double>& numbers) {
  constexpr std::size_t kMost = 6;  // as many as a rope has points
  std::string text = "[";
  for (std::size_t i = 0; i < numbers.size() && i < kMost; ++i) {
    if (i > 0) text += ", ";
    text += TextOf(numbers[i]);
  }
  if (numbers.size() <= kMost) return text + "]";
  return text + ", ... " + std::to_string(numbers.size()) + " numbers]";
}

std::string TextOfString(const std::string& string) {
  constexpr std::size_t kMost = 60;  // longer than any name
  std::string text;
  AppendJson(text, string.size() <= kMost ? string : string.substr(0, kMost));
  if (string.size() > kMost) text += "...";
  return text;
}

}  // namespace

std::string TextOf(double number) {
  std::string text;
  AppendJson(text, number);
  return text;
}

std::string TextOf(const TVector3& position) {
  return "(" + TextOf(position.X()) + ", " + TextOf(position.Y()) + ", " +
         TextOf(position.Z()) + ")";
}

std::string TextOf(const TableField& field) {
  if (const auto* const number = std::get_if<double>(&field)) {
    return TextOf(*number);
  }
  if (const auto* const string = std::get_if<std::string>(&field)) {
    return TextOfString(*string);
  }
  return TextOfArray(std::get<std::vector<double>>(field));
}

std::string TextOfPlace(const TableEntry& entry, const std::string& field) {
  const auto found = entry.places.find(field);
  const TextPlace place =
      found == entry.places.end() ? entry.place : found->second;
  std::string text = entry.source;
  if (place.line > 0) {
    return text + ":" + std::to_string(place.line) + ":" +
           std::to_string(place.column);
  }
  if (!text.empty()) text += ", ";
  return text + "pass " + std::to_string(entry.pass) + ", " +
         ZARN::TextOf(entry.runs);
}

std::string TextOfList(const std::vector<std::string>& names) {
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) text += i + 1 == names.size() ? " and " : ", ";
    text += names[i];
  }
  return text;
}

std::string AndMore(std::size_t others) {
  if (others == 0) return "";
  return others == 1 ? ", and 1 more"
                     : ", and " + std::to_string(others) + " more";
}

}  // namespace ZARN::DU

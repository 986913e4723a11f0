#include "io/VerdictText.hpp"

namespace ZARN::IO {

void AppendVerdict(std::string& text, DU::eShadowingComponent by) {
  text += by == DU::eShadowingComponent::kNone ? "0," : "1,";
  text += DU::NameOf(by);
}

void AppendPathVerdict(std::string& text, DU::eLightPathType type,
                       DU::eShadowingComponent by) {
  if (type == DU::kUninitialised) {
    text += ",,";
    text += kNoPath;
    return;
  }
  text += DU::kLightPathTypeNames[type];
  text += ',';
  AppendVerdict(text, by);
}

}  // namespace ZARN::IO

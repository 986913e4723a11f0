#include "tests/property/CalculatorPair.hpp"

#include <algorithm>
#include <exception>
#include <typeinfo>

#include "tests/property/StateDifference.hpp"

namespace ZARN::Testing {

namespace {

/// A NaN's sign is no part of the formulas: it depends on which operand the
/// compiler puts first. So "-nan" counts as "nan".
std::string WithoutNanSigns(std::string text) {
  for (std::size_t at = text.find("-nan"); at != std::string::npos;
       at = text.find("-nan", at)) {
    text.erase(at, 1);
  }
  return text;
}

bool AreSameTexts(const std::string& a, const std::string& b) {
  return a == b || WithoutNanSigns(a) == WithoutNanSigns(b);
}

/// @return the name of the exception's type; empty if there was none
template <class Action>
std::string TypeThrownBy(const Action& action) {
  try {
    action();
  } catch (const std::exception& e) {
    return typeid(e).name();
  }
  return {};
}

DU::eShadowingComponent BlockingOf(
    const Reference::PlainShadowingCalculator& plain) {
  using Component = DU::eShadowingComponent;
  if (plain.ShadowedByAVHDRope) return Component::kAVHDRope;
  if (plain.ShadowedBySupportRope) return Component::kSupportRope;
  if (plain.ShadowedByBellyPlate) return Component::kBellyPlate;
  if (plain.ShadowedByNCDAnchor) return Component::kNCDAnchor;
  if (plain.ShadowedByAVPipe) return Component::kAVPipe;
  if (plain.ShadowedByNeckBoss) return Component::kNeckBoss;
  return Component::kNone;
}

}  // namespace

CalculatorPair::CalculatorPair() : plain_(plainWarn_, plainDebug_) {
  warn.SetOutput(&realWarn_);
  debug.SetOutput(&realDebug_);
  SwitchDebug(false);
}

CalculatorPair::~CalculatorPair() {
  debug.Switch(otext::eState::kSilent);
  warn.SetOutput(nullptr);
  debug.SetOutput(nullptr);
}

void CalculatorPair::SwitchDebug(bool on) {
  debug.Switch(on ? otext::eState::kOn : otext::eState::kSilent);
  plainDebug_.Switch(on);
}

void CalculatorPair::SetAllGeometryTolerances(double tolerance) {
  real_.SetAllGeometryTolerances(tolerance);
  plain_.SetAllGeometryTolerances(tolerance);
}

bool CalculatorPair::BeginOfRun() {
  EmptyTexts();
  root_.Empty();
  const std::string realThrew = TypeThrownBy([&] { real_.BeginOfRun(); });
  realRoot_ = root_.Text();
  root_.Empty();
  const std::string plainThrew = TypeThrownBy([&] { plain_.BeginOfRun(); });
  plainRoot_ = root_.Text();
  // Each geometry starts with the names of the system.
  realPath_ = DU::LightPathCalculator();
  plainPath_ = DU::LightPathCalculator();
  if (realThrew != plainThrew) {
    return Differ("real threw '" + realThrew + "', plain '" + plainThrew + "'");
  }
  const std::string state = StateDifference(real_, plain_);
  if (!state.empty()) return Differ(state);
  return HaveSameTexts();
}

bool CalculatorPair::Check(const TestPath& path) {
  Name(path);
  realPath_.SetLightPath(path.path);
  plainPath_.SetLightPath(path.path);

  EmptyTexts();
  root_.Empty();
  const bool plainShadowed = plain_.CheckForShadowing(plainPath_);
  plainRoot_ = root_.Text();
  blocking_ = BlockingOf(plain_);
  const std::string& diagnostics = plainDebug_.Text();
  outcome_ = static_cast<int>(blocking_) +
             8 * static_cast<int>(
                     std::count(diagnostics.begin(), diagnostics.end(), '\n'));

  root_.Empty();
  const bool realShadowed = real_.CheckForShadowing(realPath_);
  realRoot_ = root_.Text();

  bool same = true;
  if (realShadowed != plainShadowed) {
    same = Differ(realShadowed ? "only real is shadowed"
                               : "only plain is shadowed");
  } else if (!HaveSameFlags()) {
    same = Differ(StateDifference(real_, plain_));
  } else if (realPath_.LightPathTypeNames() !=
             plainPath_.LightPathTypeNames()) {
    same = Differ("the type names differ afterwards");
  } else {
    same = HaveSameTexts() && FindsTheSame(path);
  }
  Unname(path);
  return same;
}

bool CalculatorPair::FindsTheSame(const TestPath& path) {
  if (path.naming != eNaming::kOwnName) return true;
  realWarn_.Empty();
  realDebug_.Empty();
  root_.Empty();
  const DU::ShadowingCalculator& real = real_;
  const DU::eShadowingComponent found = real.FindShadowing(path.path);
  if (found != blocking_) {
    return Differ(std::string("FindShadowing found '") + DU::NameOf(found) +
                  "', plain '" + DU::NameOf(blocking_) + "'");
  }
  if (!realWarn_.Text().empty()) {
    return Differ("FindShadowing warned: " + realWarn_.Text());
  }
  if (!AreSameTexts(realDebug_.Text(), plainDebug_.Text())) {
    return Differ("FindShadowing's diagnostics: " + realDebug_.Text() +
                  "\nplain: " + plainDebug_.Text());
  }
  if (root_.Text() != plainRoot_) {
    return Differ("FindShadowing's vector warnings: " + root_.Text() +
                  "\nplain: " + plainRoot_);
  }
  if (!HaveSameFlags()) return Differ("FindShadowing changed the flags");
  return true;
}

bool CalculatorPair::HaveSameFlags() const {
  return real_.IsShadowedByAVHDRope() == plain_.ShadowedByAVHDRope &&
         real_.IsShadowedByBellyPlate() == plain_.ShadowedByBellyPlate &&
         real_.IsShadowedByNCDAnchor() == plain_.ShadowedByNCDAnchor &&
         real_.IsShadowedBySupportRope() == plain_.ShadowedBySupportRope &&
         real_.IsShadowedByAVPipe() == plain_.ShadowedByAVPipe &&
         real_.IsShadowedByNeckBoss() == plain_.ShadowedByNeckBoss &&
         real_.IsShadowed() == plain_.Shadowed;
}

bool CalculatorPair::HaveSameTexts() {
  if (realWarn_.Text() != plainWarn_.Text()) {
    return Differ("real warned:\n" + realWarn_.Text() + "plain:\n" +
                  plainWarn_.Text());
  }
  if (!AreSameTexts(realDebug_.Text(), plainDebug_.Text())) {
    return Differ("real's diagnostics:\n" + realDebug_.Text() + "plain's:\n" +
                  plainDebug_.Text());
  }
  if (realRoot_ != plainRoot_) {
    return Differ("real's vector warnings:\n" + realRoot_ + "plain's:\n" +
                  plainRoot_);
  }
  return true;
}

void CalculatorPair::EmptyTexts() {
  realWarn_.Empty();
  realDebug_.Empty();
  plainWarn_.Empty();
  plainDebug_.Empty();
}

bool CalculatorPair::Differ(const std::string& what) {
  difference_ = what;
  return false;
}

void CalculatorPair::Name(const TestPath& path) {
  const DU::eLightPathType type = path.path.LightPathType;
  for (DU::LightPathCalculator* calculator : {&realPath_, &plainPath_}) {
    if (path.naming == eNaming::kRenamed) {
      calculator->LightPathTypeNames()[type] = path.name;
    } else if (path.naming == eNaming::kUnnamed) {
      calculator->LightPathTypeNames().erase(type);
    }
  }
}

void CalculatorPair::Unname(const TestPath& path) {
  // A name that a look-up added for a type of no name stays, so that later
  // paths of that type find it.
  if (path.naming == eNaming::kOwnName) return;
  const DU::eLightPathType type = path.path.LightPathType;
  for (DU::LightPathCalculator* calculator : {&realPath_, &plainPath_}) {
    if (type >= 0 && type < DU::kNumberOfLightPathTypes) {
      calculator->LightPathTypeNames()[type] =
          DU::kLightPathTypeNames[static_cast<std::size_t>(type)];
    } else {
      calculator->LightPathTypeNames().erase(type);
    }
  }
}

}  // namespace ZARN::Testing

#include "tests/property/CalculatorPair.hpp"

#include <exception>
#include <memory>
#include <typeinfo>
#include <utility>

#include "tests/property/PlainOutcome.hpp"
#include "tests/property/StateDifference.hpp"

namespace ZARN::Testing {

namespace {

/// The formulas do not define the sign of a NaN: it depends on which operand
/// the compiler puts first. So "-nan" is compared as "nan".
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

void CalculatorPair::BeginState() {
  checked_.Clear();
  pathsInState_ = 0;
}

/// The first paths of each state are judged by the formulas, all others by the
/// layers.
void CalculatorPair::MakeLayersSoon() {
  constexpr int kPathsByFormulas = 2;
  if (pathsInState_++ == kPathsByFormulas) real_.MakeLayers();
}

void CalculatorPair::UseLayers(const DU::ShadowingLayers& layers) {
  pathsInState_ = 0;
  real_.UseLayers(layers);
}

void CalculatorPair::SetAllGeometryTolerances(double tolerance) {
  BeginState();
  real_.SetAllGeometryTolerances(tolerance);
  plain_.SetAllGeometryTolerances(tolerance);
}

void CalculatorPair::Replace(eReplacement replacement) {
  switch (replacement) {
    case eReplacement::kCopy: {
      // The copy must not depend on its source.
      auto original = std::make_unique<DU::ShadowingCalculator>(real_);
      const DU::ShadowingCalculator copy(*original);
      original.reset();
      real_ = DU::ShadowingCalculator();
      real_ = copy;
      break;
    }
    case eReplacement::kAssigned: {
      const DU::ShadowingCalculator copy(real_);
      real_.SetAllGeometryTolerances(77.0);
      real_ = copy;
      break;
    }
    case eReplacement::kMoved: {
      DU::ShadowingCalculator moved(std::move(real_));
      real_ = DU::ShadowingCalculator();
      real_ = std::move(moved);
      break;
    }
    case eReplacement::kMovedAndBack: {
      DU::ShadowingCalculator moved(std::move(real_));
      real_ = std::move(moved);
      break;
    }
  }
}

void CalculatorPair::ThrowAt(const std::string& text) {
  for (TextSink* sink : {&realWarn_, &realDebug_, &plainWarn_, &plainDebug_}) {
    sink->ThrowAt(text);
  }
  root_.ThrowAt(text);
}

bool CalculatorPair::BeginOfRun() {
  BeginState();
  EmptyTexts();
  root_.Empty();
  const std::string realThrew = TypeThrownBy([&] { real_.BeginOfRun(); });
  realRoot_ = root_.Text();
  root_.Empty();
  const std::string plainThrew = TypeThrownBy([&] { plain_.BeginOfRun(); });
  plainRoot_ = root_.Text();
  threw_ = !realThrew.empty();
  // Each geometry starts with the default names.
  realPath_ = DU::LightPathCalculator();
  plainPath_ = DU::LightPathCalculator();
  if (realThrew != plainThrew) {
    return Differ("real threw '" + realThrew + "', plain '" + plainThrew + "'");
  }
  const std::string state = StateDifference(real_, plain_);
  if (!state.empty()) return Differ(state);
  // If a message made a calculator fail, the two texts end at different places.
  return threw_ || HaveSameTexts();
}

bool CalculatorPair::Check(const TestPath& path) {
  Name(path);
  realPath_.SetLightPath(path.path);
  plainPath_.SetLightPath(path.path);

  EmptyTexts();
  root_.Empty();
  MakeLayersSoon();
  const bool plainShadowed = plain_.CheckForShadowing(plainPath_);
  plainRoot_ = root_.Text();
  blocking_ = BlockingOf(plain_);
  outcome_ = OutcomeOf(plain_, plainDebug_.Text());

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
    same = HaveSameTexts() && WroteAsPredicted(path) && FindsTheSame(path);
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
  if (!WroteNothing("FindShadowing")) return false;
  if (!HaveSameFlags()) return Differ("FindShadowing changed the flags");
  checked_.Add(path.path, found);
  return true;
}

bool CalculatorPair::CheckExplanation(const TestPath& path,
                                      ToleranceTally& tally) {
  if (path.naming != eNaming::kOwnName) return true;
  plainPath_.SetLightPath(path.path);
  realWarn_.Empty();
  realDebug_.Empty();
  root_.Empty();
  const ExplainedPath explained = {real_.Explain(path.path),
                                   real_.FindCriticalTolerances(path.path)};
  if (!WroteNothing("an explanation")) return false;
  if (explained.explanation.by != blocking_) {
    return Differ(std::string("explained by '") +
                  DU::NameOf(explained.explanation.by) + "'");
  }
  const std::string difference =
      ExplanationDifference(explained, real_, plain_, plainPath_, tally);
  return difference.empty() || Differ(difference);
}

bool CalculatorPair::WroteNothing(const char* what) {
  const std::string written =
      realWarn_.Text() + realDebug_.Text() + root_.Text();
  return written.empty() || Differ(what + (" wrote: " + written));
}

bool CalculatorPair::WroteAsPredicted(const TestPath& path) {
  const bool wrote = !plainWarn_.Text().empty() ||
                     !plainDebug_.Text().empty() || !plainRoot_.empty();
  return path.naming != eNaming::kOwnName || !wrote ||
         real_.WritesMessages(path.path.LightPathType) ||
         Differ("messages that WritesMessages does not predict");
}

bool CalculatorPair::CheckBatches() {
  EmptyTexts();
  root_.Empty();
  const std::string difference = AnyDifference(real_, checked_);
  if (!difference.empty()) return Differ(difference);
  return WroteNothing("a batch");
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
    return Differ("real's debug messages:\n" + realDebug_.Text() +
                  "plain's:\n" + plainDebug_.Text());
  }
  if (realRoot_ != plainRoot_) {
    return Differ("real's ROOT warnings:\n" + realRoot_ + "plain's:\n" +
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
  // A name that a look-up added for a type without a name stays, so that later
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

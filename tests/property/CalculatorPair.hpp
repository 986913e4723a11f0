#pragma once

#include <string>

#include "du/ShadowingCalculator.hpp"
#include "du/fast/ShadowingLayers.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "log/Log.hpp"
#include "tests/property/Batches.hpp"
#include "tests/property/Paths.hpp"
#include "tests/property/RootMessages.hpp"
#include "tests/property/TextSink.hpp"
#include "tests/reference/PlainShadowingCalculator.hpp"

namespace ZARN::Testing {

/// The real calculator and the plain one, asked the same questions.
///
/// Each question compares all that can be seen from outside: the answer, the
/// flags, what is written to ZARN::warn and ZARN::debug, the vector library's
/// own warnings, and the names that the path has afterwards. While a pair lives
/// it holds the log streams and ROOT's handler.
class CalculatorPair {
 public:
  CalculatorPair();
  CalculatorPair(const CalculatorPair&) = delete;
  CalculatorPair& operator=(const CalculatorPair&) = delete;
  ~CalculatorPair();

  void SwitchDebug(bool on);
  void SetAllGeometryTolerances(double tolerance);

  /// What becomes of the real calculator, which shall make no difference.
  enum class eReplacement {
    kCopy,         ///< a copy takes its place
    kAssigned,     ///< one that had a run of its own is assigned from it
    kMoved,        ///< it is moved elsewhere
    kMovedAndBack  ///< and from there back into what was left of it
  };
  void Replace(eReplacement replacement);
  void UseLayers(const DU::ShadowingLayers& layers);

  /// @return whether both did the same, which may be to throw; Difference()
  ///         tells if not
  bool BeginOfRun();

  /// Whether the last BeginOfRun threw.
  bool Threw() const { return threw_; }

  /// Let what either calculator does fail where it writes a text.
  ///
  /// @param text  of any of their messages; empty: never more
  void ThrowAt(const std::string& text);

  /// Have both judge a path, the real one through FindShadowing as well if the
  /// path goes by its type's own name. FindShadowing must write nothing, and
  /// WritesMessages must foretell what CheckForShadowing writes.
  ///
  /// @return whether both did the same; Difference() tells if not
  bool Check(const TestPath& path);

  /// Have the real calculator judge all paths once more that Check saw since
  /// the last run or change of tolerances, and that go by their own names: one
  /// by one, and as batches. Nothing must be written.
  ///
  /// @return whether it judged them as before; Difference() tells if not
  bool CheckBatches();
  const JudgedPaths& Checked() const { return checked_; }

  /// Whether nothing was written by the real calculator since the last Check;
  /// Difference() tells what was.
  bool WroteNothing(const char* what);
  const DU::ShadowingCalculator& Real() const { return real_; }

  /// What the last Check found, as a number that differs where the outcome
  /// does: which component, and how many lines of diagnostics.
  int Outcome() const { return outcome_; }
  DU::eShadowingComponent Blocking() const { return blocking_; }

  /// What differed last. Made on demand, since nearly every comparison agrees.
  const std::string& Difference() const { return difference_; }

  const Reference::PlainShadowingCalculator& Plain() const { return plain_; }

 private:
  void BeginState();
  void MakeLayersSoon();
  bool HaveSameTexts();
  void EmptyTexts();
  bool Differ(const std::string& what);
  bool HaveSameFlags() const;
  void Name(const TestPath& path);
  void Unname(const TestPath& path);
  bool FindsTheSame(const TestPath& path);
  bool WroteAsForetold(const TestPath& path);

  TextSink realWarn_;
  TextSink realDebug_;
  TextSink plainWarn_;
  TextSink plainDebug_;
  std::string realRoot_;
  std::string plainRoot_;
  RootMessages root_;
  DU::ShadowingCalculator real_;
  Reference::PlainShadowingCalculator plain_;
  JudgedPaths checked_;
  int pathsInState_ = 0;  // since the last run or change of tolerances
  DU::LightPathCalculator realPath_;
  DU::LightPathCalculator plainPath_;
  DU::eShadowingComponent blocking_ = DU::eShadowingComponent::kNone;
  int outcome_ = 0;
  bool threw_ = false;
  std::string difference_;
};

}  // namespace ZARN::Testing

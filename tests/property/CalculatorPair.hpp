#pragma once

#include <string>

#include "du/ShadowingCalculator.hpp"
#include "du/fast/ShadowingLayers.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "log/Log.hpp"
#include "tests/property/Batches.hpp"
#include "tests/property/Explanations.hpp"
#include "tests/property/Paths.hpp"
#include "tests/property/RootMessages.hpp"
#include "tests/property/TextSink.hpp"
#include "tests/reference/PlainShadowingCalculator.hpp"

namespace ZARN::Testing {

/// The real calculator and the plain one, with the same input.
///
/// Every call compares everything that is visible from outside: the result, the
/// flags, messages to ZARN::warn and ZARN::debug, warnings of ROOT, and the
/// type names of the path afterwards. During its lifetime a pair owns the
/// outputs of the log streams and the handler of ROOT.
class CalculatorPair {
 public:
  CalculatorPair();
  CalculatorPair(const CalculatorPair&) = delete;
  CalculatorPair& operator=(const CalculatorPair&) = delete;
  ~CalculatorPair();

  void SwitchDebug(bool on);
  void SetAllGeometryTolerances(double tolerance);

  /// How the real calculator is replaced, which must make no difference.
  enum class eReplacement {
    kCopy,         ///< by a copy of it
    kAssigned,     ///< by a copy, after its tolerances were changed
    kMoved,        ///< moved away, and back into a new one
    kMovedAndBack  ///< moved away, and back into itself
  };
  void Replace(eReplacement replacement);
  void UseLayers(const DU::ShadowingLayers& layers);

  /// @return whether both did the same, which may be to throw; if not,
  ///         Difference() says what differs
  bool BeginOfRun();

  /// Whether the last BeginOfRun threw.
  bool Threw() const { return threw_; }

  /// Make both calculators throw when they write a message.
  ///
  /// @param text  part of the message; empty: never throw
  void ThrowAt(const std::string& text);

  /// Let both judge a path, and the real one also by FindShadowing if the type
  /// of the path has its default name. FindShadowing must write nothing, and
  /// WritesMessages must predict whether CheckForShadowing writes.
  ///
  /// @return whether both did the same; if not, Difference() says what differs
  bool Check(const TestPath& path);

  /// Let the real calculator judge again all paths with default names that
  /// Check has seen since the last run or change of tolerances: by single calls
  /// and as batches. It must write nothing.
  ///
  /// @return whether it judged them as before; if not, Difference() says what
  ///         differs
  bool CheckBatches();
  const JudgedPaths& Checked() const { return checked_; }

  /// Whether the real calculator has written nothing since the last Check; if
  /// not, Difference() says what.
  bool WroteNothing(const char* what);
  const DU::ShadowingCalculator& Real() const { return real_; }

  /// Compare the explanation and the critical tolerances of the path of the
  /// last Check, if its type has its default name, with the plain calculator.
  /// Nothing must be written.
  ///
  /// @return whether they agree; if not, Difference() says what differs
  bool CheckExplanation(const TestPath& path, ToleranceTally& tally);

  /// The outcome of the last Check as a number that depends on the component
  /// and on the number of debug lines.
  int Outcome() const { return outcome_; }
  DU::eShadowingComponent Blocking() const { return blocking_; }

  /// The last difference. Its text is built only when needed, since nearly all
  /// comparisons agree.
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
  bool WroteAsPredicted(const TestPath& path);

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

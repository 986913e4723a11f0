#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "db/CanonicalJson.hpp"
#include "db/DBErrors.hpp"
#include "db/Fingerprint.hpp"
#include "du/ShadowingCalculator.hpp"
#include "log/Log.hpp"
#include "sql/TableSource.hpp"
#include "tests/property/Detectors.hpp"
#include "tests/property/Paths.hpp"
#include "tests/property/Random.hpp"
#include "tests/property/RootMessages.hpp"
#include "tests/reference/PlainShadowingCalculator.hpp"
#include "tests/sql/StoreTest.hpp"
#include "tests/support/Captured.hpp"

// Random geometries from a database are the same to the last bit, and so are
// the verdicts.

namespace ZARN::Testing {
namespace {

bool AreFinite(const TableField& field) {
  const auto isFinite = [](double number) { return std::isfinite(number); };
  if (const auto* const number = std::get_if<double>(&field)) {
    return isFinite(*number);
  }
  const auto* const numbers = std::get_if<std::vector<double>>(&field);
  return numbers == nullptr ||
         std::all_of(numbers->begin(), numbers->end(), isFinite);
}

/// The entries of random geometries, each valid for one run: its number. Those
/// with numbers that are not finite, which no source has, are left out.
std::vector<std::vector<TableEntry>> MakeGeometries(int count) {
  std::vector<std::vector<TableEntry>> geometries;
  for (std::uint64_t seed = 0; static_cast<int>(geometries.size()) < count;
       ++seed) {
    Random random(seed);
    const int run = static_cast<int>(geometries.size());
    const TableSet tables = MakeDetector(random, 2).tables.AsSet();
    std::vector<TableEntry> entries;
    bool isFinite = true;
    for (const auto& entry : tables.CurrentEntries()) {
      entries.push_back(*entry);
      entries.back().runs = {run, run};
      for (const auto& [name, field] : entry->fields) {
        isFinite = isFinite && AreFinite(field);
      }
    }
    if (isFinite) geometries.push_back(std::move(entries));
  }
  return geometries;
}

/// Whether a run begins.
bool Begins(DU::ShadowingCalculator& calculator, const TableSet& tables) {
  try {
    calculator.BeginOfRun(tables);
  } catch (const DBNotFoundError&) {
    return false;
  } catch (const DBValueError&) {
    return false;
  }
  return true;
}

/// Judges random paths with the tables from memory and from a database, and
/// counts those that are blocked.
class VerdictComparison {
 public:
  void Compare(const TableSet& made, const TableSet& stored, int seed) {
    const Captured captured(warn);
    const RootMessages rootMessages;
    DU::ShadowingCalculator fromMemory;
    DU::ShadowingCalculator fromStore;
    const bool begins = Begins(fromMemory, made);
    ASSERT_EQ(Begins(fromStore, stored), begins);
    if (!begins) return;
    DB& db = DB::Get();
    db.Clear();
    for (const auto& entry : made.CurrentEntries()) db.Add({*entry});
    db.SetRun(made.GetRun());
    std::ostringstream messages;
    Reference::PlainShadowingCalculator plain(messages, messages);
    plain.BeginOfRun();
    Random random(static_cast<std::uint64_t>(seed));
    PathMaker paths(plain, random);
    constexpr int kPaths = 100;
    for (int i = 0; i < kPaths; ++i) {
      const DU::LightPath path = paths.Draw().path;
      const auto verdict = fromMemory.FindShadowing(path);
      ASSERT_EQ(fromStore.FindShadowing(path), verdict);
      if (verdict != DU::eShadowingComponent::kNone) ++blocked_;
    }
  }

  int Blocked() const { return blocked_; }

 private:
  int blocked_ = 0;
};

class StoredTables : public SQL::Testing::StoreTest {};
INSTANTIATE_TEST_SUITE_P(Engines, StoredTables,
                         testing::ValuesIn(SQL::Testing::Engines()),
                         SQL::Testing::NameOfEngine);

TEST_P(StoredTables, AreTheSameBitsAndGiveTheSameVerdicts) {
  constexpr int kGeometries = 200;
  const auto geometries = MakeGeometries(kGeometries);
  std::vector<TableEntry> all;
  for (const auto& entries : geometries) {
    all.insert(all.end(), entries.begin(), entries.end());
  }
  ToImport().Import(all, SQL::Testing::Note(), false);
  TableSet stored;
  LoadTables(stored, {Source(), "", std::nullopt});
  VerdictComparison verdicts;
  for (int run = 0; run < kGeometries && !HasFailure(); ++run) {
    SCOPED_TRACE("geometry " + std::to_string(run));
    TableSet made;
    made.Add(geometries[static_cast<std::size_t>(run)]);
    made.SetRun(run);
    stored.SetRun(run);
    EXPECT_EQ(Fingerprint(stored), Fingerprint(made));
    const auto found = stored.CurrentEntries();
    const auto wanted = made.CurrentEntries();
    ASSERT_EQ(found.size(), wanted.size());
    for (std::size_t i = 0; i < found.size(); ++i) {
      EXPECT_EQ(JsonOfFields(found[i]->fields),
                JsonOfFields(wanted[i]->fields));
    }
    verdicts.Compare(made, stored, run);
  }
  EXPECT_GT(verdicts.Blocked(), 1000);
}

}  // namespace
}  // namespace ZARN::Testing

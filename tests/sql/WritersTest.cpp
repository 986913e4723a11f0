// Several programs at once, and programs that are stopped.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tests/sql/StoreTest.hpp"

namespace ZARN::SQL {
namespace {

using Testing::Entry;
using Testing::Note;

constexpr int kEntries = 7;  // of one import

std::vector<TableEntry> EntriesOf(int writer, int import) {
  std::vector<TableEntry> entries;
  for (int i = 0; i < kEntries; ++i) {
    entries.push_back(Entry("W" + std::to_string(writer),
                            std::to_string(import) + "-" + std::to_string(i),
                            i));
  }
  return entries;
}

/// The status of a child process that does this.
template <class Work>
int StatusOfChild(const Work& work) {
  const pid_t child = fork();
  if (child == 0) {
    try {
      work();
      _exit(0);
    } catch (const std::exception& error) {
      std::ofstream("child.txt") << error.what();
      _exit(1);
    }
  }
  int status = 0;
  waitpid(child, &status, 0);
  return status;
}

class WritersTest : public Testing::StoreTest {
 protected:
  void ImportMany(int writer, int imports) const {
    for (int import = 0; import < imports; ++import) {
      ToImport().Import(EntriesOf(writer, import), Note(), false);
    }
  }

  void ExpectImports(int imports) const {
    const auto found = ToRead().Imports();
    EXPECT_EQ(found.size(), static_cast<std::size_t>(imports));
    long long number = 0;
    std::string time;
    for (const Import& import : found) {
      EXPECT_EQ(import.number, ++number);
      EXPECT_LT(time, import.time);
      EXPECT_EQ(import.entries, static_cast<std::size_t>(kEntries));
      time = import.time;
    }
    const auto entries = ToRead().Read({});
    EXPECT_EQ(entries.size(), static_cast<std::size_t>(imports * kEntries));
  }
};

INSTANTIATE_TEST_SUITE_P(Engines, WritersTest,
                         testing::ValuesIn(Testing::Engines()),
                         Testing::NameOfEngine);

TEST_P(WritersTest, WaitForEachOtherAsThreads) {
  constexpr int kImports = 10;
  // The first of them makes the tables.
  std::vector<std::thread> writers;
  writers.reserve(3);
  for (int writer = 0; writer < 3; ++writer) {
    writers.emplace_back([this, writer] { ImportMany(writer, kImports); });
  }
  for (std::thread& writer : writers) writer.join();
  ExpectImports(3 * kImports);
}

TEST_P(WritersTest, WaitForEachOtherAsProcesses) {
  constexpr int kImports = 10;
  std::vector<pid_t> writers;
  for (int writer = 0; writer < 3; ++writer) {
    const pid_t child = fork();
    if (child == 0) {
      try {
        ImportMany(writer, kImports);
        _exit(0);
      } catch (const std::exception&) {
        _exit(1);
      }
    }
    writers.push_back(child);
  }
  for (const pid_t writer : writers) {
    int status = -1;
    waitpid(writer, &status, 0);
    EXPECT_EQ(status, 0);
  }
  ExpectImports(3 * kImports);
}

TEST_P(WritersTest, OfTheSameImportAddItOnce) {
  ToImport();
  std::atomic<int> added{0};
  std::vector<std::thread> writers;
  writers.reserve(4);
  for (int writer = 0; writer < 4; ++writer) {
    writers.emplace_back([&] {
      if (ToImport().Import(EntriesOf(0, 0), Note(), false).import) ++added;
    });
  }
  for (std::thread& writer : writers) writer.join();
  EXPECT_EQ(added, 1);
  ExpectImports(1);
}

TEST_P(WritersTest, ShowReadersWholeImportsOnly) {
  constexpr int kImports = 20;
  ToImport();
  std::atomic<bool> isDone{false};
  std::thread writer([&] {
    ImportMany(0, kImports);
    isDone = true;
  });
  std::set<std::size_t> sizes;
  while (!isDone) {
    const std::size_t size = ToRead().Read({}).size();
    EXPECT_EQ(size % kEntries, 0U);
    sizes.insert(size);
  }
  writer.join();
  EXPECT_GT(sizes.size(), 1U);
  ExpectImports(kImports);
}

TEST_P(WritersTest, DoNotStopReadersBeforeTheirEnd) {
  ToImport().Import(EntriesOf(0, 0), Note(), false);
  soci::session other = Past();
  other << (IsServer() ? "BEGIN" : "BEGIN IMMEDIATE");
  other << "INSERT INTO zarn_import VALUES (2, '2999', '', '', '')";
  EXPECT_EQ(ToRead().Imports().size(), 1U);
  other << "COMMIT";
  EXPECT_EQ(ToRead().Imports().size(), 2U);
}

class FileWritersTest : public ZARN::Testing::InFolder {
 protected:
  static constexpr const char* kSource = "sqlite:tables.db";

  static void Import(const std::vector<TableEntry>& entries) {
    TableStore::OpenToImport(kSource).Import(entries, Note(), false);
  }
  static std::size_t Read() {
    return TableStore::OpenToRead(kSource).Read({}).size();
  }

  static TableEntry Large() {
    TableEntry entry = Entry("L", "large", 1.0);
    entry.fields["x"] = std::vector<double>(100000, 1.0 / 3.0);
    return entry;
  }

  /// Leave a journal as a writer that was killed does.
  static int KillWriter() {
    return StatusOfChild([] {
      soci::session session(soci::sqlite3, "tables.db");
      session << "PRAGMA cache_size = 5";
      session << "BEGIN IMMEDIATE";
      const std::string text(1000000, 'x');
      session << "INSERT INTO zarn_entry VALUES (99, 1, 'K', 'k', 0, NULL, "
                 "NULL, :text)",
          soci::use(text);
      static_cast<void>(raise(SIGKILL));
    });
  }

  /// As a user who may not write here.
  template <class Work>
  static int StatusOfReader(const Work& work) {
    namespace fs = std::filesystem;
    constexpr auto kReadOnly =
        fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read;
    constexpr auto kEnter =
        fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec;
    Put("child.txt", "");
    fs::permissions("child.txt", fs::perms::all);
    fs::permissions("tables.db", kReadOnly);
    if (fs::exists("tables.db-journal")) {
      fs::permissions("tables.db-journal", kReadOnly);
    }
    fs::permissions(".", kReadOnly | kEnter);
    const int status = StatusOfChild([&] {
      constexpr uid_t kNobody = 65534;
      if (geteuid() == 0 && setuid(kNobody) != 0) _exit(2);
      work();
    });
    fs::permissions(".", fs::perms::owner_all);
    return status;
  }
};

TEST_F(FileWritersTest, LeaveNothingHalfWhenKilled) {
  Import(EntriesOf(0, 0));
  const int status = KillWriter();
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_TRUE(std::filesystem::exists("tables.db-journal"));
  EXPECT_EQ(Read(), static_cast<std::size_t>(kEntries));
  Import(EntriesOf(0, 1));
  EXPECT_EQ(Read(), 2U * kEntries);
}

TEST_F(FileWritersTest, LeaveAJournalThatNeedsPermission) {
  Import(EntriesOf(0, 0));
  KillWriter();
  EXPECT_NE(StatusOfReader([] { Read(); }), 0);
  EXPECT_EQ(
      Text("child.txt")
          .rfind("sqlite:tables.db: an import was interrupted; zarn-shadow "
                 "tables list, by a user with write permission, undoes it",
                 0),
      0U)
      << Text("child.txt");
}

TEST_F(FileWritersTest, AreNotNeededForReading) {
  Import(EntriesOf(0, 0));
  const std::string before = Text("tables.db");
  EXPECT_EQ(StatusOfReader([] {
              if (Read() != kEntries) throw std::runtime_error("wrong");
            }),
            0)
      << Text("child.txt");
  EXPECT_EQ(Text("tables.db"), before);
}

TEST_F(FileWritersTest, NeedWritePermission) {
  Import(EntriesOf(0, 0));
  EXPECT_NE(StatusOfReader([] { Import(EntriesOf(0, 1)); }), 0);
  EXPECT_NE(Text("child.txt").find("an import needs write permission"),
            std::string::npos)
      << Text("child.txt");
}

TEST_F(FileWritersTest, LeaveNothingHalfOnAFullDisk) {
  Import(EntriesOf(0, 0));
  const std::string before = Text("tables.db");
  // The import needs 2 MB: it is stopped at its begin, and at its end.
  for (const rlim_t limit : {rlim_t{70'000}, rlim_t{1'900'000}}) {
    const int status = StatusOfChild([limit] {
      static_cast<void>(signal(SIGXFSZ, SIG_IGN));
      const rlimit size = {limit, limit};
      setrlimit(RLIMIT_FSIZE, &size);
      Import({Large()});
    });
    EXPECT_NE(status, 0);
    EXPECT_NE(
        Text("child.txt")
            .find("sqlite:tables.db: the disk is full or cannot be written"),
        std::string::npos)
        << Text("child.txt");
    EXPECT_EQ(Read(), static_cast<std::size_t>(kEntries));
    EXPECT_EQ(Text("tables.db"), before);
  }
  Import({Large()});
  EXPECT_EQ(Read(), kEntries + 1U);
}

}  // namespace
}  // namespace ZARN::SQL

// What only a server has: connections, users, passwords.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "sql/PostgreSQLName.hpp"
#include "tests/sql/StoreTest.hpp"
#include "tests/support/TextOf.hpp"

namespace ZARN::SQL {
namespace {

using Testing::Entry;
using Testing::Note;
using ZARN::Testing::TextOf;

constexpr const char* kPassword = "correct-horse-battery";

std::string TextOfConnection(const std::string& connection) {
  return TextOf<StoreError>([&] { ConnectionToServer(connection); });
}

TEST(ConnectionToServer, TakesKeywordsAndUris) {
  EXPECT_NE(ConnectionToServer("host=db dbname='a b\\'c'")
                .find("dbname='a b\\'c' host='db'"),
            std::string::npos)
      << ConnectionToServer("host=db dbname='a b\\'c'");
  EXPECT_NE(ConnectionToServer("//user@db:5433/a%20b?sslmode=require")
                .find("user='user' dbname='a b' host='db' port='5433'"),
            std::string::npos)
      << ConnectionToServer("//user@db:5433/a%20b?sslmode=require");
}

TEST(ConnectionToServer, RefusesAPasswordWithoutShowingIt) {
  for (const std::string connection :
       {"host=db password=correct-horse", "//user:correct-horse@db/detector",
        "//db/detector?password=correct-horse"}) {
    EXPECT_EQ(
        TextOfConnection(connection),
        "postgresql: the connection has a password, which others could "
        "read in the list of processes; put it into the file ~/.pgpass or "
        "the variable PGPASSWORD");
  }
  EXPECT_NE(TextOfConnection("host=db sslpassword=correct-horse")
                .find("has a sslpassword, which"),
            std::string::npos);
  // The engine's own text would name the second word.
  const std::string unreadable = TextOfConnection("password=correct horse");
  EXPECT_EQ(unreadable.find("horse"), std::string::npos) << unreadable;
  EXPECT_NE(unreadable.find("cannot be read; expected key=value"),
            std::string::npos);
}

TEST(ConnectionToServer, WaitsTenSecondsIfNothingElseIsSaid) {
  EXPECT_NE(ConnectionToServer("host=db").find("connect_timeout='10'"),
            std::string::npos);
  setenv("PGCONNECT_TIMEOUT", "3", 1);
  EXPECT_EQ(ConnectionToServer("host=db").find("connect_timeout"),
            std::string::npos);
  unsetenv("PGCONNECT_TIMEOUT");
}

TEST(ConnectionToServer, NamesAServerThatIsNotThere) {
  const std::string source =
      "postgresql:host=/tmp/zarn-nowhere dbname=detector";
  const std::string said =
      TextOf<StoreError>([&] { TableStore::OpenToRead(source); });
  EXPECT_EQ(said.rfind(source + ": ", 0), 0U) << said;
  EXPECT_NE(said.find("No such file or directory"), std::string::npos);
  EXPECT_EQ(said.find('\n'), std::string::npos);
}

class ServerTest : public Testing::StoreTest {
 protected:
  /// The database as another user.
  std::string SourceAs(const std::string& user) const {
    return Source() + " user=" + user;
  }

  void MakeUser(const std::string& name, const std::string& rights) const {
    const std::string user = name + Schema();
    Execute("DROP ROLE IF EXISTS " + user);
    Execute("CREATE ROLE " + user + " LOGIN");
    Execute("GRANT USAGE ON SCHEMA " + Schema() + " TO " + user);
    Execute("GRANT " + rights + " ON ALL TABLES IN SCHEMA " + Schema() +
            " TO " + user);
  }

  /// End the connections of stores to this test's tables.
  void DropConnections() const {
    Execute(
        "SELECT pg_terminate_backend(pid) FROM pg_stat_activity "
        "WHERE application_name = 'zarn-shadow'");
  }
};

std::vector<std::string> ServerOnly() {
  if (Testing::ServerOfTests() == nullptr) return {};
  return {"postgresql"};
}
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ServerTest);
INSTANTIATE_TEST_SUITE_P(Engines, ServerTest, testing::ValuesIn(ServerOnly()),
                         Testing::NameOfEngine);

TEST_P(ServerTest, NamesADatabaseThatDoesNotExist) {
  const std::string source = Source() + " dbname=nowhere";
  const std::string said =
      TextOf<StoreError>([&] { TableStore::OpenToRead(source); });
  EXPECT_EQ(said.rfind(source + ": ", 0), 0U) << said;
  EXPECT_NE(said.find("database \"nowhere\" does not exist"),
            std::string::npos);
}

TEST_P(ServerTest, TakesThePasswordFromTheEnvironmentAndNeverShowsIt) {
  Execute("DROP ROLE IF EXISTS locked");
  Execute(std::string("CREATE ROLE locked SUPERUSER LOGIN PASSWORD '") +
          kPassword + "'");
  setenv("PGPASSWORD", kPassword, 1);
  TableStore::OpenToImport(SourceAs("locked"));
  const std::string wrong = std::string(kPassword) + "x";
  setenv("PGPASSWORD", wrong.c_str(), 1);
  const std::string said =
      TextOf<StoreError>([&] { TableStore::OpenToRead(SourceAs("locked")); });
  unsetenv("PGPASSWORD");
  EXPECT_NE(said.find("password authentication failed"), std::string::npos);
  EXPECT_EQ(said.find(kPassword), std::string::npos) << said;
  const std::string none =
      TextOf<StoreError>([&] { TableStore::OpenToRead(SourceAs("locked")); });
  EXPECT_NE(none.find("no password supplied"), std::string::npos) << none;
}

TEST_P(ServerTest, NeedsOnlyTheRightToReadForReading) {
  ToImport().Import({Entry("A", "x", 1.0)}, Note(), false);
  MakeUser("reader", "SELECT");
  const std::string source = SourceAs("reader" + Schema());
  EXPECT_EQ(TableStore::OpenToRead(source).Read({}).size(), 1U);
  EXPECT_EQ(TableStore::OpenToRead(source).History().size(), 1U);
  const std::string said = TextOf<StoreError>([&] {
    TableStore::OpenToImport(source).Import({Entry("A", "y", 1.0)}, Note(),
                                            false);
  });
  EXPECT_EQ(
      said.rfind(source + ": ERROR: permission denied for table zarn_", 0), 0U)
      << said;
  EXPECT_EQ(Count("zarn_import"), 1);
}

TEST_P(ServerTest, NeedsNoRightToChangeEntriesForImporting) {
  ToImport().Import({Entry("A", "x", 1.0)}, Note(), false);
  MakeUser("importer", "SELECT, INSERT");
  TableStore::OpenToImport(SourceAs("importer" + Schema()))
      .Import({Entry("A", "y", 1.0)}, Note(), false);
  EXPECT_EQ(Count("zarn_entry"), 2);
}

TEST_P(ServerTest, LeavesNothingHalfIfTheConnectionDrops) {
  ToImport().Import({Entry("A", "x", 1.0)}, Note(), false);
  std::string said;
  {
    // Holds the import after its entries, before their states.
    soci::session other = Past();
    other << "BEGIN";
    other << "LOCK TABLE zarn_state IN ACCESS EXCLUSIVE MODE";
    std::thread import([&] {
      said = TextOf<StoreError>([&] {
        ToImport().Import({Entry("A", "y", 1.0), Entry("A", "z", 2.0)}, Note(),
                          false);
      });
    });
    int waiting = 0;
    while (waiting == 0) {
      Past() << "SELECT count(*) FROM pg_stat_activity WHERE wait_event_type = "
                "'Lock' AND query LIKE 'INSERT INTO zarn_state%'",
          soci::into(waiting);
    }
    DropConnections();
    import.join();
    other << "ROLLBACK";
  }
  EXPECT_EQ(said.rfind(Source() + ": ", 0), 0U) << said;
  EXPECT_EQ(said.find("not known"), std::string::npos) << said;
  EXPECT_EQ(Count("zarn_import"), 1);
  EXPECT_EQ(Count("zarn_entry"), 1);
  ToImport().Import({Entry("A", "y", 1.0)}, Note(), false);
  EXPECT_EQ(ToRead().Read({}).size(), 2U);
}

TEST_P(ServerTest, SaysThatItDoesNotKnowIfTheConnectionDropsAtTheEnd) {
  TableStore store = ToImport();
  Execute(
      "CREATE FUNCTION drop_connection() RETURNS trigger LANGUAGE plpgsql AS "
      "'BEGIN PERFORM pg_terminate_backend(pg_backend_pid()); RETURN NULL; "
      "END'");
  Execute(
      "CREATE CONSTRAINT TRIGGER at_commit AFTER INSERT ON zarn_import "
      "DEFERRABLE INITIALLY DEFERRED FOR EACH ROW EXECUTE FUNCTION "
      "drop_connection()");
  const std::string said = TextOf<StoreError>(
      [&] { store.Import({Entry("A", "x", 1.0)}, Note(), false); });
  EXPECT_NE(said.find("it is not known whether the import stands: look with "
                      "zarn-shadow tables history"),
            std::string::npos)
      << said;
  EXPECT_EQ(Count("zarn_entry"), 0);
}

TEST_P(ServerTest, NamesALostConnection) {
  TableStore store = ToImport();
  DropConnections();
  const std::string said = TextOf<StoreError>([&] { store.Read({}); });
  EXPECT_EQ(said.rfind(Source() + ": ", 0), 0U) << said;
}

}  // namespace
}  // namespace ZARN::SQL

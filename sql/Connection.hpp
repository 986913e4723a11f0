#pragma once

#include <soci/soci.h>

#include <string>

#include "sql/TableStore.hpp"

namespace ZARN::SQL {

enum class eEngine { kSQLite, kPostgreSQL };
enum class eAccess { kRead, kImport };

/// A connection to a database. Work on it goes through Run, which turns the
/// errors of SOCI into StoreError.
class Connection {
 public:
  /// @throws StoreError
  Connection(std::string source, eAccess access);

  const std::string& Source() const { return source_; }
  eEngine Engine() const { return engine_; }

  /// What work(session) returns.
  ///
  /// @throws StoreError naming the database and what its engine says;
  ///         WriteError in an import, unless the database is damaged
  template <class Work>
  auto Run(const Work& work) {
    try {
      return work(session_);
    } catch (const soci::soci_error& error) {
      Refuse(error);
    }
  }

  /// Execute one statement that has no values.
  void Execute(const std::string& statement);

  /// Whether the server can still be reached.
  bool IsAlive();

  /// @throws StoreError naming the database and @p reason
  [[noreturn]] void Refuse(const std::string& reason) const;

 private:
  void OpenFile();
  void OpenServer();
  [[noreturn]] void Refuse(const soci::soci_error& error) const;

  std::string source_;
  eAccess access_;
  eEngine engine_;
  bool isOpen_ = false;
  soci::session session_;
};

/// A transaction on a connection: all of its work or nothing.
class Transaction {
 public:
  /// Begin. One that imports waits until no other program imports; what this
  /// one then reads no other one changes. One that reads sees one state.
  Transaction(Connection& connection, eAccess access);
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  /// Undo everything, unless Commit returned.
  ~Transaction();

  void Commit();

 private:
  Connection& connection_;
  bool isOpen_ = true;
};

}  // namespace ZARN::SQL

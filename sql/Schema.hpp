#pragma once

#include "sql/Connection.hpp"

namespace ZARN::SQL {

// Version 1
//   zarn_schema  version
//   zarn_import  id, time, author, reason, source
//   zarn_entry   id, import_id, table_name, index_name, pass, first_run,
//                last_run (NULL: no limit), fields (FieldsText.hpp)
// Version 2
//   zarn_state   import_id, first_run, last_run, fingerprint: the tables as the
//                import left them, for the runs of its entries (States.hpp)
constexpr int kSchemaVersion = 2;

/// The version of the schema.
///
/// @throws StoreError if this program does not know it
int ReadSchemaVersion(Connection& connection);

/// Require a database of tables, undamaged as far as its engine tells, with a
/// schema that this program can read.
///
/// @return its version
/// @throws StoreError
int RequireSchema(Connection& connection);

/// Make the schema where there is none, or bring an older one up to date, in
/// one transaction.
///
/// @return the version before: 0 if there was none
/// @throws StoreError also for a database of another program
int MakeSchema(Connection& connection);

}  // namespace ZARN::SQL

#pragma once

#include <string>

namespace ZARN::SQL {

/// The connection of SOCI to a PostgreSQL server.
///
/// @param connection  what follows "postgresql:": "key=value ..." or
///                    "//host/dbname"
/// @throws StoreError for text that libpq cannot read, and for a password. Then
///         the connection is not in the message.
std::string ConnectionToServer(const std::string& connection);

}  // namespace ZARN::SQL

#include "sql/PostgreSQLName.hpp"

#include <libpq-fe.h>

#include <cstdlib>
#include <memory>
#include <string_view>

#include "sql/TableStore.hpp"

namespace ZARN::SQL {
namespace {

struct FreeOptions {
  void operator()(PQconninfoOption* options) const { PQconninfoFree(options); }
};

using Options = std::unique_ptr<PQconninfoOption[], FreeOptions>;

Options ParseConnection(const std::string& connection) {
  const bool isUri = connection.rfind("//", 0) == 0;
  const std::string text = isUri ? "postgresql:" + connection : connection;
  char* problem = nullptr;
  Options options(PQconninfoParse(text.c_str(), &problem));
  // The problem can quote a part of a password.
  PQfreemem(problem);
  if (options != nullptr) return options;
  throw StoreError(
      "postgresql: the connection cannot be read; expected key=value ... as in "
      "postgresql:\"host=db.example.org dbname=detector\", or a URI as in "
      "postgresql://db.example.org/detector");
}

std::string Quoted(std::string_view value) {
  std::string text = "'";
  for (const char c : value) {
    if (c == '\'' || c == '\\') text += '\\';
    text += c;
  }
  return text + "'";
}

[[noreturn]] void RefuseSecret(const std::string& keyword) {
  const std::string place =
      keyword == "password"
          ? "the file ~/.pgpass or the variable PGPASSWORD"
          : "the file ~/.pg_service.conf, and service=NAME here";
  throw StoreError("postgresql: the connection has a " + keyword +
                   ", which others could read in the list of processes; put it "
                   "into " +
                   place);
}

}  // namespace

std::string ConnectionToServer(const std::string& connection) {
  std::string text = "fallback_application_name='zarn-shadow'";
  // A server that does not answer must not let the program hang. What is given
  // comes later and replaces this.
  if (std::getenv("PGCONNECT_TIMEOUT") == nullptr) {
    text += " connect_timeout='10'";
  }
  const Options options = ParseConnection(connection);
  for (const auto* option = options.get(); option->keyword != nullptr;
       ++option) {
    if (option->val == nullptr) continue;
    // How libpq marks what a dialogue must not show.
    if (std::string_view(option->dispchar) == "*") {
      RefuseSecret(option->keyword);
    }
    text += std::string(" ") + option->keyword + "=" + Quoted(option->val);
  }
  return text + " client_encoding='UTF8'";
}

}  // namespace ZARN::SQL

#include "app/AuthorFromSystem.hpp"

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace ZARN::App {
namespace {

std::string NameOfHost() {
  std::array<char, 256> name{};
  if (gethostname(name.data(), name.size() - 1) != 0) return "localhost";
  return name.data();
}

}  // namespace

std::string AuthorFromSystem() {
  // No other thread asks: the command reads its arguments.
  // NOLINTNEXTLINE(concurrency-mt-unsafe)
  const passwd* const account = getpwuid(geteuid());
  // An account that has no name, as in a container, still has a number.
  const std::string login =
      account != nullptr ? account->pw_name : std::to_string(geteuid());
  std::string name = account != nullptr ? account->pw_gecos : "";
  name = name.substr(0, name.find(','));  // offices and telephones follow
  // NOLINTNEXTLINE(concurrency-mt-unsafe)
  const char* const email = std::getenv("EMAIL");
  const bool hasEmail = email != nullptr && *email != '\0';
  return (name.empty() ? login : name) + " <" +
         (hasEmail ? email : login + "@" + NameOfHost()) + ">";
}

}  // namespace ZARN::App

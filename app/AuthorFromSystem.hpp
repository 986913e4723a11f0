#pragma once

#include <string>

namespace ZARN::App {

/// Who uses this account: "Ada Lovelace <ada@example.org>" with the full name
/// of the account, or its login name, and the address in the environment
/// variable EMAIL, or without one login and host.
std::string AuthorFromSystem();

}  // namespace ZARN::App

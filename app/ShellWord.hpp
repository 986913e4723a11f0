#pragma once

#include <string>

namespace ZARN::App {

/// An argument as a shell takes it, in quotation marks where it needs them, for
/// commands that a message suggests.
std::string ShellWord(const std::string& text);

}  // namespace ZARN::App

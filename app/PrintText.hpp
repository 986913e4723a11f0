#pragma once

#include <string>

namespace ZARN::App {

/// Write a text to standard output.
///
/// @throws as IO::OutputFile
void PrintText(const std::string& text);

}  // namespace ZARN::App

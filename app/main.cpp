#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>

#include "app/ExitStatus.hpp"
#include "app/RunCommand.hpp"
#include "app/Signals.hpp"
#include "app/Usage.hpp"
#include "db/DBErrors.hpp"
#include "io/Errors.hpp"
#include "io/OutputFile.hpp"
#include "sql/TableStore.hpp"

namespace {

constexpr int kOutputFailed = 1;
constexpr int kBadUsageOrInput = 2;

int Complain(const std::string& text, int status) {
  std::cerr << "zarn-shadow: " << text << "\n";
  return status;
}

/// Keep a file that is opened later from getting the descriptor of a standard
/// stream that the caller closed: messages would be written into the file. The
/// placeholder is read-only.
void FillStandardDescriptors() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) == -1) open("/dev/null", O_RDONLY);
  }
}

}  // namespace

int main(int argc, char** argv) {
  FillStandardDescriptors();
  ZARN::App::HandleSignals();
  try {
    ZARN::App::RunCommand(argc, argv);
    return 0;
  } catch (const ZARN::App::BadUsage& error) {
    return Complain(error.what(), kBadUsageOrInput);
  } catch (const ZARN::IO::BadInput& error) {
    return Complain(error.what(), kBadUsageOrInput);
  } catch (const ZARN::TableFileError& error) {
    return Complain(error.what(), kBadUsageOrInput);
  } catch (const ZARN::SQL::WriteError& error) {
    return Complain(error.what(), kOutputFailed);
  } catch (const ZARN::SQL::StoreError& error) {
    return Complain(error.what(), kBadUsageOrInput);
  } catch (const ZARN::SQL::ImportRefused& error) {
    return Complain(error.what(), kBadUsageOrInput);
  } catch (const std::invalid_argument& error) {  // a time in --as-of
    return Complain(error.what(), kBadUsageOrInput);
  } catch (const ZARN::App::Ended& ended) {
    return ended.Status();
  } catch (const ZARN::App::Interrupted& error) {
    return Complain(error.what(), ZARN::App::StatusOfSignal(error.Signal()));
  } catch (const ZARN::IO::ClosedPipe&) {
    return ZARN::App::StatusOfSignal(SIGPIPE);  // silent, like other tools
  } catch (const std::exception& error) {
    return Complain(error.what(), kOutputFailed);
  }
}

#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>

namespace {

std::string OutputOnATerminal() {
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) {
    execl(ZARN_PRINT_COLOURS, ZARN_PRINT_COLOURS, nullptr);
    _exit(127);
  }
  std::string output;
  char buffer[256];
  for (ssize_t count = 0;
       (count = read(terminal, buffer, sizeof buffer)) > 0;) {
    output.append(buffer, static_cast<std::size_t>(count));
  }
  close(terminal);
  waitpid(child, nullptr, 0);
  return output;
}

std::string OutputOnAPipe() {
  // NOLINTNEXTLINE(cert-env33-c): a program of this build, by its full path
  FILE* const pipe = popen(ZARN_PRINT_COLOURS, "r");
  std::string output;
  for (int c = 0; (c = std::fgetc(pipe)) != EOF;) {
    output += static_cast<char>(c);
  }
  pclose(pipe);
  return output;
}

TEST(Colours, AreEscapeSequencesOnATerminal) {
  EXPECT_EQ(OutputOnATerminal(),
            "\033[30m,\033[30;1m,\033[31m,\033[31;1m,\033[32m,\033[32;1m,"
            "\033[33m,\033[33;1m,\033[34m,\033[34;1m,\033[35m,\033[35;1m,"
            "\033[36m,\033[36;1m,\033[37m,\033[37;1m,\033[m,");
}

TEST(Colours, AreEmptyOnAPipe) {
  EXPECT_EQ(OutputOnAPipe(), ",,,,,,,,,,,,,,,,,");
}

}  // namespace

#include "platform/child_process.h"

#ifndef _WIN32

#include <csignal>
#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

// Runs a shell script; the channel is its $0.
child_end run_script(const std::string& script, std::string* printed = nullptr) {
  return run_child("/bin/sh", {"-c", script}, [&](std::string_view bytes) {
    if (printed) *printed += bytes;
  });
}

TEST(ChildProcess, HandsOnStandardOutputByteForByte) {
  std::string printed;
  run_script("printf 'a\\0b\\n\\r\\nend'", &printed);
  EXPECT_EQ(printed, std::string("a\0b\n\r\nend", 9));
}

TEST(ChildProcess, HandsOnMoreThanAPipeHolds) {
  std::string printed;
  run_script("head -c 300000 /dev/zero", &printed);
  EXPECT_EQ(printed, std::string(300000, '\0'));
}

TEST(ChildProcess, TellsTheExitCode) {
  const child_end end = run_script("exit 7");
  EXPECT_EQ(end.how, child_end::kind::exited);
  EXPECT_EQ(end.code, 7);
  EXPECT_FALSE(end.interrupted);
}

TEST(ChildProcess, TellsTheSignalThatEndedTheChild) {
  const child_end end = run_script("kill -KILL $$");
  EXPECT_EQ(end.how, child_end::kind::killed);
  EXPECT_EQ(end.code, 128 + SIGKILL);
  EXPECT_EQ(end.words.substr(0, 8), "signal 9");
}

TEST(ChildProcess, TellsWhyAProgramCantStart) {
  const child_end end = run_child("/nowhere/program", {}, [](std::string_view) {});
  EXPECT_EQ(end.how, child_end::kind::not_started);
  EXPECT_EQ(end.words, "No such file or directory");
}

TEST(ChildProcess, BringsTheReplyBackApartFromTheOutput) {
  std::string printed;
  const child_end end =
      run_script("echo before; printf 'x\\0y' > /proc/self/fd/$0; echo behind", &printed);
  EXPECT_EQ(end.reply, std::string("x\0y", 3));
  EXPECT_EQ(printed, "before\nbehind\n");
}

TEST(ChildProcess, HandsARequestToEndOnAndLivesOn) {
  const child_end end = run_script("kill -TERM $PPID; exec sleep 20");
  EXPECT_EQ(end.how, child_end::kind::killed);
  EXPECT_EQ(end.code, 128 + SIGTERM);
  EXPECT_TRUE(end.interrupted);
}

TEST(ChildProcess, GivesTheSignalsBackAfterwards) {
  run_script("exit 0");
  struct sigaction now = {};
  sigaction(SIGTERM, nullptr, &now);
  EXPECT_EQ(now.sa_handler, SIG_DFL);
}

TEST(ChildProcess, LeavesAnIgnoredRequestIgnored) {
  const auto before = std::signal(SIGHUP, SIG_IGN);
  const child_end end = run_script("kill -HUP $PPID; kill -HUP $$; exit 3");
  std::signal(SIGHUP, before);
  EXPECT_EQ(end.how, child_end::kind::exited);
  EXPECT_EQ(end.code, 3);
  EXPECT_FALSE(end.interrupted);
}

// How many descriptors a program that the shell starts finds open.
int open_in_plain_child() {
  int count = 0;
  FILE* printed = popen("ls /proc/self/fd | wc -l", "r");
  EXPECT_EQ(std::fscanf(printed, "%d", &count), 1);
  pclose(printed);
  return count;
}

TEST(ChildProcess, OpensNothingButTheChannelForTheChild) {
  if (!std::filesystem::is_directory("/proc/self/fd")) GTEST_SKIP() << "no /proc";
  std::string printed;
  run_script("ls /proc/self/fd | wc -l", &printed);
  EXPECT_EQ(std::stoi(printed), open_in_plain_child() + 1);
}

TEST(SendReply, RefusesAChannelThatIsNone) {
  EXPECT_FALSE(send_reply("", "x"));
  EXPECT_FALSE(send_reply("3x", "x"));
  EXPECT_FALSE(send_reply("-1", "x"));
  EXPECT_FALSE(send_reply("999999", "x"));
}

TEST(OwnProgram, IsAFileThatIsThere) {
  EXPECT_TRUE(std::filesystem::is_regular_file(own_program()));
}

}  // namespace
}  // namespace ocpan

#endif

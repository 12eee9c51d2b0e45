#include "platform/child_process.h"

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#endif

namespace ocpan {
namespace {

#ifndef _WIN32

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

#else

// Runs one of the disabled tests below in a process of its own, this same program. Gives
// what it prints behind the line with which every test program starts.
child_end run_part(const std::string& part, std::string* printed = nullptr) {
  std::string all;
  const child_end end = run_child(own_program(),
                                  {"--gtest_brief=1", "--gtest_also_run_disabled_tests",
                                   "--gtest_filter=ChildPart.DISABLED_" + part},
                                  [&](std::string_view bytes) { all += bytes; });
  if (printed) *printed = all.substr(all.find('\n') + 1);
  return end;
}

// Ends the child here, before anything else is printed.
[[noreturn]] void end_child(unsigned code) {
  std::fflush(stdout);
  TerminateProcess(GetCurrentProcess(), code);
  std::abort();
}

TEST(ChildPart, DISABLED_PrintsLines) {
  std::fputs("one\ntwo\n", stdout);
  end_child(0);
}

TEST(ChildPart, DISABLED_PrintsALot) {
  std::fputs(std::string(300000, 'x').c_str(), stdout);
  end_child(0);
}

TEST(ChildPart, DISABLED_ExitsWithSeven) { end_child(7); }

TEST(ChildPart, DISABLED_Crashes) { end_child(EXCEPTION_ACCESS_VIOLATION); }

TEST(ChildPart, DISABLED_Replies) {
  std::fputs("before\n", stdout);
  const bool sent =
      send_reply(::testing::internal::GetArgvs().back(), std::string_view("x\0y\n", 4));
  end_child(sent ? 0 : 1);
}

TEST(ChildProcess, HandsOnStandardOutputWithPlainLineEnds) {
  std::string printed;
  run_part("PrintsLines", &printed);
  EXPECT_EQ(printed, "one\ntwo\n");
}

TEST(ChildProcess, HandsOnMoreThanAPipeHolds) {
  std::string printed;
  run_part("PrintsALot", &printed);
  EXPECT_EQ(printed, std::string(300000, 'x'));
}

TEST(ChildProcess, TellsTheExitCode) {
  const child_end end = run_part("ExitsWithSeven");
  EXPECT_EQ(end.how, child_end::kind::exited);
  EXPECT_EQ(end.code, 7);
  EXPECT_EQ(end.words, "exit code 7");
  EXPECT_FALSE(end.interrupted);
}

TEST(ChildProcess, TellsTheCrashThatEndedTheChild) {
  const child_end end = run_part("Crashes");
  EXPECT_EQ(end.how, child_end::kind::killed);
  EXPECT_EQ(end.words, "exception 0xc0000005");
}

TEST(ChildProcess, TellsWhyAProgramCantStart) {
  const child_end end = run_child("C:\\nowhere\\program.exe", {}, [](std::string_view) {});
  EXPECT_EQ(end.how, child_end::kind::not_started);
  EXPECT_NE(end.words, "");
}

TEST(ChildProcess, BringsTheReplyBackApartFromTheOutput) {
  std::string printed;
  const child_end end = run_part("Replies", &printed);
  EXPECT_EQ(end.code, 0);
  EXPECT_EQ(end.reply, std::string("x\0y\n", 4));
  EXPECT_EQ(printed, "before\n");
}

#endif

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

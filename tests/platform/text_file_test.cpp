#include "platform/text_file.h"

#include <locale>
#include <new>
#include <sstream>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/comma_locale.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::comma_locale;
using testing::read_file;
using testing::read_text;
using testing::temp_folder;
using testing::working_folder;
using testing::write_file;
using strings = std::vector<std::string>;

strings lines_of(const std::string& text) {
  std::istringstream in(text);
  strings lines;
  std::string line;
  while (read_text_line(in, line)) lines.push_back(line);
  return lines;
}

TEST(ReadTextLine, DropsACarriageReturnAheadOfTheNewline) {
  EXPECT_EQ(lines_of("a\r\nb\n\r\n"), (strings{"a", "b", ""}));
}

TEST(ReadTextLine, DropsOneCarriageReturnOnly) { EXPECT_EQ(lines_of("a\r\r\n"), strings{"a\r"}); }

TEST(ReadTextLine, KeepsACarriageReturnElsewhere) {
  EXPECT_EQ(lines_of("a\rb\nc\r"), (strings{"a\rb", "c\r"}));
}

TEST(ReadTextLine, ReadsALastLineWithoutNewline) {
  EXPECT_EQ(lines_of("a\nb"), (strings{"a", "b"}));
}

TEST(ReadTextLine, FindsNoLineInAnEmptyText) { EXPECT_TRUE(lines_of("").empty()); }

TEST(ReadTextLine, KeepsZeroBytes) {
  EXPECT_EQ(lines_of(std::string("a\0b\nc", 5)), (strings{std::string("a\0b", 3), "c"}));
}

// A source of text whose reading ends in an exception.
template <typename Exception>
struct failing_source : std::streambuf {
  int_type underflow() override { throw Exception("no more"); }
};
struct no_memory : std::bad_alloc {
  explicit no_memory(const char*) {}
};

TEST(ReadTextLine, PassesOnThatThereIsNoMemory) {
  failing_source<no_memory> source;
  std::istream in(&source);
  std::string line;
  EXPECT_THROW(read_text_line(in, line), std::bad_alloc);
}

TEST(ReadTextLine, LeavesTheStreamBadWhereReadingFails) {
  failing_source<std::ios::failure> source;
  std::istream in(&source);
  std::string line;
  EXPECT_FALSE(read_text_line(in, line));
  EXPECT_TRUE(in.bad());
  EXPECT_FALSE(read_text_line(in, line));
}

TEST(OpenInput, TakesBackslashes) {
  const working_folder folder;
  std::filesystem::create_directory("inner");
  write_file("inner/a.txt", "text");
  std::ifstream in = open_input("inner\\a.txt");
  std::string line;
  EXPECT_TRUE(read_text_line(in, line));
  EXPECT_EQ(line, "text");
}

TEST(OpenInput, ReadsTextByteForByte) {
  const temp_folder folder;
  write_file(folder.file("a.txt"), "a\r\r\n\x1a b\nc\r");
  std::ifstream in = open_input(folder.file("a.txt"));
  strings lines;
  for (std::string line; read_text_line(in, line);) lines.push_back(line);
  EXPECT_EQ(lines, (strings{"a\r", "\x1a b", "c\r"}));
}

TEST(OpenInput, FailsForAMissingFile) {
  const temp_folder folder;
  EXPECT_FALSE(open_input(folder.file("absent.txt")));
}

TEST(OpenInput, FailsForAFolder) {
  const temp_folder folder;
  EXPECT_FALSE(open_input(folder.path().string()));
}

TEST(OpenInput, ReadsNumbersInTheClassicLocale) {
  const temp_folder folder;
  write_file(folder.file("a.txt"), "1.5");
  const comma_locale elsewhere;
  std::ifstream in = open_input(folder.file("a.txt"));
  double number = 0;
  in >> number;
  EXPECT_EQ(number, 1.5);
}

TEST(OpenOutput, ReplacesWhatWasThere) {
  const temp_folder folder;
  write_file(folder.file("a.txt"), "a longer text");
  std::ofstream out = open_output(folder.file("a.txt"));
  out << "short\n";
  EXPECT_TRUE(finish_output(out, folder.file("a.txt")));
  EXPECT_EQ(read_text(folder.file("a.txt")), "short\n");
}

TEST(OpenOutput, TakesBackslashes) {
  const working_folder folder;
  std::filesystem::create_directory("inner");
  std::ofstream out = open_output("inner\\a.txt");
  out << "text";
  EXPECT_TRUE(finish_output(out, "inner\\a.txt"));
  EXPECT_EQ(read_file("inner/a.txt"), "text");
}

TEST(OpenOutput, WritesNumbersInTheClassicLocale) {
  const temp_folder folder;
  const comma_locale elsewhere;
  std::ofstream out = open_output(folder.file("a.txt"));
  out << 1.5;
  EXPECT_TRUE(finish_output(out, folder.file("a.txt")));
  EXPECT_EQ(read_file(folder.file("a.txt")), "1.5");
}

TEST(OpenOutput, FailsForAFolderAndAMissingFolder) {
  const temp_folder folder;
  EXPECT_FALSE(open_output(folder.path().string()));
  EXPECT_FALSE(open_output(folder.file("absent") + "/a.txt"));
}

TEST(FinishOutput, RemovesABrokenFile) {
  const temp_folder folder;
  std::ofstream out = open_output(folder.file("a.txt"));
  out << "text";
  out.setstate(std::ios::badbit);
  EXPECT_FALSE(finish_output(out, folder.file("a.txt")));
  EXPECT_FALSE(std::filesystem::exists(folder.file("a.txt")));
}

TEST(FinishOutput, LeavesAFileThatWasNeverOpened) {
  const temp_folder folder;
  write_file(folder.file("a.txt"), "of an earlier run");
  std::ofstream out = open_output(folder.file("absent") + "/a.txt");
  ASSERT_FALSE(out);
  EXPECT_FALSE(finish_output(out, folder.file("a.txt")));
  EXPECT_EQ(read_file(folder.file("a.txt")), "of an earlier run");
}

#ifdef _WIN32
TEST(OpenOutput, EndsLinesOfTextAlsoWithACarriageReturn) {
  const temp_folder folder;
  std::ofstream text = open_output(folder.file("a.txt"));
  text << "a\n";
  EXPECT_TRUE(finish_output(text, folder.file("a.txt")));
  EXPECT_EQ(read_file(folder.file("a.txt")), "a\r\n");
  std::ofstream bytes = open_output(folder.file("b.bin"), std::ios::binary);
  bytes << "a\n";
  EXPECT_TRUE(finish_output(bytes, folder.file("b.bin")));
  EXPECT_EQ(read_file(folder.file("b.bin")), "a\n");
}
#endif

#ifdef __linux__
TEST(FinishOutput, SeesAFullDiskAndLeavesTheDevice) {
  std::ofstream out = open_output("/dev/full");
  out << "text";
  ASSERT_TRUE(out.good());  // nothing has left the buffer yet
  EXPECT_FALSE(finish_output(out, "/dev/full"));
  EXPECT_TRUE(std::filesystem::exists("/dev/full"));
}
#endif

}  // namespace
}  // namespace ocpan

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"
#include "tests/tools/guide/source_texts.h"

namespace ocpan {
namespace {

using testing::call_texts;
using testing::calls_in;
using testing::literals_in;
using testing::read_file;

// The folders whose code prints in the library's name.
constexpr const char* folders[] = {"src",      "common",      "model",      "solver",
                                   "calfiles", "calibration", "production", "tables"};

// What prints its arguments, itself or by handing them on.
const std::set<std::string> printing = {"print_line", "print_banner",       "printf", "complain",
                                        "knows",      "ALG_LIB_PrintTrace", "require"};

// Words for whoever builds the library, which it never prints.
const std::set<std::string> never_printed = {
    "planes are written as they lie in memory, and the files are little-endian",
    "entries are written as they lie in memory", "components are written as they lie in memory"};

std::vector<std::string> library_sources() {
  std::vector<std::string> sources;
  for (const char* folder : folders) {
    const auto path = std::filesystem::path(SOURCE_FOLDER) / folder;
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
      const std::string ending = entry.path().extension().string();
      if (ending == ".cpp" || ending == ".h") sources.push_back(entry.path().string());
    }
  }
  std::sort(sources.begin(), sources.end());
  return sources;
}

// One blank for each stretch of them, none at the ends.
std::string with_single_blanks(const std::string& text) {
  std::istringstream words(text);
  std::string single;
  for (std::string word; words >> word;) single += (single.empty() ? "" : " ") + word;
  return single;
}

bool says_something(const std::string& text) {
  return std::any_of(text.begin(), text.end(),
                     [](unsigned char c) { return std::isalnum(c) != 0; });
}

// The stretches of a printed text that always look the same, with single blanks.
std::vector<std::string> fixed_pieces(const std::string& text) {
  static const std::regex changing("%[sd]|\n");
  std::vector<std::string> pieces;
  std::sregex_token_iterator piece(text.begin(), text.end(), changing, -1);
  for (; piece != std::sregex_token_iterator(); ++piece) {
    if (says_something(*piece)) pieces.push_back(with_single_blanks(*piece));
  }
  return pieces;
}

std::string guide() { return read_file(std::string(SOURCE_FOLDER) + "/docs/guide.md"); }

// The first column of the guide's table of messages.
std::vector<std::string> messages_of_guide() {
  std::istringstream lines(guide());
  std::vector<std::string> messages;
  bool in_table = false;
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind("## Every message", 0) == 0) in_table = true;
    if (!in_table || line.rfind("| `", 0) != 0) continue;
    messages.push_back(with_single_blanks(line.substr(2, line.find(" | ") - 2)));
  }
  return messages;
}

// Whether a message holds the pieces one behind the other.
bool holds(const std::string& message, const std::vector<std::string>& pieces) {
  std::size_t at = 0;
  for (const std::string& piece : pieces) {
    at = message.find(piece, at);
    if (at == std::string::npos) return false;
    at += piece.size();
  }
  return true;
}

TEST(Guide, TellsOfEveryTextThatTheLibraryPrints) {
  const std::vector<std::string> messages = messages_of_guide();
  int calls = 0;
  for (const std::string& source : library_sources()) {
    for (const call_texts& call : calls_in(read_file(source), printing)) {
      std::vector<std::string> pieces;
      for (const std::string& text : call.texts) {
        for (std::string& piece : fixed_pieces(text)) pieces.push_back(std::move(piece));
      }
      if (pieces.empty()) continue;
      ++calls;
      EXPECT_TRUE(std::any_of(messages.begin(), messages.end(),
                              [&](const std::string& message) { return holds(message, pieces); }))
          << "docs/guide.md has no row for the " << call.function << " of \"" << pieces.front()
          << "\" in " << source;
    }
  }
  EXPECT_GE(calls, 110);
}

// Also what reaches the screen or a report by a way that the test above doesn't know.
TEST(Guide, KnowsEveryTextOfTheLibrary) {
  const std::string text = with_single_blanks(guide());
  int texts = 0;
  for (const std::string& source : library_sources()) {
    for (const std::string& literal : literals_in(read_file(source))) {
      if (literal.find(' ') == std::string::npos || never_printed.contains(literal)) continue;
      for (std::string piece : fixed_pieces(literal)) {
        const auto first = piece.find_first_not_of("-: ");
        piece = piece.substr(first, piece.find_last_not_of("-: ") + 1 - first);
        ++texts;
        EXPECT_NE(text.find(piece), std::string::npos)
            << "docs/guide.md doesn't tell of \"" << piece << "\" in " << source;
      }
    }
  }
  EXPECT_GE(texts, 180);
}

}  // namespace
}  // namespace ocpan

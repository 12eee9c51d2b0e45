#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/byte_source.h"
#include "fuzz/promise.h"
#include "src/file_patterns.h"
#include "src/result_codes.h"

// The first line of the input is a pattern, the others are names of files.

namespace ocpan::fuzz {
namespace {

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t start = 0; start <= text.size();) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return lines;
}

int must_match_soundly(const std::string& pattern, const std::string& name, bool& matched) {
  const int result = match_pattern(pattern, name, matched);
  must_hold(
      result == code::success || result == code::content_malformed || result == code::logic_failure,
      "a known result");
  must_hold(result == code::success || !matched, "a failure is no match");
  const bool plain = pattern.find_first_of("\\.*+^$()[]") == pattern.npos;
  must_hold(!plain || matched == (pattern == name), "plain text matches itself alone");
  return result;
}

void must_expand_as_it_matches(const std::string& pattern, const std::vector<std::string>& names) {
  std::vector<std::string> expected;
  int expected_result = code::success;
  for (const std::string& name : names) {
    bool matched = false;
    expected_result = must_match_soundly(pattern, name, matched);
    if (expected_result != code::success) break;
    if (matched) expected.push_back("folder\\" + name);
  }
  std::vector<const char*> files;
  string_pool pool;
  const int result = expand_pattern(pattern, "folder\\", names, files, pool);
  must_hold(result == expected_result, "an expansion ends as its matches do");
  const std::vector<std::string> found(files.begin(), files.end());
  must_hold(found == expected, "an expansion gives the names that match");
}

void must_sort(std::vector<std::string> names) {
  const std::vector<std::string> before = names;
  sort_names(names);
  must_hold(std::ranges::is_permutation(names, before), "sorting keeps the names");
  for (std::size_t i = 1; i < names.size(); ++i) {
    must_hold(filename_less(names[i - 1], names[i]), "sorted names stand in order");
  }
}

}  // namespace

void run_patterns(input bytes) {
  std::string text = text_of(bytes);
  std::erase(text, '\0');  // which no name of a file holds
  std::vector<std::string> names = lines_of(text);
  const std::string pattern = names.front();
  names.erase(names.begin());
  must_expand_as_it_matches(pattern, names);
  must_sort(names);
}

}  // namespace ocpan::fuzz

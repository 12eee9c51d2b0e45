#include "src/file_patterns.h"

#include <algorithm>
#include <string_view>

#include "platform/directory_listing.h"
#include "src/console.h"
#include "src/result_codes.h"

namespace ocpan {
namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Plain ASCII, whatever the locale of the process.
unsigned char upper_case(char c) {
  return static_cast<unsigned char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
}

// One element of a pattern with its repeat.
struct element {
  bool any = false;
  bool digit = false;
  char literal = 0;  // where neither any nor digit is set
  bool repeating = false;
  bool at_least_one = false;

  bool fits(char c) const { return digit ? is_digit(c) : c == literal; }
};

std::string with_digit_class_rewritten(std::string pattern) {
  constexpr std::string_view digit_class = "[0-9]";
  const std::size_t found = pattern.find(digit_class);
  if (found != std::string::npos) pattern.replace(found, digit_class.size(), "\\d");
  return pattern;
}

int report_unsupported(const std::string& pattern, char c) {
  print_line("Pattern '", c, "' not supported", c == '[' ? " (except one '[0-9]' occurrence)" : "",
             ".");
  print_line("  Pattern: ", pattern);
  return code::content_malformed;
}

// Reads the element at p and moves p behind it and its repeat.
int read_element(element& next, const std::string& pattern, std::size_t& p) {
  next = element();
  char c = pattern[p];
  if (c == '\\') {
    if (++p == pattern.size()) {
      print_line("Pattern prematurely ended after '\\': ", pattern);
      return code::content_malformed;
    }
    c = pattern[p];
    if (c != 'd' && c != '.') {
      print_line("Unrecognised special character: \\", c, " in pattern: ", pattern);
      return code::content_malformed;
    }
    next.digit = c == 'd';
  } else {
    next.any = c == '.';
  }
  next.literal = c;
  ++p;
  if (p < pattern.size() && pattern[p] == '*') {
    next.repeating = true;
    ++p;
  }
  if (p < pattern.size() && pattern[p] == '+') {
    next.repeating = next.at_least_one = true;
    ++p;
  }
  if (next.any && next.repeating) {
    print_line("'.' wildcard not supported with '+' or '*' in pattern: ", pattern);
    return code::content_malformed;
  }
  return code::success;
}

// What is true once the name or the pattern is used up.
int match_at_end(bool& matched, const std::string& pattern, std::size_t p, const std::string& name,
                 std::size_t s) {
  const bool pattern_ended = p == pattern.size();
  matched = pattern_ended ? s == name.size() : pattern[p] == '$';
  if (matched) return code::success;
  print_line("Unexpected non match case");
  return code::logic_failure;
}

// match_pattern behind the rewriting of the pattern.
int match_rewritten(bool& matched, const std::string& pattern, const std::string& name) {
  matched = false;
  std::size_t p = 0;
  std::size_t s = 0;
  element current;
  while (p < pattern.size() && s < name.size()) {
    if (pattern[p] == '^') {
      if (s != 0) {
        print_line("Pattern '^' not found at beginning of search.");
        print_line("  Pattern: ", pattern);
        print_line("  Search: ", name);
        return code::success;
      }
      if (++p == pattern.size()) {
        print_line("Pattern prematurely ended after '^': ", pattern);
        return code::content_malformed;
      }
    }
    const char c = pattern[p];
    if (c == '$') {
      print_line("Pattern '$' found before end of search.");
      print_line("  Pattern: ", pattern);
      print_line("  Search: ", name);
      print_line(name[s], " ", 0);
      return code::success;
    }
    if (c == '(' || c == ')' || c == '[' || c == ']') return report_unsupported(pattern, c);
    if (current.repeating && current.fits(name[s])) {
      ++s;
      continue;
    }
    if (c == '*' || c == '+') {
      print_line("Internal logic error with ", c);
      return code::logic_failure;
    }
    const int result = read_element(current, pattern, p);
    if (result != code::success) return result;
    if (!current.any && !current.fits(name[s])) {
      if (current.at_least_one || !current.repeating) return code::success;
      current.repeating = false;  // and the character is taken all the same
    }
    ++s;
  }
  return match_at_end(matched, pattern, p, name, s);
}

}  // namespace

int list_directory(const std::string& folder, std::vector<std::string>& names) {
  int error_number = 0;
  if (read_directory(names, error_number, folder)) return code::success;
  print_line("Error(", error_number, ") opening ", folder, "*");
  return code::content_malformed;
}

bool filename_less(const std::string& a, const std::string& b) {
  for (std::size_t i = 0;; ++i) {
    if (i == a.size()) return true;
    if (i == b.size()) return false;
    const bool a_digit = is_digit(a[i]);
    if (a_digit != is_digit(b[i])) return !a_digit;
    const unsigned char a_upper = upper_case(a[i]);
    const unsigned char b_upper = upper_case(b[i]);
    if (a_upper != b_upper) return a_upper < b_upper;
  }
}

void sort_names(std::vector<std::string>& names) {
  std::stable_sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
    return filename_less(a, b) && !filename_less(b, a);
  });
}

int list_sorted(const std::string& folder, std::vector<std::string>& names) {
  const int result = list_directory(folder, names);
  if (result != code::success) return result;
  if (names.empty()) {
    print_line("No files found in: ", folder);
    return code::content_malformed;
  }
  sort_names(names);
  return code::success;
}

int match_pattern(const std::string& pattern, const std::string& name, bool& matched) {
  return match_rewritten(matched, with_digit_class_rewritten(pattern), name);
}

int expand_pattern(const std::string& pattern, const std::string& folder,
                   const std::vector<std::string>& names, std::vector<const char*>& file_list,
                   string_pool& pool) {
  if (!file_list.empty()) {
    print_line("Internal error, file_names should be empty here.");
    return code::logic_failure;
  }
  const std::string rewritten = with_digit_class_rewritten(pattern);
  for (const std::string& name : names) {
    bool matched = false;
    const int result = match_rewritten(matched, rewritten, name);
    if (result != code::success) return result;
    if (!matched) continue;
    pool.push_back(folder + name);
    file_list.push_back(pool.back().c_str());
  }
  return code::success;
}

}  // namespace ocpan

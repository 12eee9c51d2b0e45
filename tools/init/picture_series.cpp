#include "tools/init/picture_series.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <map>
#include <set>
#include <system_error>
#include <utility>

#include "platform/native_path.h"
#include "src/file_patterns.h"
#include "tools/check/words.h"

namespace ocpan {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t least_pictures = 3;
constexpr std::string_view digits = "0123456789";

bool is_picture(const std::string& name) {
  constexpr std::array<std::string_view, 9> endings = {"jpg",  "jpeg", "png",  "bmp", "tif",
                                                       "tiff", "pgm",  "webp", "ppm"};
  const std::size_t dot = name.rfind('.');
  if (dot == name.npos || dot == 0) return false;
  std::string ending = name.substr(dot + 1);
  for (char& c : ending) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return std::find(endings.begin(), endings.end(), ending) != endings.end();
}

// A name as texts and numbers in turn: text, number, text, ..., text.
std::vector<std::string> pieces_of(const std::string& name) {
  std::vector<std::string> pieces;
  std::size_t start = 0;
  const std::size_t end_of_stem = name.rfind('.');
  for (;;) {
    const std::size_t first = name.find_first_of(digits, start);
    if (first >= end_of_stem) break;
    const std::size_t behind = std::min(name.find_first_not_of(digits, first), end_of_stem);
    pieces.push_back(name.substr(start, first - start));
    pieces.push_back(name.substr(first, behind - first));
    start = behind;
  }
  pieces.push_back(name.substr(start));
  return pieces;
}

using pieces = std::vector<std::string>;

// The number with the most values among names of the same texts, the last of equals; an
// index into the pieces.
std::size_t counting_piece(const std::vector<pieces>& names) {
  std::size_t best = 1, most = 0;
  for (std::size_t piece = 1; piece < names.front().size(); piece += 2) {
    std::set<std::string> values;
    for (const pieces& name : names) values.insert(name[piece]);
    if (values.size() >= most) best = piece, most = values.size();
  }
  return best;
}

std::string joined(const pieces& name, std::size_t begin, std::size_t end) {
  std::string text;
  for (std::size_t k = begin; k < end; ++k) text += name[k];
  return text;
}

long long number_in(const std::string& text) {
  long long number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

void add_series(std::vector<picture_series>& series, std::vector<std::string>& lone,
                const std::string& folder, std::vector<std::string> names) {
  sort_names(names);
  std::map<pieces, std::vector<pieces>> by_texts;
  for (const std::string& name : names) {
    const pieces of = pieces_of(name);
    pieces texts;
    for (std::size_t k = 0; k < of.size(); k += 2) texts.push_back(of[k]);
    by_texts[texts].push_back(of);
  }
  for (const auto& [texts, alike] : by_texts) {
    if (texts.size() < 2) {
      for (const pieces& name : alike) lone.push_back(folder + "/" + name.front());
      continue;
    }
    const std::size_t counting = counting_piece(alike);
    std::map<std::pair<std::string, std::string>, picture_series> found;
    for (const pieces& name : alike) {
      const std::string before = joined(name, 0, counting);
      const std::string after = joined(name, counting + 1, name.size());
      picture_series& of = found[{before, after}];
      of.folder = folder;
      of.before = before;
      of.after = after;
      of.names.push_back(before + name[counting] + after);
      of.numbers.push_back(number_in(name[counting]));
    }
    for (const auto& [key, of] : found) {
      if (of.names.size() >= least_pictures) {
        series.push_back(of);
      } else {
        for (const std::string& name : of.names) lone.push_back(folder + "/" + name);
      }
    }
  }
}

}  // namespace

bool find_series(std::vector<picture_series>& series, std::vector<std::string>& lone,
                 const std::string& folder) {
  std::error_code failure;
  const fs::path root = fs::absolute(native_path(folder), failure).lexically_normal();
  if (failure || !fs::is_directory(root, failure)) return false;
  std::map<std::string, std::vector<std::string>> names;  // by folder
  fs::recursive_directory_iterator it(root, fs::directory_options::skip_permission_denied, failure);
  if (failure) return false;
  for (; it != fs::recursive_directory_iterator(); it.increment(failure)) {
    if (failure) break;
    std::error_code gone;
    if (!it->is_regular_file(gone)) continue;
    const std::string name = it->path().filename().string();
    if (!is_picture(name)) continue;
    std::string of = it->path().parent_path().generic_string();
    while (of.size() > 1 && of.ends_with('/')) of.pop_back();
    names[of].push_back(name);
  }
  for (const auto& [of, in_folder] : names) add_series(series, lone, of, in_folder);
  return true;
}

std::string pattern_of(const picture_series& series) {
  const auto literal = [](const std::string& text) {
    std::string pattern;
    for (const char c : text) {
      if (c == '.') {
        pattern += "\\.";
      } else {
        pattern += std::string_view("\\*+^$()[]").find(c) == std::string_view::npos ? c : '.';
      }
    }
    return pattern;
  };
  const std::size_t fixed = series.before.size() + series.after.size();
  std::set<std::size_t> widths;
  for (const std::string& name : series.names) widths.insert(name.size() - fixed);
  std::string number;
  if (widths.size() == 1) {
    for (std::size_t k = 0; k < *widths.begin(); ++k) number += "\\d";
  } else {
    number.append("\\d+");
  }
  return words("^", literal(series.before), number, literal(series.after), "$");
}

}  // namespace ocpan

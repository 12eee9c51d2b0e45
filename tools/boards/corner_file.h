#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <tuple>

#include "tools/boards/found_boards.h"

namespace ocpan {

// One search: a picture, its camera's size and the board that is looked for.
struct corner_search {
  std::string file;     // as the configuration names it
  int width = 0;        // pixels, of the camera
  int height = 0;       // pixels
  int board_width = 0;  // inner corners
  int board_height = 0;

  auto key() const { return std::tie(file, width, height, board_width, board_height); }
  friend bool operator<(const corner_search& a, const corner_search& b) {
    return a.key() < b.key();
  }
};

// What tells that a file has changed.
struct file_stamp {
  std::int64_t bytes = -1;    // -1 if there is no such file
  std::int64_t modified = 0;  // ticks of the file system's clock

  bool operator==(const file_stamp&) const = default;
};

// The stamp of a file as it is now.
//
//   path   either kind of slash
[[nodiscard]] file_stamp stamp_of(const std::string& path);

// What a search gave, and the picture's stamp at that time.
struct kept_finding {
  file_stamp stamp;
  picture_finding finding;
};
using kept_findings = std::map<corner_search, kept_finding>;

// Reads a corner file. Nothing if there is none, or if another version of the search wrote it;
// a sentence in `warning` if it can't be read.
[[nodiscard]] kept_findings read_corner_file(const std::string& path, std::string& warning);

// Writes a corner file, whole or not at all; a sentence in `warning` if that fails.
void write_corner_file(const std::string& path, const kept_findings& findings,
                       std::string& warning);

}  // namespace ocpan

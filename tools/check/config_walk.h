#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "src/config_cameras.h"
#include "src/config_lines.h"
#include "src/config_sets.h"
#include "tools/check/written_config.h"

namespace ocpan {

// How far a walk through a configuration has come.
struct config_walk {
  written_config& config;
  std::size_t line_number = 0;   // from 1
  camera_section cameras;        // the library's own state
  set_section sets;              // the library's own state
  bool cameras_refused = false;  // of the last set, so that its patterns can't be judged
  bool base_refused = false;     // the base folder, so that no patterns can be judged
};

// A key with its value, cut out of a line such that the library reads it alone as it reads
// it in the line.
struct key_stretch {
  std::string text;
  std::size_t offset = 0;  // in the line, from 0
  bool has_colon = false;
  bool has_value = false;  // else the library calls the line badly formed
  bool begins = false;     // a "-" stands in the key
  std::size_t next = 0;    // where the line goes on
  written_key written;
};

// The stretch at a position of a line.
[[nodiscard]] key_stretch stretch_at(const config_walk& walk, std::string_view line,
                                     std::size_t position);

// Without blanks at both ends.
[[nodiscard]] std::string_view trimmed(std::string_view text);

void refuse(config_walk& walk, const text_place& place, const std::string& what,
            const std::string& mend);

// Whether a line is meant as a comment, which the library doesn't know.
[[nodiscard]] bool is_comment(std::string_view line);
void refuse_comment_with_colon(config_walk& walk, std::string_view line);

// Walk a line of the two lower sections.
void walk_camera_line(config_walk& walk, const std::string& line);
void walk_set_line(config_walk& walk, const std::string& line);

// Tells of the last set if it lacks something, and takes it as complete from then on.
void refuse_incomplete_set(config_walk& walk);

// Why the library refuses a key of a set, and what to do. The state is that behind the key.
struct key_fault {
  std::size_t column;  // from 1
  std::string what;
  std::string mend;
};
[[nodiscard]] key_fault set_key_fault(const config_walk& walk, const key_stretch& stretch,
                                      const std::string& said);

}  // namespace ocpan

#pragma once

#include <istream>
#include <string>
#include <vector>

#include "tools/project/project_lines.h"

namespace ocpan {

// A project file in the library's dialect.
struct imported_project {
  std::string text;  // empty if a finding has a code
  std::size_t cameras = 0;
  std::vector<project_finding> findings;  // in the order of the file, of the whole last
};

// Rewrites a project file of the common stitching tools so that the library maps with it as
// the tools do. All "i" lines get their own numbers for what they linked to, and numbers in
// the library's sense for attitude, shear and, in a sheared crop, shift; each tells its lens
// kind and its angles. All other lines and tokens stay.
imported_project import_project(std::istream& in);

}  // namespace ocpan

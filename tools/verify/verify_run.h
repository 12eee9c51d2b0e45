#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/verify/coverage.h"
#include "tools/verify/overlaps.h"
#include "tools/verify/polygon_check.h"
#include "tools/verify/table_check.h"
#include "tools/verify/verify_finding.h"

namespace ocpan {

struct verify_options {
  std::string table_prefix;
  std::string calibration;
  std::string mask_prefix;
  std::string polygon_prefix;    // empty for none
  std::optional<float> radius;   // what isn't given the manifest tells, and without one
  std::optional<int> face_size;  // the radius is 10, and the face the one that fits better
  bool project_file = false;     // or as the manifest says
  std::string json;              // empty for none
  bool quiet = false;
};

// What was found out of one camera. A table or polygon that can't be read has no comparison.
struct verified_camera {
  std::optional<table_comparison> table;
  std::optional<polygon_comparison> polygon;
};

struct verified_tables {
  float radius = 0;
  int face_size = 0;
  bool project_file = false;
  bool has_manifest = false;
  std::vector<verified_camera> cameras;
  sphere_coverage coverage;
  std::vector<camera_overlap> overlaps;
  verify_findings findings;
  verdict judged = verdict::good;
};

// Verifies the tables of a rig, and its polygons if there is a prefix for them.
//
//   result      what was found, if the calibration and all masks could be read
//   progress    called with the number of cameras done and of all
//
// Prints or complains why it can't. Gives an exported code.
[[nodiscard]] int verify_tables(verified_tables& result, const verify_options& options,
                                const std::function<void(int, int)>& progress);

}  // namespace ocpan

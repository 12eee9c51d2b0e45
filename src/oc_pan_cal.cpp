#include "include/oc_pan_cal.h"

#include <cstdio>

#include "src/calibrate.h"
#include "src/guard.h"
#include "src/result_codes.h"
#include "src/round_half_away.h"

using namespace ocpan;

int ocPAN_Cal(const char* config_file, qa_summary* summary) {
  if (!config_file) return OCPAN_INVALID;
  return guarded([&] { return map_result(calibrate(config_file, summary)); });
}

int ocPAN_Version(char* buffer) {
  if (!buffer) return OCPAN_FAILURE;
  std::snprintf(buffer, 128, "%s", "V1.5.2");
  return OCPAN_SUCCESS;
}

// Declared by <math.h>; exported under its plain name.
extern "C" OCPAN_API double round(double x) noexcept { return round_half_away(x); }

#include "include/oc_pan_cal.h"

#include <cstdio>

#include "src/round_half_away.h"

int ocPAN_Version(char* buffer) {
  if (!buffer) return OCPAN_FAILURE;
  std::snprintf(buffer, 128, "%s", "V1.5.2");
  return OCPAN_SUCCESS;
}

// Declared by <math.h>; exported under its plain name.
extern "C" OCPAN_API double round(double x) noexcept { return ocpan::round_half_away(x); }

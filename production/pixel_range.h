#pragma once

namespace ocpan {

// A bound of a patch as a pixel index: truncated, and kept within 0 to count. Whatever
// isn't above 0, not-a-number too, becomes 0.
inline int pixel_bound(double position, int count) {
  if (!(position > 0.0)) return 0;
  return position < count ? static_cast<int>(position) : count;
}

}  // namespace ocpan

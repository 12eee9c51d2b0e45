#pragma once

#include <string_view>

namespace ocpan {

// Whether the bytes are those of a JPEG that breaks off ahead of its end marker (ITU-T T.81,
// annex B). A decoder shows such a picture with its lower part grey. An end marker inside a
// thumbnail doesn't count. False for what is no JPEG.
[[nodiscard]] bool is_jpeg_cut_short(std::string_view bytes);

}  // namespace ocpan

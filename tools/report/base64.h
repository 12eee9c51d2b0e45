#pragma once

#include <string>
#include <string_view>

namespace ocpan {

// Bytes as text of 64 letters, padded with "=" (RFC 4648).
[[nodiscard]] std::string base64(std::string_view bytes);

}  // namespace ocpan

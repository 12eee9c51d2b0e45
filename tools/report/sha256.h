#pragma once

#include <string>
#include <string_view>

namespace ocpan {

// The SHA-256 of some bytes as 64 hexadecimal digits (FIPS 180-4), as sha256sum prints it.
[[nodiscard]] std::string sha256(std::string_view bytes);

}  // namespace ocpan

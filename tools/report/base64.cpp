#include "tools/report/base64.h"

#include <cstdint>

namespace ocpan {

std::string base64(std::string_view bytes) {
  constexpr std::string_view letters =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  out.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const auto byte = [&](std::size_t k) {
      return k < bytes.size() ? std::uint32_t{static_cast<unsigned char>(bytes[k])} : 0u;
    };
    const std::uint32_t triple = byte(i) << 16 | byte(i + 1) << 8 | byte(i + 2);
    out += letters[triple >> 18];
    out += letters[triple >> 12 & 63];
    out += i + 1 < bytes.size() ? letters[triple >> 6 & 63] : '=';
    out += i + 2 < bytes.size() ? letters[triple & 63] : '=';
  }
  return out;
}

}  // namespace ocpan

#include "tools/boards/jpeg_end.h"

#include <cstddef>

namespace ocpan {
namespace {

constexpr unsigned char start_of_image = 0xD8;
constexpr unsigned char end_of_image = 0xD9;

unsigned char byte_at(std::string_view bytes, std::size_t at) {
  return static_cast<unsigned char>(bytes[at]);
}

// Restart markers and TEM stand alone; every other marker is followed by its segment's length.
bool stands_alone(unsigned char marker) {
  return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7);
}

// The place of the next marker's code at or behind `at`, past coded data and fill bytes; the
// size if there is none.
std::size_t next_marker(std::string_view bytes, std::size_t at) {
  for (; at + 1 < bytes.size(); ++at) {
    if (byte_at(bytes, at) != 0xFF) continue;
    const unsigned char marker = byte_at(bytes, at + 1);
    if (marker != 0x00 && marker != 0xFF && !stands_alone(marker)) return at + 1;
  }
  return bytes.size();
}

}  // namespace

bool is_jpeg_cut_short(std::string_view bytes) {
  if (bytes.size() < 2 || byte_at(bytes, 0) != 0xFF || byte_at(bytes, 1) != start_of_image) {
    return false;
  }
  std::size_t at = 2;
  while (true) {
    at = next_marker(bytes, at);
    if (at >= bytes.size()) return true;
    if (byte_at(bytes, at) == end_of_image) return false;
    if (at + 2 >= bytes.size()) return true;
    at += 1 + static_cast<std::size_t>(byte_at(bytes, at + 1) << 8 | byte_at(bytes, at + 2));
  }
}

}  // namespace ocpan

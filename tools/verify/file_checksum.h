#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace ocpan {

// What tells a file's content from another's: its size and its CRC-32.
struct file_checksum {
  std::uintmax_t size = 0;  // bytes
  std::uint32_t crc32 = 0;
  bool operator==(const file_checksum&) const = default;
};

// Nothing for a file that can't be read to its end.
//
//   path   either kind of slash
std::optional<file_checksum> checksum_of(const std::string& path);

}  // namespace ocpan

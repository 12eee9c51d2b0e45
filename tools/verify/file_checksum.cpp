#include "tools/verify/file_checksum.h"

#include <vector>
#include <zlib.h>

#include "platform/text_file.h"

namespace ocpan {

std::optional<file_checksum> checksum_of(const std::string& path) {
  std::ifstream in = open_input(path, std::ios::in | std::ios::binary);
  if (!in) return std::nullopt;
  file_checksum sum;
  std::vector<char> block(std::size_t{1} << 18);
  while (in) {
    in.read(block.data(), static_cast<std::streamsize>(block.size()));
    const auto count = static_cast<uInt>(in.gcount());
    sum.size += count;
    sum.crc32 = static_cast<std::uint32_t>(
        crc32(sum.crc32, reinterpret_cast<const Bytef*>(block.data()), count));
  }
  if (in.bad()) return std::nullopt;
  return sum;
}

}  // namespace ocpan

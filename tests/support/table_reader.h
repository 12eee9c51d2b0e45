#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace ocpan::testing {

// The readers of docs/formats.md, over the bytes of a whole file.

struct table_sample {
  double x, y;  // pixels
  int weight;   // 0 to 1023
};

// The sample of a face, 0 to 5, in row a and column b, 0 to 255.
inline table_sample read_table(const std::string& file, std::size_t face, std::size_t a,
                               std::size_t b) {
  std::size_t index = face / 3 * 262144 + a / 4 * 4096 + face % 3 * 1024;
  index += b / 8 * 32 + a % 4 * 8 + b % 8;
  std::uint64_t entry = 0;
  for (std::size_t i = 8; i-- > 0;) {
    entry = entry << 8 | static_cast<unsigned char>(file.at(8 * index + i));
  }
  const auto x = static_cast<std::int64_t>(entry) >> 37;
  const auto y = static_cast<std::int64_t>(entry << 27) >> 37;
  const auto weight = static_cast<int>(entry & 1023);
  return {static_cast<double>(x) / 8192, static_cast<double>(y) / 8192, weight};
}

// A component, 0 to 2, of the direction of a vertex, 0 to 127.
inline double read_polygon(const std::string& file, std::size_t vertex, std::size_t component) {
  std::uint32_t value = 0;
  for (std::size_t i = 4; i-- > 0;) {
    value = value << 8 | static_cast<unsigned char>(file.at(12 * vertex + 4 * component + i));
  }
  return static_cast<std::int32_t>(value) / 16777216.0;
}

}  // namespace ocpan::testing

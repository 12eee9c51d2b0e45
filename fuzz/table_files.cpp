#include "fuzz/table_files.h"

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <vector>

#include "fuzz/promise.h"
#include "tables/lut_format.h"
#include "tests/support/temp_folder.h"

namespace ocpan::fuzz {
namespace {

constexpr std::size_t polygon_bytes = 1536;
constexpr std::int32_t q24_one = 1 << 24;

template <typename Number>
std::vector<Number> numbers_in(const std::string& bytes) {
  std::vector<Number> numbers(bytes.size() / sizeof(Number));
  if (!numbers.empty()) std::memcpy(numbers.data(), bytes.data(), numbers.size() * sizeof(Number));
  return numbers;
}

bool is_in_empty_slot(std::size_t index) { return index % 4096 >= 3072; }

// The signed 27 bits that end at a bit, in pixels.
double coordinate(std::uint64_t entry, int last_bit) {
  const auto bits = static_cast<std::int64_t>(entry << (63 - last_bit)) >> 37;
  return static_cast<double>(bits) / 8192.0;
}

}  // namespace

bool is_whole_table(const std::string& path, int width, int height) {
  if (!std::filesystem::exists(path)) return false;
  const auto entries = numbers_in<std::uint64_t>(testing::read_file(path));
  must_hold(entries.size() == lut_entry_count, "a table has its size");
  for (std::size_t index = 0; index < entries.size(); ++index) {
    const std::uint64_t entry = entries[index];
    if (is_in_empty_slot(index)) must_hold(entry == 0, "a table's fourth slot is empty");
    if ((entry & 1023) == 0) continue;
    const double x = coordinate(entry, 63);
    const double y = coordinate(entry, 36);
    must_hold(x >= -1 && x <= width && y >= -1 && y <= height, "a weight lies in the picture");
  }
  return true;
}

bool is_whole_polygon(const std::string& path) {
  if (!std::filesystem::exists(path)) return false;
  const std::string bytes = testing::read_file(path);
  must_hold(bytes.size() == polygon_bytes, "a polygon has its size");
  for (const std::int32_t component : numbers_in<std::int32_t>(bytes)) {
    must_hold(component >= -q24_one && component <= q24_one, "a polygon lies on the sphere");
  }
  return true;
}

}  // namespace ocpan::fuzz

#pragma once

#include <cstdint>
#include <cstring>
#include <string>

#include "fuzz/targets.h"

namespace ocpan::fuzz {

// Takes numbers off the front of an input. What is behind its end reads as zeros.
class byte_source {
 public:
  explicit byte_source(input bytes) : bytes_(bytes) {}

  bool empty() const { return bytes_.empty(); }

  std::uint8_t byte() {
    if (bytes_.empty()) return 0;
    const std::uint8_t first = bytes_.front();
    bytes_ = bytes_.subspan(1);
    return first;
  }

  // 0 to 65535.
  int two_bytes() {
    const int low = byte();
    return low | byte() << 8;
  }

  // 0 to count - 1, of one byte for a count up to 256 and of two for a larger one.
  int below(int count) { return (count <= 256 ? byte() : two_bytes()) % count; }

  // Any number that a double can be.
  double number() {
    std::uint64_t bits = 0;
    for (int k = 0; k < 64; k += 8) bits |= std::uint64_t{byte()} << k;
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
  }

  input rest() const { return bytes_; }

 private:
  input bytes_;
};

inline std::string text_of(input bytes) { return {bytes.begin(), bytes.end()}; }

}  // namespace ocpan::fuzz

#pragma once

#include <cstdint>
#include <random>

namespace ocpan {

// Numbers that are the same on every platform, which the standard library's distributions
// are not.
class random_numbers {
 public:
  // Streams of one seed are independent of one another.
  random_numbers(std::uint64_t seed, std::uint64_t stream) : engine_(mixed(seed, stream)) {}

  // Evenly from low to high.
  double uniform(double low, double high) {
    return low + (high - low) * (static_cast<double>(engine_() >> 11) * 0x1p-53);
  }
  // Normally distributed with mean 0 and deviation 1.
  double normal();

 private:
  static std::uint64_t mixed(std::uint64_t seed, std::uint64_t stream) {
    return seed * 0x9E3779B97F4A7C15u + (stream + 1) * 0xD1B54A32D192ED03u;
  }
  std::mt19937_64 engine_;
};

}  // namespace ocpan

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "common/alg_lib.h"

namespace ocpan {
namespace {

std::size_t bytes_of(std::uint32_t bits) {
  return bits <= 8 ? 1 : bits <= 16 ? 2 : bits <= 32 ? 4 : 8;
}

std::uint64_t largest_of(std::size_t bytes) { return ~std::uint64_t{0} >> (64 - 8 * bytes); }

// One sample, worked in 64 bits whatever its size.
std::uint64_t slow_conversion(std::uint64_t value, std::uint32_t to, std::uint32_t from,
                              std::uint32_t flag) {
  const std::uint32_t shift = flag == 1 ? std::max(to, from) - std::min(to, from) : 0;
  const std::uint64_t largest = largest_of(bytes_of(to));
  if (bytes_of(to) > bytes_of(from)) return (value << shift) & largest;
  if (bytes_of(to) < bytes_of(from)) return std::min(value >> shift, largest);
  return (to > from ? value << shift : value >> shift) & largest;
}

template <typename To, typename From>
std::vector<To> converted(std::vector<From> from, std::uint32_t to_bits, std::uint32_t from_bits,
                          std::uint32_t flag) {
  std::vector<To> to(from.size());
  EXPECT_EQ(ALG_LIB_ConvertSamples(to.data(), from.data(), to_bits, from_bits,
                                   static_cast<std::uint32_t>(from.size()), flag),
            0);
  return to;
}

using one = std::vector<std::uint8_t>;
using two = std::vector<std::uint16_t>;
using four = std::vector<std::uint32_t>;

TEST(ConvertSamples, CopiesBetweenEqualDepths) {
  EXPECT_EQ(converted<std::uint16_t>(two{0, 1023, 65535}, 10, 10, 1), (two{0, 1023, 65535}));
}

TEST(ConvertSamples, ShiftsAWiderSampleLeft) {
  EXPECT_EQ(converted<std::uint16_t>(one{0, 1, 255}, 10, 8, 1), (two{0, 4, 1020}));
}

TEST(ConvertSamples, ShiftsANarrowerSampleRight) {
  EXPECT_EQ(converted<std::uint8_t>(two{0, 3, 4, 1023}, 8, 10, 1), (one{0, 0, 1, 255}));
}

TEST(ConvertSamples, HoldsANarrowerSampleToItsLargestValue) {
  EXPECT_EQ(converted<std::uint8_t>(two{1020, 1024, 65535}, 8, 10, 1), (one{255, 255, 255}));
  EXPECT_EQ(converted<std::uint16_t>(four{65535, 65536, 0xFFFFFFFF}, 10, 32, 0),
            (two{65535, 65535, 65535}));
}

TEST(ConvertSamples, ShiftsASampleOfTheSameSizeTowardsItsDepth) {
  EXPECT_EQ(converted<std::uint16_t>(two{1, 1023}, 12, 10, 1), (two{4, 4092}));
  EXPECT_EQ(converted<std::uint16_t>(two{3, 4, 4095}, 10, 12, 1), (two{0, 1, 1023}));
}

TEST(ConvertSamples, LosesBitsBeyondASampleOfTheSameSize) {
  EXPECT_EQ(converted<std::uint16_t>(two{0x4001}, 12, 10, 1), (two{0x0004}));
}

TEST(ConvertSamples, LeavesValuesWithoutTheShiftFlag) {
  EXPECT_EQ(converted<std::uint16_t>(one{255}, 10, 8, 0), (two{255}));
  EXPECT_EQ(converted<std::uint16_t>(two{1023}, 16, 10, 2), (two{1023}));
  EXPECT_EQ(converted<std::uint8_t>(two{77, 256}, 8, 10, 0), (one{77, 255}));
}

TEST(ConvertSamples, AgreesWithAPlainVersionForAllSizesAndDepths) {
  std::mt19937_64 random(3);
  const std::uint32_t depths[] = {1, 7, 8, 9, 10, 12, 16, 17, 24, 31, 32, 33, 40, 63, 64};
  constexpr std::uint32_t count = 33;
  int checked = 0;
  for (std::uint32_t to : depths) {
    for (std::uint32_t from : depths) {
      for (std::uint32_t flag : {0u, 1u}) {
        // Values within the depth, and in every fourth place beyond it.
        std::vector<std::uint64_t> source(count);
        std::vector<std::uint64_t> destination(count);
        auto* in = reinterpret_cast<std::uint8_t*>(source.data());
        std::uint64_t values[count];
        for (std::uint32_t i = 0; i < count; ++i) {
          const std::uint64_t mask =
              i % 4 == 0 ? largest_of(bytes_of(from)) : ~std::uint64_t{0} >> (64 - from);
          values[i] = random() & mask;
          std::memcpy(in + i * bytes_of(from), &values[i], bytes_of(from));
        }
        ASSERT_EQ(ALG_LIB_ConvertSamples(destination.data(), source.data(), to, from, count, flag),
                  0);
        const auto* out = reinterpret_cast<const std::uint8_t*>(destination.data());
        for (std::uint32_t i = 0; i < count; ++i) {
          std::uint64_t value = 0;
          std::memcpy(&value, out + i * bytes_of(to), bytes_of(to));
          ASSERT_EQ(value, slow_conversion(values[i], to, from, flag))
              << "to " << to << " from " << from << " flag " << flag << " value " << values[i];
          ++checked;
        }
      }
    }
  }
  EXPECT_EQ(checked, 15 * 15 * 2 * 33);
}

TEST(ConvertSamples, WritesTheCountedSamplesOnly) {
  two to{9, 9, 9};
  const one from{1, 2, 3};
  EXPECT_EQ(ALG_LIB_ConvertSamples(to.data(), from.data(), 16, 8, 2, 0), 0);
  EXPECT_EQ(to, (two{1, 2, 9}));
}

TEST(ConvertSamples, RefusesDepthsThatNoSampleHas) {
  std::uint64_t to = 5;
  const std::uint64_t from = 1;
  int checked = 0;
  for (std::uint32_t depth : {0u, 65u, 0xFFFFFFFFu}) {
    EXPECT_EQ(ALG_LIB_ConvertSamples(&to, &from, depth, 8, 1, 1), -1);
    EXPECT_EQ(ALG_LIB_ConvertSamples(&to, &from, 8, depth, 1, 1), -1);
    ++checked;
  }
  EXPECT_EQ(checked, 3);
  EXPECT_EQ(to, 5u);
}

}  // namespace
}  // namespace ocpan

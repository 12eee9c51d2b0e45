#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace ocpan::fuzz {

// What a target does with one input: calls our code on it and throws a broken_promise where
// something doesn't hold that must. An input says all; a target keeps nothing for the next.
using input = std::span<const std::uint8_t>;

void run_calibration_file(input bytes);
void run_configuration(input bytes);
void run_masks(input bytes);
void run_patterns(input bytes);
void run_project_file(input bytes);
void run_quad_corners(input bytes);
void run_quad_pictures(input bytes);
void run_raw_pictures(input bytes);
void run_raw_samples(input bytes);
void run_tables(input bytes);

// A target under the name of its source and of its folder in the corpus.
struct target {
  const char* name;
  void (*run)(input bytes);
};
extern const std::array<target, 10> targets;

}  // namespace ocpan::fuzz

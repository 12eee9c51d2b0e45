#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string_view>

#include <opencv2/core.hpp>

#include "fuzz/targets.h"

// The two functions that libFuzzer calls, for the target TARGET_NAME.

namespace {

const ocpan::fuzz::target* chosen = nullptr;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  for (const ocpan::fuzz::target& one : ocpan::fuzz::targets) {
    if (one.name == std::string_view(TARGET_NAME)) chosen = &one;
  }
  if (!chosen) {
    std::fprintf(stderr, "No target %s in fuzz/targets.cpp\n", TARGET_NAME);
    std::exit(1);
  }
  std::cout.rdbuf(nullptr);  // a complaint of the library then costs nothing
  cv::setNumThreads(1);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t count) {
  chosen->run({bytes, count});
  return 0;
}

#pragma once

#include <cstdio>
#include <iostream>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace ocpan::testing {

// What a call prints on the standard output stream, through C++ or C.
template <typename Call>
std::string printed_by(Call&& call) {
  std::cout.flush();
  std::fflush(stdout);
  ::testing::internal::CaptureStdout();
  std::forward<Call>(call)();
  std::cout.flush();
  std::fflush(stdout);
  return ::testing::internal::GetCapturedStdout();
}

}  // namespace ocpan::testing

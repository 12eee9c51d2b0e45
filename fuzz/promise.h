#pragma once

#include <stdexcept>

#include "include/oc_pan_cal.h"

namespace ocpan::fuzz {

// Our code did what it must never do. Nobody catches it in a fuzzer, which counts it as a crash.
class broken_promise : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

inline void must_hold(bool holds, const char* promise) {
  if (!holds) throw broken_promise(promise);
}

// An export's result is one of the codes in the public header.
inline void must_be_result(int result) {
  must_hold(result >= OCPAN_FAILURE && result <= OCPAN_INVALID, "a known result");
}

}  // namespace ocpan::fuzz

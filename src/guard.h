#pragma once

#include <utility>

namespace ocpan {

// The exported code for the exception in flight, to be called from a catch block: an
// allocation failure, also OpenCV's, gives OCPAN_MEMORY. Any other exception prints
// "Unexpected failure: " and its text, line breaks as blanks, and gives OCPAN_FAILURE.
[[nodiscard]] int code_of_current_exception() noexcept;

// Runs the body of an export and gives the exported code that it returns, or the code of
// the exception that left it. Never throws.
template <typename Body>
[[nodiscard]] int guarded(Body&& body) noexcept {
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    return code_of_current_exception();
  }
}

}  // namespace ocpan

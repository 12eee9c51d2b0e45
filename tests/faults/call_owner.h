#pragma once

#include <span>
#include <string>

namespace ocpan::faults {

// Whose code made a call: the innermost function on a stack that isn't of the C or C++
// runtime or of the faults' own library.
struct call_owner {
  std::string name;  // the file of its library and, where it is known, the function
  bool is_ours = false;
};
call_owner owner_of(std::span<void* const> stack);

// All functions of a stack, innermost first, for a person to read.
std::string stack_text(std::span<void* const> stack);

}  // namespace ocpan::faults

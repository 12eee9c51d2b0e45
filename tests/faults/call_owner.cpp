#include "tests/faults/call_owner.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cxxabi.h>
#include <dlfcn.h>
#include <memory>
#include <string_view>

#include "tests/faults/library_symbols.h"

namespace ocpan::faults {
namespace {

struct call_place {
  std::string file;      // without its folder
  std::string function;  // empty if it isn't known
};

struct free_block {
  void operator()(char* block) const { std::free(block); }
};

std::string readable(const char* symbol) {
  int status = 0;
  const std::unique_ptr<char, free_block> plain(
      abi::__cxa_demangle(symbol, nullptr, nullptr, &status));
  return status == 0 ? plain.get() : symbol;
}

std::string without_arguments(std::string function) {
  constexpr std::string_view unnamed = "(anonymous namespace)::";
  for (std::size_t at; (at = function.find(unnamed)) != std::string::npos;) {
    function.erase(at, unnamed.size());
  }
  return function.substr(0, function.find_first_of("<(["));
}

call_place place_of(void* frame) {
  Dl_info facts{};
  if (dladdr(frame, &facts) == 0 || !facts.dli_fname) return {};
  const std::string path = facts.dli_fname;
  const auto offset = static_cast<char*>(frame) - static_cast<char*>(facts.dli_fbase);
  // The address is that behind the call, which may be another function's already.
  std::string function = function_at(path, static_cast<std::uint64_t>(offset) - 1);
  if (function.empty() && facts.dli_sname) function = readable(facts.dli_sname);
  return {path.substr(path.rfind('/') + 1), without_arguments(function)};
}

bool is_runtime(std::string_view file) {
  static constexpr std::array<std::string_view, 6> runtimes = {
      "libc.so", "libstdc++", "libgcc_s", "ld-linux", "libfault_interposer", "libm.so"};
  return file.empty() ||
         std::any_of(runtimes.begin(), runtimes.end(),
                     [&](std::string_view runtime) { return file.starts_with(runtime); });
}

std::string text_of(const call_place& place) {
  return place.function.empty() ? place.file : place.file + " " + place.function;
}

}  // namespace

call_owner owner_of(std::span<void* const> stack) {
  for (void* frame : stack) {
    if (!frame) break;
    const call_place place = place_of(frame);
    // The C library keeps the block of a thread that ended for the next one.
    if (place.function == "pthread_create") return {text_of(place), false};
    if (is_runtime(place.file) || place.function.starts_with("std::")) continue;
    // Eigen's code lies within ours.
    const bool eigens = place.function.find("Eigen::") < place.function.find("ocpan::");
    const bool ours = place.file.starts_with("liboc_pan_cal") || place.file == "fault_run";
    return {text_of(place), ours && !eigens};
  }
  return {"unknown", true};
}

std::string stack_text(std::span<void* const> stack) {
  std::string text;
  for (void* frame : stack) {
    if (!frame) break;
    text += "    " + text_of(place_of(frame)) + "\n";
  }
  return text;
}

}  // namespace ocpan::faults

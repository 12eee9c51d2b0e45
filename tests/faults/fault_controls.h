#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace ocpan::faults {

// What can fail. Each kind counts its calls for itself.
enum class call_kind { open, read, write, close, list, change, thread, allocate };
inline constexpr std::array<std::string_view, 8> kind_names = {
    "open", "read", "write", "close", "list", "change", "thread", "allocate"};

struct memory_balance {
  long blocks = 0;
  long bytes = 0;
};

// Who made a call: innermost first, null behind the last.
using call_stack = std::array<void*, 24>;

// A block or descriptor that was taken and not given back, and who took it.
struct kept_resource {
  std::uint64_t what = 0;  // address or descriptor
  bool is_memory = false;
  call_stack stack{};
};

// What the preloaded library offers to the program it is loaded into. Not for two threads at
// once, but the calls that it counts may come from any.
struct fault_controls {
  // From now on the nth call of a kind, counted from 1, fails, and all later ones too if
  // `lasting`. With nth 0 calls are only counted.
  void (*arm)(call_kind kind, long nth, bool lasting);
  void (*disarm)();
  long (*calls)();     // of the armed kind since arm()
  long (*failures)();  // how many of them were made to fail
  // Where the stack of the first of them is put, before it fails.
  void (*tell_first_failure)(call_stack* stack);

  // Memory taken and not given back since the process began.
  memory_balance (*balance)();

  // Until it is called with null, the hash of the stack of each armed call is stored, the
  // nth at hashes[n - 1].
  void (*record_stacks)(std::uint64_t* hashes, long capacity);

  // Between the two, remembers who takes what. Gives how many were written to kept.
  void (*begin_tracking)();
  long (*end_tracking)(kept_resource* kept, long capacity);
};

// The name under which the library exports a function that gives its controls.
inline constexpr const char* controls_symbol = "ocpan_fault_controls";
using controls_function = const fault_controls*();

}  // namespace ocpan::faults

#pragma once

namespace ocpan {

// Internal result codes. They travel by return from where a failure happened, and each
// export maps them once with map_result.
namespace code {
inline constexpr int success = 0;
inline constexpr int input_unusable = 3;     // an input can't be opened, a picture is unusable
inline constexpr int output_unopened = 4;    // an output can't be opened or written
inline constexpr int content_malformed = 5;  // the content of an input is malformed
inline constexpr int out_of_memory = 6;
inline constexpr int argument_invalid = 7;  // an argument or value is out of range
inline constexpr int logic_failure = -1;
}  // namespace code

// The exported code (enum ocpan_result) of an internal one. Anything that is no internal
// code becomes OCPAN_FAILURE; 1 passes through.
[[nodiscard]] int map_result(int internal_code);

}  // namespace ocpan

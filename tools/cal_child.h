#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "include/oc_pan_cal.h"
#include "platform/child_process.h"

namespace ocpan {

// The hidden command by which the tool starts itself to call the library.
inline constexpr const char* cal_child_command = "call-ocPAN_Cal";

// What the library's call gave.
struct cal_reply {
  int result = OCPAN_FAILURE;
  qa_summary measures = {};
};

// The reply as bytes and back, exact to the last bit. Bytes that are no whole reply give
// nothing.
std::string pack(const cal_reply& reply);
std::optional<cal_reply> unpack_cal_reply(std::string_view bytes);

// Runs a calibration in a child process.
//
//   program         the tool itself
//   configuration   path of the configuration
//   on_line         takes each line that the library prints, without its end
struct cal_child_end {
  child_end process;
  std::optional<cal_reply> reply;  // nothing if the child broke off
};
cal_child_end run_cal_child(const std::string& program, const std::string& configuration,
                            const std::function<void(const std::string&)>& on_line);

}  // namespace ocpan

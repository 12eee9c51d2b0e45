#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace ocpan {

// How a child process ended.
struct child_end {
  enum class kind {
    not_started,  // `words` tells why
    exited,       // by itself, with `code`
    killed        // by a signal or a crash that `words` names
  };
  kind how = kind::not_started;
  int code = 0;       // the exit code; for a killed child the one a shell shows, 128 + signal
  std::string words;  // for people
  bool interrupted = false;  // this process was asked to end, and handed that on to the child
  std::string reply;         // the bytes of the child's send_reply
};

// Runs a program and waits for its end. Standard input and standard error are shared with
// the child. A request to end this process (Ctrl-C, hang-up, termination) goes to the child
// and this process lives on to tell of it; requests that were ignored before stay ignored.
//
//   program     the path of the program
//   arguments   without the program's name; one more is appended, the channel that the
//               child gives to send_reply
//   on_output   takes what the child prints on standard output, piece by piece; pieces end
//               anywhere
//
// One call at a time: requests to end are the process's, not a thread's.
child_end run_child(const std::string& program, std::vector<std::string> arguments,
                    const std::function<void(std::string_view)>& on_output);

// Sends bytes (some kilobytes at most) to the parent that started this process. Gives
// false when the channel isn't one or the parent is gone.
[[nodiscard]] bool send_reply(const std::string& channel, std::string_view bytes);

// The path of the running program, empty if the system doesn't tell.
std::string own_program();

}  // namespace ocpan

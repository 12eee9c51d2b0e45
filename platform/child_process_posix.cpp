#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

#include "platform/child_process.h"

extern char** environ;

namespace ocpan {
namespace {

constexpr std::array<int, 3> end_requests = {SIGINT, SIGTERM, SIGHUP};

// Shared with the signal handler.
volatile std::sig_atomic_t child_pid = 0;
volatile std::sig_atomic_t was_interrupted = 0;

extern "C" void hand_on(int signal_number) {
  const int errno_before = errno;
  was_interrupted = 1;
  if (child_pid > 0) kill(child_pid, signal_number);
  errno = errno_before;
}

// While it lives, requests to end this process go to the child. It blocks them at first,
// until the child is known.
class end_request_relay {
 public:
  end_request_relay() {
    was_interrupted = 0;
    sigset_t requests;
    sigemptyset(&requests);
    for (const int number : end_requests) sigaddset(&requests, number);
    sigprocmask(SIG_BLOCK, &requests, &mask_before_);
    for (std::size_t i = 0; i < end_requests.size(); ++i) {
      sigaction(end_requests[i], nullptr, &actions_before_[i]);
      if (actions_before_[i].sa_handler == SIG_IGN) continue;
      struct sigaction relay = {};
      relay.sa_handler = hand_on;
      relay.sa_flags = SA_RESTART;
      sigemptyset(&relay.sa_mask);
      sigaction(end_requests[i], &relay, nullptr);
    }
  }
  ~end_request_relay() {
    child_pid = 0;
    for (std::size_t i = 0; i < end_requests.size(); ++i) {
      sigaction(end_requests[i], &actions_before_[i], nullptr);
    }
    sigprocmask(SIG_SETMASK, &mask_before_, nullptr);
  }
  end_request_relay(const end_request_relay&) = delete;
  end_request_relay& operator=(const end_request_relay&) = delete;

  const sigset_t& mask_before() const { return mask_before_; }

  void start(pid_t child) {
    child_pid = child;
    sigprocmask(SIG_SETMASK, &mask_before_, nullptr);
  }

 private:
  sigset_t mask_before_ = {};
  std::array<struct sigaction, end_requests.size()> actions_before_ = {};
};

struct pipe_ends {
  int read = -1;
  int write = -1;
};

void close_end(int& end) {
  if (end >= 0) close(end);
  end = -1;
}

// A pipe whose ends this process alone holds. Both lie above the standard three, so that
// placing one as the child's standard output never hits another.
bool make_pipe(pipe_ends& ends) {
  int raw[2];
  if (pipe(raw) != 0) return false;
  ends.read = fcntl(raw[0], F_DUPFD_CLOEXEC, 3);
  ends.write = fcntl(raw[1], F_DUPFD_CLOEXEC, 3);
  close(raw[0]);
  close(raw[1]);
  return ends.read >= 0 && ends.write >= 0;
}

// Starts the program with `output` as its standard output, and `reply` open under a number
// of its own. Gives the error number.
int start(const std::string& program, std::vector<std::string>& arguments, int output, int channel,
          const sigset_t& mask, pid_t& child) {
  std::vector<char*> argv = {const_cast<char*>(program.c_str())};
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
  posix_spawn_file_actions_init(&actions);
  posix_spawnattr_init(&attributes);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  // Placing a descriptor on itself keeps it open in the child alone.
  posix_spawn_file_actions_adddup2(&actions, channel, channel);
  posix_spawnattr_setsigmask(&attributes, &mask);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
  const int error =
      posix_spawn(&child, program.c_str(), &actions, &attributes, argv.data(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return error;
}

// Reads both pipes until the child has closed them.
void drain(pipe_ends& output, pipe_ends& reply,
           const std::function<void(std::string_view)>& on_output, std::string& reply_bytes) {
  std::array<char, 65536> buffer;
  while (output.read >= 0 || reply.read >= 0) {
    // poll() passes over the negative number of a closed end.
    std::array<pollfd, 2> waiting = {{{output.read, POLLIN, 0}, {reply.read, POLLIN, 0}}};
    if (poll(waiting.data(), waiting.size(), -1) < 0) {
      if (errno == EINTR) continue;
      return;
    }
    for (pipe_ends* ends : {&output, &reply}) {
      const pollfd& state = waiting[ends == &output ? 0 : 1];
      if (ends->read < 0 || state.revents == 0) continue;
      const ssize_t count = read(ends->read, buffer.data(), buffer.size());
      if (count < 0 && errno == EINTR) continue;
      if (count <= 0) {
        close_end(ends->read);
      } else if (ends == &output) {
        on_output({buffer.data(), static_cast<std::size_t>(count)});
      } else {
        reply_bytes.append(buffer.data(), static_cast<std::size_t>(count));
      }
    }
  }
}

void wait_for(pid_t child, child_end& end) {
  // The child stays a zombie, its number its own, until no signal can be sent to it.
  siginfo_t ended;
  while (waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT) != 0 &&
         errno == EINTR) {
  }
  child_pid = 0;
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (WIFSIGNALED(status)) {
    end.how = child_end::kind::killed;
    end.code = 128 + WTERMSIG(status);
    end.words =
        "signal " + std::to_string(WTERMSIG(status)) + " (" + strsignal(WTERMSIG(status)) + ")";
  } else {
    end.how = child_end::kind::exited;
    end.code = WEXITSTATUS(status);
    end.words = "exit code " + std::to_string(end.code);
  }
}

}  // namespace

child_end run_child(const std::string& program, std::vector<std::string> arguments,
                    const std::function<void(std::string_view)>& on_output) {
  child_end end;
  pipe_ends output;
  pipe_ends reply;
  int error = 0;
  if (!make_pipe(output) || !make_pipe(reply)) error = errno;
  if (error == 0) {
    arguments.push_back(std::to_string(reply.write));
    end_request_relay relay;
    pid_t child = 0;
    error = start(program, arguments, output.write, reply.write, relay.mask_before(), child);
    if (error == 0) {
      close_end(output.write);
      close_end(reply.write);
      relay.start(child);
      drain(output, reply, on_output, end.reply);
      wait_for(child, end);
      end.interrupted = was_interrupted != 0;
    }
  }
  for (int* left : {&output.read, &output.write, &reply.read, &reply.write}) close_end(*left);
  if (error != 0) end.words = std::generic_category().message(error);
  return end;
}

bool send_reply(const std::string& channel, std::string_view bytes) {
  int descriptor = -1;
  const auto [last, error] =
      std::from_chars(channel.data(), channel.data() + channel.size(), descriptor);
  if (error != std::errc() || last != channel.data() + channel.size() || descriptor < 0) {
    return false;
  }
  while (!bytes.empty()) {
    const ssize_t count = write(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

std::string own_program() {
  std::error_code failure;
  const auto path = std::filesystem::read_symlink("/proc/self/exe", failure);
  return failure ? std::string() : path.string();
}

}  // namespace ocpan

#include <array>
#include <charconv>
#include <cstdint>
#include <system_error>
#include <thread>
#include <windows.h>

#include "platform/child_process.h"

namespace ocpan {
namespace {

constexpr DWORD first_crash_code = 0xC0000000;  // exit codes from here on are exceptions
constexpr DWORD ended_by_ctrl_c = 0xC000013A;   // STATUS_CONTROL_C_EXIT

volatile LONG was_interrupted = 0;

// The console sends the event to the child too, which ends by it.
BOOL WINAPI outlive_ctrl_c(DWORD event) {
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) return FALSE;
  was_interrupted = 1;
  return TRUE;
}

// One argument as the C runtime of the child takes it apart again.
std::string quoted(const std::string& argument) {
  std::string text = "\"";
  std::size_t backslashes = 0;
  for (const char c : argument) {
    if (c == '\\') {
      ++backslashes;
      continue;
    }
    text.append(c == '"' ? 2 * backslashes + 1 : backslashes, '\\');
    backslashes = 0;
    text += c;
  }
  text.append(2 * backslashes, '\\');
  return text + '"';
}

struct pipe_ends {
  HANDLE read = nullptr;
  HANDLE write = nullptr;
};

bool make_pipe(pipe_ends& ends) {
  SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
  return CreatePipe(&ends.read, &ends.write, &inherited, 0) &&
         SetHandleInformation(ends.read, HANDLE_FLAG_INHERIT, 0);
}

void close_end(HANDLE& end) {
  if (end) CloseHandle(end);
  end = nullptr;
}

template <typename Take>
void read_all(HANDLE from, Take&& take) {
  std::array<char, 65536> buffer;
  DWORD count = 0;
  while (ReadFile(from, buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr) &&
         count > 0) {
    take(std::string_view(buffer.data(), count));
  }
}

void describe_end(DWORD code, child_end& end) {
  end.code = static_cast<int>(code);
  if (code >= first_crash_code) {
    std::array<char, 16> hex = {};
    std::to_chars(hex.data(), hex.data() + hex.size(), code, 16);
    end.how = child_end::kind::killed;
    end.words = code == ended_by_ctrl_c ? "Ctrl-C" : std::string("exception 0x") + hex.data();
  } else {
    end.how = child_end::kind::exited;
    end.words = "exit code " + std::to_string(code);
  }
}

std::string words_of(DWORD error) {
  return std::system_category().message(static_cast<int>(error));
}

}  // namespace

child_end run_child(const std::string& program, std::vector<std::string> arguments,
                    const std::function<void(std::string_view)>& on_output) {
  child_end end;
  pipe_ends output;
  pipe_ends reply;
  PROCESS_INFORMATION process = {};
  if (make_pipe(output) && make_pipe(reply)) {
    arguments.push_back(std::to_string(reinterpret_cast<std::uintptr_t>(reply.write)));
    std::string command_line = quoted(program);
    for (const std::string& argument : arguments) command_line.append(1, ' ') += quoted(argument);
    STARTUPINFOA startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    startup.hStdOutput = output.write;
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    was_interrupted = 0;
    SetConsoleCtrlHandler(outlive_ctrl_c, TRUE);
    if (CreateProcessA(program.c_str(), command_line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                       nullptr, &startup, &process)) {
      close_end(output.write);
      close_end(reply.write);
      std::thread reply_reader(
          [&] { read_all(reply.read, [&](std::string_view bytes) { end.reply += bytes; }); });
      read_all(output.read, [&](std::string_view bytes) {
        std::string text;  // what the child's text mode added
        for (const char c : bytes) {
          if (c != '\r') text += c;
        }
        on_output(text);
      });
      reply_reader.join();
      WaitForSingleObject(process.hProcess, INFINITE);
      DWORD code = 0;
      GetExitCodeProcess(process.hProcess, &code);
      describe_end(code, end);
      end.interrupted = was_interrupted != 0;
    } else {
      end.words = words_of(GetLastError());
    }
    SetConsoleCtrlHandler(outlive_ctrl_c, FALSE);
  } else {
    end.words = words_of(GetLastError());
  }
  close_end(process.hProcess);
  close_end(process.hThread);
  for (HANDLE* left : {&output.read, &output.write, &reply.read, &reply.write}) close_end(*left);
  return end;
}

bool send_reply(const std::string& channel, std::string_view bytes) {
  std::uintptr_t handle = 0;
  const auto [last, error] =
      std::from_chars(channel.data(), channel.data() + channel.size(), handle);
  if (error != std::errc() || last != channel.data() + channel.size()) return false;
  DWORD count = 0;
  return WriteFile(reinterpret_cast<HANDLE>(handle), bytes.data(), static_cast<DWORD>(bytes.size()),
                   &count, nullptr) &&
         count == bytes.size();
}

std::string own_program() {
  std::string path(32768, '\0');
  path.resize(GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return path;
}

}  // namespace ocpan

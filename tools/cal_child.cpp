#include "tools/cal_child.h"

#include <cstring>

namespace ocpan {
namespace {

// Cuts what arrives in pieces into lines.
class line_cutter {
 public:
  explicit line_cutter(const std::function<void(const std::string&)>& on_line)
      : on_line_(on_line) {}

  void take(std::string_view bytes) {
    for (std::size_t end = bytes.find('\n'); end != std::string_view::npos;
         end = bytes.find('\n')) {
      line_ += bytes.substr(0, end);
      on_line_(line_);
      line_.clear();
      bytes.remove_prefix(end + 1);
    }
    line_ += bytes;
  }
  // Hands on what stands behind the last line end.
  void finish() {
    if (!line_.empty()) on_line_(line_);
    line_.clear();
  }

 private:
  const std::function<void(const std::string&)>& on_line_;
  std::string line_;
};

}  // namespace

std::string pack(const cal_reply& reply) {
  std::string bytes(sizeof(int) + sizeof(qa_summary), '\0');
  std::memcpy(bytes.data(), &reply.result, sizeof(int));
  std::memcpy(bytes.data() + sizeof(int), &reply.measures, sizeof(qa_summary));
  return bytes;
}

std::optional<cal_reply> unpack_cal_reply(std::string_view bytes) {
  if (bytes.size() != sizeof(int) + sizeof(qa_summary)) return std::nullopt;
  cal_reply reply;
  std::memcpy(&reply.result, bytes.data(), sizeof(int));
  std::memcpy(&reply.measures, bytes.data() + sizeof(int), sizeof(qa_summary));
  return reply;
}

cal_child_end run_cal_child(const std::string& program, const std::string& configuration,
                            const std::function<void(const std::string&)>& on_line) {
  line_cutter lines(on_line);
  cal_child_end end;
  // "--" keeps a name with a leading "-" from being an option.
  end.process = run_child(program, {cal_child_command, "--", configuration},
                          [&](std::string_view bytes) { lines.take(bytes); });
  lines.finish();
  end.reply = unpack_cal_reply(end.process.reply);
  return end;
}

}  // namespace ocpan

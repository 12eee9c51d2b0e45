// Writes the tool's manual pages and its completion for bash into a folder, from the text of
// its help. Runs when the tool is built.

#include <iostream>
#include <string>

#include "platform/text_file.h"
#include "tools/commands.h"
#include "tools/manual/bash_completion.h"
#include "tools/manual/man_page.h"

namespace {

bool write_text(const std::string& path, const std::string& text) {
  std::ofstream out = ocpan::open_output(path);
  out << text;
  if (out && ocpan::finish_output(out, path)) return true;
  std::cerr << path << " couldn't be written\n";
  return false;
}

}  // namespace

// Without memory the build may end as it likes. NOLINTNEXTLINE(bugprone-exception-escape)
int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: oc_pan_manual FOLDER\n";
    return 64;
  }
  const std::string folder = std::string(argv[1]) + "/";
  int exit_code = 0;
  CLI::App tool;
  ocpan::add_commands(tool, exit_code);
  const ocpan::command_help help = ocpan::help_of(tool);
  bool written = write_text(folder + help.name, ocpan::bash_completion(help));
  ocpan::visit_commands(help, [&](const ocpan::command_help& command) {
    const std::string page = ocpan::man_page(command, help, "oc_pan " OCPAN_TOOL_VERSION);
    written = write_text(folder + ocpan::page_name(command.name) + ".1", page) && written;
  });
  return written ? 0 : 3;
}

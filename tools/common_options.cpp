#include "tools/common_options.h"

namespace ocpan {

CLI::Option* add_out_option(CLI::App* command, std::string& file, const std::string& what) {
  return command->add_option("--out", file, "The file to write; " + what)->type_name("FILE");
}

CLI::Option* add_json_option(CLI::App* command, std::string& file) {
  return command->add_option("--json", file, "Write result and numbers as JSON to this file")
      ->type_name("FILE");
}

CLI::Option* add_quiet_flag(CLI::App* command, bool& quiet, const std::string& what_stays) {
  return command->add_flag("-q,--quiet", quiet, "Print less; " + what_stays);
}

}  // namespace ocpan

#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "include/oc_pan_cal.h"
#include "platform/child_process.h"
#include "tools/cal_child.h"
#include "tools/messages.h"

namespace ocpan {
namespace {

struct child_options {
  std::string configuration;
  std::string channel;
};

int call_and_reply(const child_options& options) {
  cal_reply reply;
  reply.result = ocPAN_Cal(options.configuration.c_str(), &reply.measures);
  return send_reply(options.channel, pack(reply)) ? 0 : exit_child_lost;
}

}  // namespace

void add_cal_child_command(CLI::App& tool, int& exit_code) {
  const auto options = std::make_shared<child_options>();
  CLI::App* command = tool.add_subcommand(cal_child_command, "");
  command->group("");  // for the tool itself: no help shows it
  command->add_option("CONFIG", options->configuration)->required();
  command->add_option("CHANNEL", options->channel)->required();
  command->callback([options, &exit_code] { exit_code = call_and_reply(*options); });
}

}  // namespace ocpan

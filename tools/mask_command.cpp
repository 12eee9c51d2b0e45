#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "include/oc_pan_cal.h"
#include "platform/native_path.h"
#include "src/console.h"
#include "tools/library_result.h"
#include "tools/messages.h"
#include "tools/picture_output.h"

namespace ocpan {
namespace {

// The pairs of a command line, split.
struct mask_files {
  std::vector<std::string> inputs;
  std::vector<std::string> outputs;
};

constexpr std::size_t most_masks = 8;  // as the library takes

constexpr const char* footer =
    R"(Turns mask pictures (the region white, the rest black) into raw masks: rows of 16-bit
little-endian weights without a header, 0 outside to 1023 at the region's deepest point,
each of its picture's size. One to eight pairs.

Examples:
  oc_pan mask mask_0.png mask_0.yuv
  oc_pan mask mask_0.png mask_0.yuv mask_1.png mask_1.yuv
  oc_pan view-yuv mask_0.yuv 1920 1080 seen.png

Exit codes:
  0    done, all masks are written
  2    a mask couldn't be written in full
  3    an output can't be opened
  4    an input can't be opened, or holds no picture
  64   wrong usage
  255  internal failure)";

// What is wrong with the names as a list of pairs; empty if nothing is.
std::string usage_problem(const std::vector<std::string>& names) {
  if (names.size() % 2 != 0) {
    return "each INPUT needs its OUTPUT; " + names.back() + " stands alone";
  }
  if (names.size() / 2 > most_masks) return "more than 8 masks; make them in two runs";
  return {};
}

mask_files split_pairs(const std::vector<std::string>& names) {
  mask_files files;
  for (std::size_t i = 0; i < names.size(); ++i) {
    (i % 2 == 0 ? files.inputs : files.outputs).push_back(names[i]);
  }
  return files;
}

// What speaks against the outputs as a whole; empty if nothing does.
std::string obstacle_to(const mask_files& files) {
  for (std::size_t i = 0; i < files.outputs.size(); ++i) {
    std::string problem = why_not_output(files.outputs[i], files.inputs);
    if (!problem.empty()) return problem;
    for (std::size_t k = 0; k < i; ++k) {
      if (native_path(files.outputs[k]) == native_path(files.outputs[i])) {
        return files.outputs[i] + " is named for two masks; give each its own output";
      }
    }
  }
  return {};
}

const char* advice_on(int result) {
  if (result == OCPAN_MALFORMED) return "; name pictures that are there and can be read";
  if (result == OCPAN_INPUT) return "; free space on the masks' disk";
  return "";
}

std::vector<const char*> pointers_to(const std::vector<std::string>& names) {
  std::vector<const char*> pointers;
  for (const std::string& name : names) pointers.push_back(name.c_str());
  return pointers;
}

// Runs the masks one by one, so that each is told when it is written.
int make_masks(const mask_files& files) {
  if (const std::string problem = obstacle_to(files); !problem.empty()) {
    complain(problem);
    return OCPAN_OUTPUT;
  }
  const std::vector<const char*> inputs = pointers_to(files.inputs);
  const std::vector<const char*> outputs = pointers_to(files.outputs);
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    const int result = ocPAN_MaskTransform(1, &inputs[i], &outputs[i]);
    if (result != OCPAN_SUCCESS) {
      // The library's own complaint names no file.
      complain(native_path(files.inputs[i]), " to ", native_path(files.outputs[i]), " ended with ",
               result, ": ", meaning_of(result), advice_on(result));
      return result & 0xFF;
    }
    print_line("Mask written: ", native_path(files.outputs[i]));
  }
  return OCPAN_SUCCESS;
}

}  // namespace

void add_mask_command(CLI::App& tool, int& exit_code) {
  const auto names = std::make_shared<std::vector<std::string>>();
  CLI::App* command = tool.add_subcommand("mask", "Turn mask pictures into raw weight masks");
  command->add_option("PAIRS", *names, "INPUT OUTPUT: a mask picture and the mask to write")
      ->type_name("FILE")
      ->required()
      ->expected(-2);  // two or more
  command->footer(footer);
  command->callback([names, &exit_code] {
    const std::string problem = usage_problem(*names);
    if (!problem.empty()) {
      complain(problem, " (run with --help for examples)");
      exit_code = exit_wrong_usage;
      return;
    }
    exit_code = make_masks(split_pairs(*names));
  });
}

}  // namespace ocpan

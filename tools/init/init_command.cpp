#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "include/oc_pan_cal.h"
#include "platform/native_path.h"
#include "platform/terminal.h"
#include "platform/text_file.h"
#include "src/console.h"
#include "src/result_codes.h"
#include "tools/boards/rig_pictures.h"
#include "tools/check/words.h"
#include "tools/commands.h"
#include "tools/common_options.h"
#include "tools/init/guess_board.h"
#include "tools/init/init_text.h"
#include "tools/messages.h"
#include "tools/output_check.h"
#include "tools/progress_bar.h"
#include "tools/verdict.h"

namespace ocpan {
namespace {

constexpr std::size_t board_samples = 5;
constexpr std::size_t lens_samples = 12;

struct init_options {
  std::vector<std::string> folders;
  std::string out = "rig.txt";
};

constexpr const char* footer =
    R"(Looks at the pictures in the folders and those below, tells cameras and series apart by
their names (cam1_07.png, left01.jpg, cam1/07.png, ...), and writes CONFIG for oc_pan check
and oc_pan cal. The board's shape, lenses and fields of view are guessed from a few
pictures. What to fill in stands in the file's comments. An older file is not replaced.

Examples:
  oc_pan init pictures
  oc_pan init left right --out stereo.txt

Exit codes:
  0    written
  2    a folder can't be opened
  3    CONFIG can't be written, or is there already
  10   written, but something in it must be mended first
  11   the pictures don't make a rig of 2 to 8 cameras; nothing is written
  64   wrong usage)";

// Some pictures spread evenly over a list.
std::vector<std::string> spread(const std::vector<std::string>& files, std::size_t count) {
  std::vector<std::string> some;
  const std::size_t taken = std::min(count, files.size());
  for (std::size_t k = 0; k < taken; ++k)
    some.push_back(files[(2 * k + 1) * files.size() / (2 * taken)]);
  return some;
}

// All pictures of a camera.
std::vector<std::string> pictures_of(const init_plan& plan, std::size_t camera) {
  std::vector<std::string> files;
  for (const layout_set& set : plan.layout.sets) {
    const auto at = std::find(set.cameras.begin(), set.cameras.end(), camera);
    if (at == set.cameras.end()) continue;
    const picture_series& series =
        plan.series[set.series[static_cast<std::size_t>(at - set.cameras.begin())]];
    for (const std::string& name : series.names) files.push_back(series.folder + "/" + name);
  }
  std::sort(files.begin(), files.end());
  files.erase(std::unique(files.begin(), files.end()), files.end());
  return files;
}

// Gives cameras of one kind and size the same field of view, the middle one of those that
// were guessed: a calibration holds them alike, and goes astray where they start apart.
void make_alike(std::vector<lens_guess>& lenses) {
  const std::vector<lens_guess> guessed = lenses;
  for (lens_guess& lens : lenses) {
    std::vector<float> fields;
    for (const lens_guess& other : guessed) {
      const bool alike = (other.camera.lens == 0) == (lens.camera.lens == 0) &&
                         other.camera.width == lens.camera.width &&
                         other.camera.height == lens.camera.height;
      if (alike && other.boards >= fewest_boards_for_a_lens) fields.push_back(other.camera.hfov);
    }
    if (fields.empty()) continue;
    std::sort(fields.begin(), fields.end());
    lens.camera.hfov = fields[fields.size() / 2];
  }
}

// Looks into the pictures for board and lenses.
void guess_contents(init_plan& plan) {
  progress_line bar(std::cerr, standard_error_is_terminal());
  bar.show("looking for the board ...");
  const std::size_t cameras = plan.layout.cameras.size();
  std::vector<std::string> all;
  for (std::size_t camera = 0; camera < cameras; ++camera) {
    for (const std::string& file : pictures_of(plan, camera)) all.push_back(file);
  }
  plan.board = guess_board(spread(all, board_samples));
  for (std::size_t camera = 0; camera < cameras; ++camera) {
    bar.show(bar_text(static_cast<int>(camera), static_cast<int>(cameras), "cameras"));
    plan.lenses.push_back(guess_lens(spread(pictures_of(plan, camera), lens_samples), plan.board));
  }
  make_alike(plan.lenses);
}

std::vector<std::string> doubts_about(const init_plan& plan) {
  std::vector<std::string> doubts = plan.layout.doubts;
  if (plan.board.first == 0) {
    doubts.push_back("No board of a common shape was found; correct board_shape in every set.");
  }
  for (std::size_t camera = 0; camera < plan.lenses.size(); ++camera) {
    const lens_guess& lens = plan.lenses[camera];
    if (lens.sizes_differ) {
      doubts.push_back(words("The pictures of camera ", camera + 1,
                             " differ in size; take those of the other size out."));
    }
    if (plan.board.first > 0 && lens.boards < fewest_boards_for_a_lens) {
      doubts.push_back(words("Too few boards were found to guess the lens of camera ", camera + 1,
                             "; correct lens and hfov."));
    }
  }
  return doubts;
}

// Why the series don't make a rig, with what to do; empty if they do.
std::string obstacle_to_rig(const init_plan& plan) {
  const std::size_t cameras = plan.layout.cameras.size();
  if (cameras < 2 || cameras > 8) {
    return words("these folders hold the pictures of ", cameras,
                 cameras == 1 ? " camera" : " cameras",
                 ", and a rig has 2 to 8; name the folders of all its cameras, and number the "
                 "pictures as in cam1_01.png or cam1/01.png");
  }
  for (const picture_series& series : plan.series) {
    const std::string text = series.folder + series.before + series.after;
    if (text.find_first_of(":'\\") == text.npos) continue;
    return words("a configuration can't name the pictures of ", series.folder,
                 " (a colon, quote or backslash stands in their names); rename them");
  }
  return {};
}

std::string output_beside(const std::string& configuration) {
  std::error_code failure;
  std::filesystem::path path = std::filesystem::absolute(native_path(configuration), failure);
  return path.lexically_normal().replace_extension(".cal").generic_string();
}

// Reads what was written as a calibration would.
void verify(const std::string& file, std::vector<std::string>& doubts) {
  rig_pictures pictures;
  std::string said;
  if (read_rig_pictures(pictures, said, file) == code::success) return;
  doubts.push_back(
      words("The library doesn't take the file yet; oc_pan check ", file, " tells why."));
}

int write_configuration(const init_options& options, init_plan& plan) {
  std::ofstream out = open_output(options.out);
  out << init_text(plan);
  if (!finish_output(out, options.out)) {
    complain(options.out, " couldn't be written; free some space or name another file");
    return OCPAN_OUTPUT;
  }
  std::vector<std::string> doubts = doubts_about(plan);
  verify(options.out, doubts);
  print_line("Written: ", options.out);
  for (std::size_t camera = 0; camera < plan.lenses.size(); ++camera) {
    const camera_details& details = plan.lenses[camera].camera;
    print_line("  camera ", camera + 1, " (", plan.layout.cameras[camera], "): ", details.width,
               " by ", details.height, ", lens ", details.lens, ", about ", details.hfov,
               " degrees");
  }
  for (const layout_set& set : plan.layout.sets) {
    print_line("  set ", set.name, ": ", plan.series[set.series.front()].names.size(),
               " frames of ", set.cameras.size(), set.cameras.size() == 1 ? " camera" : " cameras");
  }
  if (plan.board.first > 0) print_line("  board of ", plan.board.first, " by ", plan.board.second);
  for (const std::string& doubt : doubts) complain(doubt);
  print_line("Fill in board_scale, the side of a square, then run oc_pan check ", options.out);
  return exit_code_of(doubts.empty() ? verdict::good : verdict::doubtful);
}

int run_init(const init_options& options) {
  std::error_code failure;
  if (std::filesystem::exists(native_path(options.out), failure)) {
    complain(options.out, " is there already; remove it, or name another file with --out");
    return OCPAN_OUTPUT;
  }
  if (const std::string why = why_not_writable(options.out); !why.empty()) {
    complain(why);
    return OCPAN_OUTPUT;
  }
  init_plan plan;
  std::vector<std::string> lone;
  for (const std::string& folder : options.folders) {
    if (find_series(plan.series, lone, folder)) continue;
    complain("the folder ", folder, " can't be opened; name a folder of pictures");
    return OCPAN_INPUT;
  }
  plan.layout = lay_out(plan.series);
  plan.output = output_beside(options.out);
  if (const std::string why = obstacle_to_rig(plan); !why.empty()) {
    complain(why);
    return exit_code_of(verdict::unusable);
  }
  if (!lone.empty()) {
    print_line("Left out, as they belong to no series of three or more: ", lone.size(),
               lone.size() == 1 ? " picture, " : " pictures, the first ", lone.front());
  }
  for (const std::size_t k : plan.layout.left_out) {
    const picture_series& series = plan.series[k];
    print_line("Left out, as its camera can't be told by its name: ", series.folder, "/",
               series.names.front(), " and ", series.names.size() - 1, " more");
  }
  guess_contents(plan);
  return write_configuration(options, plan);
}

}  // namespace

void add_init_command(CLI::App& tool, int& exit_code) {
  const auto options = std::make_shared<init_options>();
  CLI::App* command =
      tool.add_subcommand("init", "Write a configuration for folders of chessboard pictures");
  command->add_option("FOLDER", options->folders, "Folders of pictures")
      ->type_name("FOLDER")
      ->required();
  add_out_option(command, options->out, "the configuration, rig.txt if left out");
  command->footer(footer);
  command->callback([options, &exit_code] { exit_code = run_init(*options); });
}

}  // namespace ocpan

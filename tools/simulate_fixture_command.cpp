#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include <CLI/CLI.hpp>

#include "include/oc_pan_cal.h"
#include "platform/native_path.h"
#include "simulator/fixture_run.h"
#include "simulator/rig_json.h"
#include "src/console.h"
#include "tools/messages.h"
#include "tools/output_folder.h"

namespace ocpan {
namespace {

struct fixture_options {
  std::string rig;
  std::string folder;
  fixture_description fixture;  // its pole and latitudes aside
  double radius_metres = 1;
  double turn_cells = 0.7;
  fixture_disturbance disturbance;
  bool all_round = false;
};

// The fixture that suits the rig, with what the user chose.
fixture_description chosen_fixture(const fixture_options& options, const rig_description& rig) {
  const fixture_description suitable = suitable_fixture(rig);
  fixture_description fixture = options.fixture;
  fixture.radius_mm = options.radius_metres * 1000;
  fixture.pole = suitable.pole;
  fixture.low_latitude_degrees =
      options.all_round ? -suitable.high_latitude_degrees : suitable.low_latitude_degrees;
  fixture.high_latitude_degrees = suitable.high_latitude_degrees;
  fixture.seed = suitable.seed;
  return fixture;
}

int make_fixture(const fixture_options& options) {
  rig_description rig;
  if (const std::string problem = read_rig_file(rig, options.rig); !problem.empty()) {
    std::error_code failure;
    const bool there = std::filesystem::exists(native_path(options.rig), failure);
    complain(problem, "; correct ", options.rig,
             ", or write a new one with oc_pan simulate preset");
    return there ? OCPAN_MALFORMED : OCPAN_INPUT;
  }
  if (const std::string problem = make_folder(options.folder); !problem.empty()) {
    complain(problem);
    return OCPAN_OUTPUT;
  }
  const fixture_description fixture = chosen_fixture(options, rig);
  fixture_disturbance disturbance = options.disturbance;
  disturbance.turn_degrees = options.turn_cells * fixture.cell_degrees;
  fixture_files files;
  if (const std::string problem = write_fixture(files, options.folder, rig, fixture, disturbance);
      !problem.empty()) {
    complain(problem, "; free space on its disk, or name another folder");
    return OCPAN_OUTPUT;
  }
  const double seam =
      worst_seam_degrees(disturbed_models(models_of(rig), disturbance), rig, fixture);
  for (const std::string& picture : files.pictures) print_line("Picture                ", picture);
  print_line("True calibration       ", files.true_calibration);
  print_line("Disturbed calibration  ", files.disturbed_calibration);
  print_line("Its worst seam         ", seam, " degrees");
  return OCPAN_SUCCESS;
}

void add_pattern_options(CLI::App* command, fixture_options& options) {
  command
      ->add_option(
          "--radius", options.radius_metres,
          "Radius of the sphere that is seen, 1000 units of the calibration; the fixture's")
      ->type_name("METRES")
      ->check(CLI::Range(0.2, 20.0))
      ->capture_default_str();
  command->add_option("--cell", options.fixture.cell_degrees, "Side of a cell, degrees")
      ->type_name("DEG")
      ->check(CLI::Range(1.0, 30.0))
      ->capture_default_str();
  command->add_flag("--all-round", options.all_round,
                    "Cover both halves of the sphere; with more than two cameras a production "
                    "run then loses its way");
  command->add_option("--dark", options.fixture.dark, "Grey value of the dark cells")
      ->type_name("GREY")
      ->check(CLI::Range(0.0, 255.0))
      ->capture_default_str();
  command->add_option("--bright", options.fixture.bright, "Grey value of the bright cells")
      ->type_name("GREY")
      ->check(CLI::Range(0.0, 255.0))
      ->capture_default_str();
  command->add_option("--blur", options.fixture.blur, "Sigma of the blur, pixels")
      ->type_name("PIXELS")
      ->check(CLI::Range(0.0, 20.0))
      ->capture_default_str();
  command->add_option("--noise", options.fixture.noise, "Sigma of the noise, grey values")
      ->type_name("GREY")
      ->check(CLI::Range(0.0, 100.0))
      ->capture_default_str();
  command->add_option("--vignetting", options.fixture.vignetting, "Loss of light in the corners")
      ->type_name("PART")
      ->check(CLI::Range(0.0, 0.9))
      ->capture_default_str();
}

void add_disturbance_options(CLI::App* command, fixture_options& options) {
  command
      ->add_option("--turn", options.turn_cells,
                   "Most that two cameras of the disturbed calibration are turned against "
                   "one another, cells")
      ->type_name("CELLS")
      ->check(CLI::Range(0.0, 20.0))
      ->capture_default_str();
  command->add_option("--move", options.disturbance.move_mm, "Most that a camera is moved")
      ->type_name("MM")
      ->check(CLI::Range(0.0, 100.0))
      ->capture_default_str();
  command->add_option("--scale", options.disturbance.scale, "Most that a picture's scale changes")
      ->type_name("PART")
      ->check(CLI::Range(0.0, 0.5))
      ->capture_default_str();
  command->add_option("--seed", options.disturbance.seed, "Of the disturbance")
      ->type_name("NUMBER")
      ->capture_default_str();
}

}  // namespace

void add_simulate_fixture_command(CLI::App& simulate, int& exit_code) {
  const auto options = std::make_shared<fixture_options>();
  CLI::App* command = simulate.add_subcommand(
      "fixture", "Make the pictures of a production fixture, and a calibration to be refined");
  command->add_option("RIG.json", options->rig, "The rig, as simulate preset writes it; in mm")
      ->type_name("FILE")
      ->required();
  command->add_option("OUT", options->folder, "Folder for the files; made if it isn't there")
      ->type_name("FOLDER")
      ->required();
  add_pattern_options(command, *options);
  add_disturbance_options(command, *options);
  command->footer(
      R"(The fixture is a sphere about the rig with a checker pattern inside: all round for two
cameras, on one half for more. A production run finds back a turn of up to about one cell.

Examples:
  oc_pan simulate preset 4-lens1 --out rig.json
  oc_pan simulate fixture rig.json fixture --cell 5
  oc_pan prod --radius 1 fixture/disturbed.txt refined.cal fixture/*.png

Exit codes:
  0    done
  2    the rig's description isn't there
  3    a file can't be written
  4    the rig's description is malformed
  64   wrong usage
  255  internal failure)");
  command->callback([options, &exit_code] { exit_code = make_fixture(*options); });
}

}  // namespace ocpan

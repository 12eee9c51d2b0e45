#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include <CLI/CLI.hpp>

#include "include/oc_pan_cal.h"
#include "platform/native_path.h"
#include "simulator/masks.h"
#include "simulator/rig_calibration.h"
#include "simulator/rig_json.h"
#include "simulator/world.h"
#include "src/console.h"
#include "tools/messages.h"
#include "tools/output_folder.h"

namespace ocpan {
namespace {

struct views_options {
  std::string rig;
  std::string folder;
  double overlap_degrees = 5;
  double radius = 10;  // 1000 units of the rig
  int width = 2048;
};

// Makes the folder, or tells what is wrong with the rig. Gives an exported code.
int prepare(const std::string& rig_problem, const views_options& options) {
  if (!rig_problem.empty()) {
    std::error_code failure;
    const bool there = std::filesystem::exists(native_path(options.rig), failure);
    complain(rig_problem, "; correct ", options.rig,
             ", or write a new one with oc_pan simulate preset");
    return there ? OCPAN_MALFORMED : OCPAN_INPUT;
  }
  if (const std::string problem = make_folder(options.folder); !problem.empty()) {
    complain(problem);
    return OCPAN_OUTPUT;
  }
  return OCPAN_SUCCESS;
}

int finish(const std::string& problem, const views_options& options, const char* files) {
  if (!problem.empty()) {
    complain(problem, "; free space on its disk, or name another folder");
    return OCPAN_OUTPUT;
  }
  print_line(files, " in ", options.folder);
  return OCPAN_SUCCESS;
}

int make_masks(const views_options& options) {
  rig_description rig;
  const std::string problem = read_rig_or_calibration(rig, options.rig);
  if (const int result = prepare(problem, options)) return result;
  return finish(write_masks(options.folder, rig, options.overlap_degrees), options,
                "mask_0.png and so on");
}

int make_world(const views_options& options) {
  rig_description rig;
  if (const int result = prepare(read_rig_file(rig, options.rig), options)) return result;
  return finish(write_world(options.folder, rig, options.radius * 1000, options.width), options,
                "world_0.png and so on, and panorama.png,");
}

void add_operands(CLI::App* command, views_options& options, const char* rig_help) {
  command->add_option("RIG.json", options.rig, rig_help)->type_name("FILE")->required();
  command->add_option("OUT", options.folder, "Folder for the pictures; made if it isn't there")
      ->type_name("FOLDER")
      ->required();
}

}  // namespace

void add_simulate_masks_command(CLI::App& simulate, int& exit_code) {
  const auto options = std::make_shared<views_options>();
  CLI::App* command =
      simulate.add_subcommand("masks", "Make the masks of a rig, from which tables are made");
  add_operands(command, *options, "The rig, as simulate preset writes it, or a calibration file");
  command
      ->add_option("--overlap", options->overlap_degrees,
                   "How far each mask goes beyond the half way to the next camera, degrees")
      ->type_name("DEG")
      ->check(CLI::Range(0.0, 90.0))
      ->capture_default_str();
  command->footer(
      R"(A camera's mask holds the pixels that look nearer to its axis than to any other camera's.

Examples:
  oc_pan simulate masks rig.json masks --overlap 5
  oc_pan simulate masks rig.cal masks
  oc_pan lut rig.cal masks/mask tables/lut

Exit codes:
  0    done
  2    the rig's description isn't there
  3    a file can't be written
  4    the rig's description is malformed
  64   wrong usage
  255  internal failure)");
  command->callback([options, &exit_code] { exit_code = make_masks(*options); });
}

void add_simulate_world_command(CLI::App& simulate, int& exit_code) {
  const auto options = std::make_shared<views_options>();
  CLI::App* command = simulate.add_subcommand(
      "world", "Make a picture from each camera in a textured world, and its true panorama");
  add_operands(command, *options, "The rig, as simulate preset writes it");
  command
      ->add_option(
          "--radius", options->radius,
          "Radius of the sphere that is seen, 1000 units of the calibration; how far away\n"
          "the world is")
      ->type_name("METRES")
      ->check(CLI::Range(0.5, 1e6))
      ->capture_default_str();
  command->add_option("--width", options->width, "Width of the panorama; the true one")
      ->type_name("PIXELS")
      ->check(CLI::Range(16, 16384))
      ->capture_default_str();
  command->footer(R"(Examples:
  oc_pan simulate world rig.json world
  oc_pan preview tables/lut world/world_0.png world/world_1.png --out panorama.jpg

Exit codes:
  0    done
  2    the rig's description isn't there
  3    a file can't be written
  4    the rig's description is malformed
  64   wrong usage
  255  internal failure)");
  command->callback([options, &exit_code] { exit_code = make_world(*options); });
}

}  // namespace ocpan

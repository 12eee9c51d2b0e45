#include "tools/prod_stage.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <system_error>

#include "platform/terminal.h"
#include "tools/cal_outputs.h"

namespace ocpan {
namespace {

// In the order in which they appear, with what runs once the first of them is there.
struct picture_kind {
  const char* prefix;
  const char* next_stage;
};
constexpr picture_kind picture_kinds[] = {
    {"0.ori_point_", "corners found, looking for cells"},
    {"1.black_quads_", "cells found, matching them"},
    {"1.white_quads_", "cells found, matching them"},
    {"2.naive_matches_", "cells matched, searching the rotations"},
    {"3.matches_", "rotations found, refining the calibration"},
};

bool starts_with(const std::string& name, const std::string& start) {
  return name.compare(0, start.size(), start) == 0;
}

bool is_debug_picture(const std::string& name) {
  return std::filesystem::path(name).extension() == ".jpg" &&
         std::any_of(std::begin(picture_kinds), std::end(picture_kinds),
                     [&](const picture_kind& kind) { return starts_with(name, kind.prefix); });
}

}  // namespace

std::vector<std::string> prod_debug_pictures() {
  std::vector<std::string> names;
  std::error_code failure;
  std::filesystem::directory_iterator entries(debug_folder, failure);
  for (; !failure && entries != std::filesystem::directory_iterator(); entries.increment(failure)) {
    std::string name = entries->path().filename().string();
    if (is_debug_picture(name)) names.push_back(std::move(name));
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string forget_earlier_run() {
  std::vector<std::string> files = {prod_report};
  for (const std::string& name : prod_debug_pictures()) {
    files.push_back(debug_folder + ("/" + name));
  }
  for (const std::string& file : files) {
    std::error_code failure;
    std::filesystem::remove(file, failure);
    if (failure) return file;
  }
  return {};
}

std::string prod_stage(const std::vector<std::string>& pictures) {
  std::string stage = "reading the pictures, looking for corners";
  for (const picture_kind& kind : picture_kinds) {
    if (std::any_of(pictures.begin(), pictures.end(),
                    [&](const std::string& name) { return starts_with(name, kind.prefix); })) {
      stage = kind.next_stage;
    }
  }
  return stage + " ...";
}

stage_display::stage_display() : line_(std::cerr, standard_error_is_terminal()) {
  if (!standard_error_is_terminal()) return;
  thread_ = std::jthread([this](const std::stop_token& stop) {
    constexpr std::chrono::milliseconds pause(50);
    while (!stop.stop_requested()) {
      line_.show(prod_stage(prod_debug_pictures()));
      std::this_thread::sleep_for(pause);
    }
  });
}

}  // namespace ocpan

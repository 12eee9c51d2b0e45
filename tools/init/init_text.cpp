#include "tools/init/init_text.h"

#include <algorithm>

#include "tools/check/words.h"

namespace ocpan {
namespace {

// The folder that all series have in common.
std::string common_folder(const std::vector<picture_series>& series) {
  std::string common = series.front().folder + "/";
  for (const picture_series& of : series) {
    const std::string folder = of.folder + "/";
    const auto end = std::mismatch(common.begin(), common.end(), folder.begin(), folder.end());
    common.erase(end.first, common.end());
    common.erase(common.rfind('/') + 1);
  }
  if (common.size() > 1) common.pop_back();
  return common;
}

// "'a', 'b'", one entry if all are the same and `once` is given.
std::string quoted_list(const std::vector<std::string>& entries, bool once) {
  const bool same = std::all_of(entries.begin(), entries.end(),
                                [&](const std::string& entry) { return entry == entries.front(); });
  std::string list;
  for (const std::string& entry : entries) {
    list += words(list.empty() ? "" : ", ", "'", entry, "'");
    if (once && same) break;
  }
  return list;
}

std::string camera_text(const lens_guess& lens, const std::string& name) {
  std::string said = name;  // a comment can't hold these signs
  std::replace(said.begin(), said.end(), ':', '_');
  std::replace(said.begin(), said.end(), '-', '_');
  const camera_details& camera = lens.camera;
  return words("  # ", said,
               lens.boards < fewest_boards_for_a_lens
                   ? ", lens and hfov are placeholders, fill them in"
                   : words(", lens and hfov guessed from ", lens.boards, " boards"),
               "\n  - width: ", camera.width, ", height: ", camera.height, ", hfov: ", camera.hfov,
               ", lens: ", camera.lens, "\n");
}

std::string set_text(const init_plan& plan, const layout_set& set, const std::string& base) {
  std::vector<std::string> folders, patterns;
  std::string ids;
  for (std::size_t k = 0; k < set.cameras.size(); ++k) {
    const picture_series& series = plan.series[set.series[k]];
    ids += words(ids.empty() ? "" : ", ", set.cameras[k] + 1);
    const std::size_t start = base == "/" ? 1 : base.size() + 1;
    folders.push_back(series.folder.size() < start ? std::string() : series.folder.substr(start));
    patterns.push_back(pattern_of(series));
  }
  const bool in_base = std::all_of(folders.begin(), folders.end(),
                                   [](const std::string& folder) { return folder.empty(); });
  for (std::string& folder : folders) {
    if (folder.empty()) folder.push_back('.');
  }
  const bool known = plan.board.first > 0;
  return words("  - set_name: '", set.name, "', board_scale: 1\n", "    cameras: [", ids, "]\n",
               in_base ? "" : words("    subdir: [", quoted_list(folders, true), "]\n"),
               "    filename_patterns: [", quoted_list(patterns, false), "]\n",
               "    board_shape: [", known ? plan.board.first : 9, ", ",
               known ? plan.board.second : 6, "]\n");
}

}  // namespace

std::string init_text(const init_plan& plan) {
  const std::string base = common_folder(plan.series);
  std::string text = words(
      "# Made by oc_pan init from the pictures' names. A comment must hold neither a colon nor a\n"
      "# dash. Check it with oc_pan check.\n",
      "base_directory: '", base, "'\noutput_filename: '", plan.output, "'\n\n",
      "# hfov is the horizontal field of view in degrees, a few per cent off does no harm,\n"
      "# but give cameras with the same lens the same number.\n"
      "# lens is 0 for a rectilinear lens, 1 for a fisheye, 2 for one whose whole circle shows.\n",
      "camera_info:\n");
  for (std::size_t k = 0; k < plan.lenses.size(); ++k) {
    text += camera_text(plan.lenses[k], plan.layout.cameras[k]);
  }
  text += words("\ncalibration_sets:\n",
                "# board_scale is the side of a square. 1 makes the square the unit of all "
                "lengths, 25 makes\n"
                "# it millimetres for squares of 25 mm. Fill it in, alike in all sets.\n",
                "# board_shape counts inner corners, where four squares meet.",
                plan.board.first > 0 ? "" : " It couldn't be told from the pictures, fill it in.",
                "\n");
  for (const layout_set& set : plan.layout.sets) text += set_text(plan, set, base);
  return text;
}

}  // namespace ocpan

#include "tools/check/rig_check.h"

#include <utility>

#include "platform/text_file.h"
#include "src/result_codes.h"
#include "tools/check/config_remarks.h"
#include "tools/check/pair_remarks.h"
#include "tools/check/tame_findings.h"
#include "tools/check/useless_views.h"
#include "tools/check/words.h"
#include "tools/check/wrong_shapes.h"
#include "tools/library_result.h"

namespace ocpan {
namespace {

void add(std::vector<finding>& to, std::vector<finding> more) {
  to.insert(to.end(), more.begin(), more.end());
}

// The last line of the library's that isn't empty.
std::string last_line(const std::string& said) {
  const std::size_t end = said.find_last_not_of('\n');
  if (end == said.npos) return {};
  const std::size_t before = said.rfind('\n', end);
  const std::size_t start = before == said.npos ? 0 : before + 1;
  return said.substr(start, end + 1 - start);
}

// What the library refuses is unusable, whatever the walk thinks of it.
void check_library(rig_check& check, const std::string& said) {
  const bool ended_early = said.find("Camera Details incomplete") != said.npos;
  if (check.result == code::success && !ended_early) return;
  check.library_said = printable(last_line(said));
  if (verdict_of(check.findings) == verdict::unusable) return;
  const int exported = map_result(check.result);
  check.findings.push_back(
      {verdict::unusable, check.configuration,
       words("the library refuses the configuration (", exported, ", ", meaning_of(exported), ")"),
       "see its last line"});
}

// The cameras of whose pictures another finding tells why no board is in them.
std::vector<bool> explained_cameras(const std::vector<camera_pictures>& pictures) {
  std::vector<bool> explained;
  for (const camera_pictures& of : pictures) {
    explained.push_back(of.found + of.not_found == 0 && of.wrong_size > 0);
  }
  return explained;
}

}  // namespace

void check_pictures(rig_check& check, const rig_pictures& pictures, const found_boards& boards) {
  const std::vector<seen_board> seen = seen_boards(pictures, boards);
  check.pictures_seen = true;
  check.pictures = count_pictures(pictures, boards);
  check.links = find_links(pictures.cameras.size(), seen);
  check.coverage = find_coverage(pictures, seen);
  check.repeated = find_repeated(boards, pictures);
  for (const cal_frame_set& set : pictures.sets) check.set_names.push_back(set.name);
  add(check.findings, picture_remarks(pictures, boards));
  add(check.findings, link_remarks(pictures, check.links, explained_cameras(check.pictures)));
  add(check.findings, pair_remarks(pictures, boards, judge_pairs(pictures, boards)));
  add(check.findings, coverage_remarks(pictures, check.coverage));
  add(check.findings, repeat_remarks(pictures, boards, check.repeated));
  add(check.findings, useless_view_remarks(pictures, boards));
}

rig_check check_rig(const std::string& configuration,
                    const std::function<void(int done, int total)>& progress) {
  rig_check check;
  check.configuration = configuration;
  std::ifstream in = open_input(configuration);
  const written_config written = walk_configuration(configuration, in);
  check.findings = written.refusals;
  add(check.findings, config_remarks(written));
  add(check.findings, series_remarks(written));
  check.findings = tame_findings(std::move(check.findings), configuration);
  std::ifstream again = open_input(configuration, std::ios::binary);
  if (!looks_like_text(again)) {
    check.findings.insert(check.findings.begin(),
                          {verdict::unusable, configuration, "this doesn't look like a text file",
                           "name the configuration, a text saved as UTF-8"});
  }
  rig_pictures pictures;
  std::string said;
  check.result = read_rig_pictures(pictures, said, configuration);
  check_library(check, said);
  if (check.result != code::success || pictures.sets.empty()) return check;
  // What is found for a faulty configuration isn't worth a file, wherever that would be.
  if (verdict_of(check.findings) == verdict::unusable) pictures.output_file.clear();
  const std::vector<wrong_shape> shapes = find_wrong_shapes(pictures);
  add(check.findings, shape_remarks(shapes));
  if (!shapes.empty()) return check;  // the search would take minutes and find nothing
  const found_boards boards = find_boards(pictures, progress, check.warnings);
  check_pictures(check, pictures, boards);
  return check;
}

}  // namespace ocpan

#include "tools/check/check_report.h"

#include <algorithm>
#include <cmath>
#include <iomanip>

#include "src/console.h"
#include "src/result_codes.h"
#include "tools/check/words.h"

namespace ocpan {
namespace {

constexpr int column_width = 12;

template <typename Value>
std::string cell(const Value& value, int width = column_width) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << std::setw(width) << value;
  return text.str();
}

std::string camera_name(std::size_t camera) { return words("  camera ", camera + 1); }

void print_pictures(const rig_check& check) {
  print_line("Pictures    ", cell("board found"), cell("not found"), cell("unreadable"),
             cell("other size"), cell("cut short"));
  for (std::size_t camera = 0; camera < check.pictures.size(); ++camera) {
    const camera_pictures& of = check.pictures[camera];
    print_line(camera_name(camera), "  ", cell(of.found), cell(of.not_found), cell(of.unreadable),
               cell(of.wrong_size), cell(of.cut_short));
  }
  print_line("");
}

void print_shared(const rig_check& check) {
  constexpr int width = 5;
  std::string head = "            ";
  const auto& shared = check.links.shared;
  for (std::size_t camera = 0; camera < shared.size(); ++camera) head += cell(camera + 1, width);
  print_line("Boards seen together, by camera");
  print_line(head);
  for (std::size_t a = 0; a < shared.size(); ++a) {
    std::string line = camera_name(a) + "  ";
    for (std::size_t b = 0; b < shared.size(); ++b) line += cell(shared[a][b], width);
    print_line(line);
  }
  std::string parts;
  for (const auto& part : check.links.parts) {
    std::string cameras;
    for (const std::size_t camera : part) cameras += words(cameras.empty() ? "" : " ", camera + 1);
    parts += words(parts.empty() ? "" : " | ", cameras);
  }
  print_line("Connected parts: ", check.links.parts.size(), " (", parts, ")");
  print_line("");
}

void print_coverage(const rig_check& check) {
  print_line("Coverage, corners by cell: . none, 1 to 9, a from 10, b from 20 and so on");
  for (std::size_t camera = 0; camera < check.coverage.size(); ++camera) {
    const camera_coverage& of = check.coverage[camera];
    print_line(camera_name(camera), ": ", std::lround(100 * of.share),
               " % of the picture, to about ", std::lround(of.farthest_degrees),
               " degrees from the axis");
    for (const std::string& line : coverage_map(of)) print_line("    ", line);
  }
  print_line("");
}

void print_findings(const rig_check& check, bool brief) {
  for (const verdict weight : {verdict::unusable, verdict::doubtful, verdict::good}) {
    if (brief && weight == verdict::good) continue;
    const std::string label = weight == verdict::good ? "hint" : word_of(weight);
    for (const finding& found : check.findings) {
      if (found.weight != weight) continue;
      print_line(label, ": ", found.where, ": ", found.what);
      if (!found.mend.empty()) print_line("    ", found.mend);
    }
  }
  if (!check.library_said.empty()) print_line("The library says: ", check.library_said);
}

}  // namespace

void print_check(const rig_check& check, bool brief) {
  if (check.pictures_seen && !brief) {
    print_pictures(check);
    print_shared(check);
    print_coverage(check);
  }
  print_findings(check, brief);
  const auto count = [&](verdict weight) {
    return std::count_if(check.findings.begin(), check.findings.end(),
                         [&](const finding& found) { return found.weight == weight; });
  };
  print_line("Verdict: ", word_of(verdict_of(check.findings)), " (", count(verdict::unusable),
             " unusable, ", count(verdict::doubtful), " doubtful, ", count(verdict::good),
             " hints)");
}

}  // namespace ocpan

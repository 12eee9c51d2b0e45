#include "tools/report/base64.h"
#include "tools/report/markup.h"
#include "tools/report/page_parts.h"
#include "tools/report/sections.h"

namespace ocpan {
namespace {

std::string file_alone(const std::string& path) {
  const std::size_t slash = path.find_last_of("/\\");
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string fate_of(const report_content& content, const rig_picture& picture) {
  switch (picture.finding.state) {
    case picture_state::found:
      break;
    case picture_state::not_found:
      return "no board found";
    case picture_state::unreadable:
      return "can't be read";
    case picture_state::wrong_size:
      return "not the camera's size";
  }
  if (!picture.board) return "board found";
  const evaluated_board& board = content.quality.boards[picture.board->board];
  if (board.fate != board_fate::used) return "left out: " + why_left_out(board);
  const evaluated_view& view = board.views[picture.board->view];
  return "off by " + measure(view.rms_pixels) + " px (RMS)";
}

std::string small_picture(const report_content& content, const thumbnail& small) {
  const rig_picture& picture = content.every_picture[small.picture];
  const std::string name = file_alone(picture.file);
  const std::string fate = joined("set ", content.input.pictures.sets[picture.set].name, ", ",
                                  fate_of(content, picture));
  return joined("<figure><img alt=\"",
                escaped(joined("Picture ", name, " of ", camera_name(picture.camera), ": ", fate)),
                "\" width=\"", std::to_string(small.width), "\" height=\"",
                std::to_string(small.height), "\" src=\"data:image/jpeg;base64,",
                base64(small.jpeg), "\"/><figcaption><b>", escaped(name), "</b> ", escaped(fate),
                "</figcaption></figure>\n");
}

}  // namespace

std::string pictures_section(const report_content& content) {
  if (content.thumbnails.empty()) return "";
  std::string body;
  const std::size_t shown = content.thumbnails.size(), all = content.every_picture.size();
  if (shown < all) {
    body += paragraph(joined("Of ", counted(all, "picture"), " the ", std::to_string(shown),
                             " most telling are shown: those without a board, left out or with "
                             "the largest residuals come first."));
  }
  for (std::size_t camera = 0; camera < content.input.models.size(); ++camera) {
    std::string figures;
    for (const thumbnail& small : content.thumbnails) {
      if (content.every_picture[small.picture].camera == camera) {
        figures += small_picture(content, small);
      }
    }
    if (figures.empty()) continue;
    body += joined("<h3>Camera ", std::to_string(camera + 1), "</h3>\n<div class=\"pictures\">\n",
                   figures, "</div>\n");
  }
  return section("pictures", "Pictures with the corners found", body);
}

}  // namespace ocpan

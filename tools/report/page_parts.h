#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/verdict.h"

namespace ocpan {

// Pieces of the page. Arguments called `markup` or `content` are markup already; all else
// is text and gets escaped.

[[nodiscard]] std::string section(std::string_view id, std::string_view heading,
                                  std::string_view content);
[[nodiscard]] std::string paragraph(std::string_view words, std::string_view css_class = "");
// A chart under its heading, with a line of explanation.
[[nodiscard]] std::string chart(std::string_view heading, std::string_view explanation,
                                std::string_view drawing_markup);
// Several charts side by side, as many as the page's width holds.
[[nodiscard]] std::string charts(std::string_view content);
// The same for drawings 320 wide.
[[nodiscard]] std::string small_charts(std::string_view content);

// A sign and the word of a verdict, so that it is told by more than its colour.
[[nodiscard]] std::string badge(verdict judged);

// A number in large type over what it is.
[[nodiscard]] std::string figure_of_merit(std::string_view value, std::string_view meaning);

// One cell of a table: text, or markup such as a badge.
struct cell {
  std::string content;
  bool is_markup = false;
};
// A table that on a phone shows each row as a card, its headings beside the values.
[[nodiscard]] std::string table(const std::vector<std::string>& headings,
                                const std::vector<std::vector<cell>>& rows);

// The colour of a camera: eight that people with any kind of colour vision tell apart.
[[nodiscard]] std::string_view camera_colour(std::size_t camera);
// "camera 1": people count cameras from 1, as configurations do.
[[nodiscard]] std::string camera_name(std::size_t camera);
// "1 board", "2 boards".
[[nodiscard]] std::string counted(std::size_t count, std::string_view thing);

// The page's style sheet.
[[nodiscard]] std::string_view style_sheet();

}  // namespace ocpan

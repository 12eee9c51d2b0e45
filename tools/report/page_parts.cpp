#include "tools/report/page_parts.h"

#include <array>

#include "tools/report/markup.h"

namespace ocpan {

std::string section(std::string_view id, std::string_view heading, std::string_view content) {
  return joined("<section id=\"", id, "\">\n<h2>", escaped(heading), "</h2>\n", content,
                "</section>\n");
}

std::string paragraph(std::string_view words, std::string_view css_class) {
  if (css_class.empty()) return joined("<p>", escaped(words), "</p>\n");
  return joined("<p class=\"", css_class, "\">", escaped(words), "</p>\n");
}

std::string chart(std::string_view heading, std::string_view explanation,
                  std::string_view drawing_markup) {
  return joined("<figure>\n<figcaption><b>", escaped(heading), "</b> ", escaped(explanation),
                "</figcaption>\n", drawing_markup, "</figure>\n");
}

std::string charts(std::string_view content) {
  return joined("<div class=\"charts\">\n", content, "</div>\n");
}

std::string small_charts(std::string_view content) {
  return joined("<div class=\"charts small\">\n", content, "</div>\n");
}

std::string badge(verdict judged) {
  const std::string_view sign = judged == verdict::good       ? "\u2713"
                                : judged == verdict::doubtful ? "!"
                                                              : "\u2715";
  const std::string_view word = word_of(judged);
  return joined("<span class=\"badge ", word, "\"><span aria-hidden=\"true\">", sign, "</span> ",
                word, "</span>");
}

std::string figure_of_merit(std::string_view value, std::string_view meaning) {
  return joined("<div><b>", escaped(value), "</b><span>", escaped(meaning), "</span></div>\n");
}

std::string table(const std::vector<std::string>& headings,
                  const std::vector<std::vector<cell>>& rows) {
  std::string markup = "<table>\n<thead><tr>";
  for (const std::string& heading : headings) {
    markup += joined("<th scope=\"col\">", escaped(heading), "</th>");
  }
  markup += "</tr></thead>\n<tbody>\n";
  for (const std::vector<cell>& row : rows) {
    markup += "<tr>";
    for (std::size_t i = 0; i < row.size(); ++i) {
      markup += joined("<td data-heading=\"", escaped(headings[i]), "\">",
                       row[i].is_markup ? row[i].content : escaped(row[i].content), "</td>");
    }
    markup += "</tr>\n";
  }
  return markup + "</tbody>\n</table>\n";
}

std::string_view camera_colour(std::size_t camera) {
  constexpr std::array<std::string_view, 8> colours = {"#0072b2", "#d55e00", "#008060", "#b04a86",
                                                       "#8a6d00", "#3a9bd0", "#6f4fb3", "#5a5a5a"};
  return colours[camera % colours.size()];
}

std::string camera_name(std::size_t camera) { return "camera " + std::to_string(camera + 1); }

std::string counted(std::size_t count, std::string_view thing) {
  return joined(std::to_string(count), " ", thing, count == 1 ? "" : "s");
}

}  // namespace ocpan

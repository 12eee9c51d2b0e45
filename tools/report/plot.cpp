#include "tools/report/plot.h"

#include <algorithm>
#include <cmath>

#include "tools/report/markup.h"

namespace ocpan {

double x_at(const plot& p, double value) {
  const double share = (value - p.x.first) / (p.x.last - p.x.first);
  return p.left + share * (p.width - p.left - p.right);
}

double y_at(const plot& p, double value) {
  const double share = (value - p.y.first) / (p.y.last - p.y.first);
  return p.height - p.bottom - share * (p.height - p.top - p.bottom);
}

Eigen::Vector2d at(const plot& p, const Eigen::Vector2d& value) {
  return {x_at(p, value.x()), y_at(p, value.y())};
}

double round_down(double value) {
  const double power = std::pow(10.0, std::floor(std::log10(value)));
  const double leading = value / power * (1 + 1e-12);
  return (leading >= 5 ? 5 : leading >= 2 ? 2 : 1) * power;
}

std::vector<double> round_values(double a, double b, int most) {
  const double low = std::min(a, b), high = std::max(a, b);
  if (!(high > low)) return {low};
  double step = round_down((high - low) / most);
  // A hair of tolerance, for a range that ends at a step.
  const auto count = [&] {
    return std::floor(high / step + 1e-9) - std::ceil(low / step - 1e-9) + 1;
  };
  while (count() > most) step = round_down(step * 2.5);  // 1, 2, 5, 10
  std::vector<double> values;
  for (double k = std::ceil(low / step - 1e-9); k * step <= high + 1e-9 * step; ++k) {
    values.push_back(k * step);
  }
  return values;
}

std::string ground(const plot& p) {
  const double x_end = p.width - p.right, y_end = p.height - p.bottom;
  std::string content = box(p.left, p.top, x_end - p.left, y_end - p.top, "class=\"ground\"");
  for (const double value : round_values(p.x.first, p.x.last, 7)) {
    const double x = x_at(p, value);
    content += line(x, p.top, x, y_end, "class=\"grid\"");
    content += text(x, y_end + 16, number(value, 4), "class=\"mid\"");
  }
  for (const double value : round_values(p.y.first, p.y.last, 6)) {
    const double y = y_at(p, value);
    content += line(p.left, y, x_end, y, "class=\"grid\"");
    content += text(p.left - 6, y + 4, number(value, 4), "class=\"end\"");
  }
  content += box(p.left, p.top, x_end - p.left, y_end - p.top, "class=\"frame\"");
  content += text((p.left + x_end) / 2, y_end + 34, p.x.label, "class=\"mid label\"");
  const std::string middle = number((p.top + y_end) / 2);
  content +=
      text(0, 0, p.y.label,
           joined("class=\"mid label\" transform=\"translate(13 ", middle, ") rotate(-90)\""));
  return content;
}

double even_height(const plot& p) {
  const double scale = (p.width - p.left - p.right) / std::abs(p.x.last - p.x.first);
  return p.top + p.bottom + scale * std::abs(p.y.last - p.y.first);
}

std::string legend(double x, double y, const std::vector<legend_entry>& entries) {
  constexpr double mark = 18, letter = 7;  // widths; a letter's is that of a wide font
  std::string content;
  for (const legend_entry& entry : entries) {
    content += line(x, y - 4, x + mark, y - 4, entry.mark_attributes);
    content += text(x + mark + 5, y, entry.words, "class=\"key\"");
    x += mark + 5 + letter * static_cast<double>(entry.words.size()) + 14;
  }
  return content;
}

}  // namespace ocpan

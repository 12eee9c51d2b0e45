#pragma once

#include <string>
#include <string_view>

namespace ocpan {

// Text for markup, in element content as in quoted attributes: &, <, > and both quotes as
// entities; bytes that are no UTF-8 and characters that XML doesn't allow as U+FFFD. Every
// text from outside goes through here: names of files and sets, and what others worded.
[[nodiscard]] std::string escaped(std::string_view text);

// A number in the classic form with at most so many decimals, without trailing zeros;
// "none" for what isn't finite.
[[nodiscard]] std::string number(double value, int decimals = 2);

// A number with just so many decimals; "none" for what isn't finite.
[[nodiscard]] std::string fixed(double value, int decimals);

// A number with so many significant digits, without an exponent: 0.230, 12.3, 1230.
[[nodiscard]] std::string measure(double value, int digits = 3);

// A number with its standard deviation, to two digits of that: "0.002 ± 0.012".
[[nodiscard]] std::string measure_within(double value, double deviation);

// The texts side by side.
template <typename... Texts>
[[nodiscard]] std::string joined(const Texts&... texts) {
  std::string all;
  (all.append(std::string_view(texts)), ...);
  return all;
}

}  // namespace ocpan

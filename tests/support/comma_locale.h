#pragma once

#include <locale>
#include <string>

namespace ocpan::testing {

// The global locale of a host program that writes 1.234,5, while the object lives.
class comma_locale {
 public:
  comma_locale() : before_(std::locale::global({std::locale::classic(), new comma_numbers})) {}
  ~comma_locale() { std::locale::global(before_); }
  comma_locale(const comma_locale&) = delete;
  comma_locale& operator=(const comma_locale&) = delete;

 private:
  struct comma_numbers : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  std::locale before_;
};

}  // namespace ocpan::testing

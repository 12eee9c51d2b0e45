#include "src/console.h"

#include <iostream>

namespace ocpan {

void write_line(const std::string& text) {
  std::cout.write(text.data(), static_cast<std::streamsize>(text.size()));
  std::cout.put('\n');
  std::cout.flush();
}

}  // namespace ocpan

#include <iterator>
#include <random>
#include <regex>

#include <gtest/gtest.h>

#include "tests/tools/check/config_walk_fixture.h"

namespace ocpan {
namespace {

using testing::ConfigWalk;
using testing::sound;
using testing::text_of;

TEST_F(ConfigWalk, AgreesWithTheLibraryWhenATokenIsReplaced) {
  const std::regex token("[A-Za-z_0-9.]+|[^A-Za-z_0-9. ]| ");
  const std::string text = text_of(sound);
  for (std::sregex_iterator it(text.begin(), text.end(), token), end; it != end; ++it) {
    for (const char* other : {"", "0", "-", ":", "'", "x: ", ", ", "]", "camera_info"}) {
      std::string changed = text;
      changed.replace(static_cast<std::size_t>(it->position()), it->str().size(), other);
      expect_agreement(changed);
    }
  }
  EXPECT_GT(refused_, 500);
  EXPECT_GT(taken_, 200);
}

TEST_F(ConfigWalk, AgreesWithTheLibraryOnAnyDamage) {
  std::mt19937 random(20240602);
  const std::string pieces[] = {":",
                                ",",
                                "-",
                                "'",
                                "[",
                                "]",
                                "\n",
                                " ",
                                "\r",
                                "\\",
                                "9",
                                "*",
                                "$",
                                "::",
                                "''",
                                "width",
                                "cameras: ",
                                "subdir:",
                                "calibration_sets:",
                                "lens: 1, ",
                                "   "};
  for (int run = 0; run < 1500; ++run) {
    std::string text = text_of(sound);
    for (std::size_t edits = 1 + random() % 3; edits > 0; --edits) {
      const std::size_t at = random() % (text.size() + 1);
      if (random() % 2 == 0) {
        text.replace(at, random() % 4, pieces[random() % std::size(pieces)]);
      } else {
        text.insert(at, text.substr(random() % text.size(), random() % 60));
      }
    }
    expect_agreement(text);
  }
  EXPECT_GT(refused_, 500);
  EXPECT_GT(taken_, 50);
}

}  // namespace
}  // namespace ocpan

#pragma once

#include <string_view>

namespace ocpan {

// What a result of the library (enum ocpan_result) means, in a few words.
std::string_view meaning_of(int result);

}  // namespace ocpan

#pragma once

#include <algorithm>

namespace ocpan {

// What a judging command says of its matter, from best to worst.
enum class verdict { good, doubtful, unusable };

// 0, 10 or 11.
inline int exit_code_of(verdict v) {
  return v == verdict::good ? 0 : v == verdict::doubtful ? 10 : 11;
}

inline verdict worse_of(verdict a, verdict b) { return std::max(a, b); }

// "good", "doubtful" or "unusable".
inline const char* word_of(verdict v) {
  return v == verdict::good ? "good" : v == verdict::doubtful ? "doubtful" : "unusable";
}

}  // namespace ocpan

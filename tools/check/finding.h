#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "tools/verdict.h"

namespace ocpan {

// Something that a check found. One of weight good is a hint and no fault.
struct finding {
  verdict weight = verdict::good;
  std::string where;  // "rig.txt:12:5", a picture's name, "camera 2", ...
  std::string what;   // what is wrong, in plain words
  std::string mend;   // what to do about it; may be empty
};

// The worst of the findings.
inline verdict verdict_of(const std::vector<finding>& findings) {
  verdict worst = verdict::good;
  for (const finding& found : findings) worst = worse_of(worst, found.weight);
  return worst;
}

}  // namespace ocpan

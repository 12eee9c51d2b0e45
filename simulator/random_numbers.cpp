#include "simulator/random_numbers.h"

#include <cmath>

#include "model/parameters.h"

namespace ocpan {

double random_numbers::normal() {
  // Box and Muller, A note on the generation of random normal deviates, 1958.
  const double radius = std::sqrt(-2 * std::log(uniform(0x1p-60, 1)));
  return radius * std::cos(2 * pi * uniform(0, 1));
}

}  // namespace ocpan

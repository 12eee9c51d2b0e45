#include "tools/report/picture_plot.h"

namespace ocpan {

plot picture_plot(const camera_details& details) {
  plot p;
  p.x = {-0.5, details.width - 0.5, "x (pixels)"};
  p.y = {details.height - 0.5, -0.5, "y (pixels)"};
  p.top = 28;
  p.height = even_height(p);
  return p;
}

}  // namespace ocpan

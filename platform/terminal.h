#pragma once

namespace ocpan {

// Whether standard error is a terminal, where a line may be drawn over again.
bool standard_error_is_terminal();

}  // namespace ocpan

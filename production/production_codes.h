#pragma once

namespace ocpan {

// Internal code of pictures that a production run can't use: a camera without a corner, or
// cameras that no match connects. It is outside the map of result codes on purpose and
// leaves the export as OCPAN_FAILURE.
inline constexpr int fixture_unusable = 2;

}  // namespace ocpan

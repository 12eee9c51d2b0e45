#pragma once

namespace ocpan::faults {

// Starts this program anew with the library that makes calls fail loaded ahead of all
// others. Comes back only if it can't be done, with an exit code.
int start_with_interposer(char** arguments);

}  // namespace ocpan::faults

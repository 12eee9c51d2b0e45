#pragma once

#include <string>
#include <string_view>

namespace ocpan {

// Why a file can't be written, with what to do about it; empty if it can. A file that is
// there keeps its content, one that isn't won't be there afterwards either.
//
//   path   either kind of slash
std::string why_not_writable(std::string_view path);

}  // namespace ocpan

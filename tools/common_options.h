#pragma once

#include <string>

#include <CLI/CLI.hpp>

namespace ocpan {

// Options that many commands have, alike in name, value and meaning. What is particular to a
// command stands in the help behind a semicolon.

// --out FILE
//
//   what   what the file will be: "the report, named .html"
CLI::Option* add_out_option(CLI::App* command, std::string& file, const std::string& what);

// --json FILE
CLI::Option* add_json_option(CLI::App* command, std::string& file);

// -q, --quiet
//
//   what_stays   what is printed all the same: "warnings and failures stay"
CLI::Option* add_quiet_flag(CLI::App* command, bool& quiet, const std::string& what_stays);

}  // namespace ocpan

#include "tests/faults/library_symbols.h"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>

namespace ocpan::faults {
namespace {

using symbol_table = std::map<std::uint64_t, std::string>;  // by where a function begins

struct end_of_pipe {
  void operator()(std::FILE* pipe) const { pclose(pipe); }
};

symbol_table read_symbols(const std::string& file) {
  symbol_table symbols;
  const std::string command = "nm -C --defined-only '" + file + "' 2>/dev/null";
  const std::unique_ptr<std::FILE, end_of_pipe> pipe(popen(command.c_str(), "r"));
  char* line = nullptr;
  std::size_t capacity = 0;
  while (pipe && getline(&line, &capacity, pipe.get()) > 0) {
    char* behind_address = nullptr;
    const std::uint64_t address = std::strtoull(line, &behind_address, 16);
    const std::string rest = behind_address;  // " t name\n"
    if (rest.size() > 4 && (rest[1] == 't' || rest[1] == 'T' || rest[1] == 'W')) {
      symbols[address] = rest.substr(3, rest.size() - 4);
    }
  }
  std::free(line);
  return symbols;
}

}  // namespace

std::string function_at(const std::string& file, std::uint64_t offset) {
  static std::map<std::string, symbol_table> tables;
  const auto [table, is_new] = tables.try_emplace(file);
  if (is_new) table->second = read_symbols(file);
  auto function = table->second.upper_bound(offset);
  if (function == table->second.begin()) return "";
  return (--function)->second;
}

}  // namespace ocpan::faults

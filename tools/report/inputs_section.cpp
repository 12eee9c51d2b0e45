#include <algorithm>

#include "tools/report/markup.h"
#include "tools/report/page_parts.h"
#include "tools/report/sections.h"

namespace ocpan {
namespace {

cell checksum_cell(const input_file& file) {
  if (file.checksum.empty()) return {"couldn't be read"};
  return {joined("<code>", file.checksum, "</code>"), true};
}

cell file_cell(const std::string& name) {
  return {joined("<span class=\"file\">", escaped(name), "</span>"), true};
}

std::string files_table(const std::vector<const input_file*>& files) {
  std::vector<std::vector<cell>> rows;
  for (const input_file* file : files) {
    rows.push_back({file_cell(file->name),
                    {file->role},
                    {std::to_string(file->bytes)},
                    {file->time},
                    checksum_cell(*file)});
  }
  return table({"File", "What it is", "Bytes", "Last changed", "SHA-256"}, rows);
}

}  // namespace

std::string inputs_section(const report_content& content) {
  std::vector<const input_file*> first, pictures;
  for (const input_file& file : content.inputs) {
    (file.role == "picture" ? pictures : first).push_back(&file);
  }
  std::string versions;
  for (std::size_t begin = 0; begin < content.versions.size();) {
    const std::size_t end = std::min(content.versions.find('\n', begin), content.versions.size());
    versions += joined("<li>", escaped(content.versions.substr(begin, end - begin)), "</li>");
    begin = end + 1;
  }
  std::string body = files_table(first);
  if (!pictures.empty()) {
    body += joined("<details><summary>", counted(pictures.size(), "picture"), "</summary>\n",
                   files_table(pictures), "</details>\n");
  }
  body += joined("<h3>Made by</h3>\n<ul class=\"plain\">", versions, "</ul>\n");
  return section("inputs", "Inputs and versions", body);
}

}  // namespace ocpan

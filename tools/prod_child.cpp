#include "tools/prod_child.h"

#include <cstring>
#include <iostream>
#include <limits>
#include <locale>
#include <sstream>
#include <string_view>

#include "tools/messages.h"

namespace ocpan {
namespace {

constexpr std::size_t reply_size = sizeof(int) + 3 * sizeof(double);

std::string exact_text(float number) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text.precision(std::numeric_limits<float>::max_digits10);
  text << number;
  return text.str();
}

std::string pack(const prod_reply& reply) {
  std::string bytes(reply_size, '\0');
  std::memcpy(bytes.data(), &reply.result, sizeof(int));
  std::memcpy(bytes.data() + sizeof(int), reply.results.data(), 3 * sizeof(double));
  return bytes;
}

std::optional<prod_reply> unpack(std::string_view bytes) {
  if (bytes.size() != reply_size) return std::nullopt;
  prod_reply reply;
  std::memcpy(&reply.result, bytes.data(), sizeof(int));
  std::memcpy(reply.results.data(), bytes.data() + sizeof(int), 3 * sizeof(double));
  return reply;
}

}  // namespace

prod_child_end run_prod_child(const std::string& program, const prod_job& job) {
  // "--" keeps a name with a leading "-" from being an option.
  std::vector<std::string> arguments = {prod_child_command, "--", exact_text(job.radius_metres),
                                        job.calibration, job.output};
  arguments.insert(arguments.end(), job.pictures.begin(), job.pictures.end());
  prod_child_end end;
  end.process = run_child(program, std::move(arguments),
                          [](std::string_view bytes) { std::cout << bytes << std::flush; });
  end.reply = unpack(end.process.reply);
  return end;
}

int call_prod_and_reply(const prod_job& job, const std::string& channel) {
  std::vector<const char*> pictures;
  for (const std::string& picture : job.pictures) pictures.push_back(picture.c_str());
  prod_reply reply;
  reply.result =
      ocPAN_CalProd(static_cast<unsigned int>(pictures.size()), job.calibration.c_str(),
                    job.output.c_str(), job.radius_metres, pictures.data(), reply.results.data());
  return send_reply(channel, pack(reply)) ? 0 : exit_child_lost;
}

}  // namespace ocpan

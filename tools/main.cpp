#include <exception>
#include <iostream>

#include "tools/command_line.h"
#include "tools/messages.h"

int main(int argc, char** argv) {
  int exit_code = 0;
  try {
    exit_code = ocpan::run_command_line(argc, argv);
  } catch (const std::exception& failure) {
    ocpan::complain("unexpected failure: ", failure.what());
    return 255;
  }
  if (!std::cout.flush()) {
    ocpan::complain("standard output couldn't be written; free space where it goes");
    if (exit_code == 0) exit_code = 3;
  }
  return exit_code;
}

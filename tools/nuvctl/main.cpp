#include <iostream>

#include "command_line.h"

int main(int argc, char** argv) {
  const std::unique_ptr<nuvctl::System> system = nuvctl::MakeSystem();
  return nuvctl::RunCommandLine(nuvctl::Utf8Arguments(argc, argv), std::cout, std::cerr, *system);
}

#include <iostream>

#include "command_line.h"

int main(int argc, char** argv) {
  const std::unique_ptr<NuvCtl::System> system = NuvCtl::MakeSystem();
  return NuvCtl::RunCommandLine(NuvCtl::Utf8Arguments(argc, argv), std::cout, std::cerr, *system);
}

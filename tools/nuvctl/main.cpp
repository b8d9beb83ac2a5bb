#include <QtGlobal>
#include <iostream>

#include "command_line.h"

int main(int argc, char** argv) {
  // Qt tells programmers what it misses, such as an application object; nobody else needs that
  // here.
  qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
  const std::unique_ptr<NuvCtl::System> system = NuvCtl::MakeSystem();
  return NuvCtl::RunCommandLine(NuvCtl::Utf8Arguments(argc, argv), std::cout, std::cerr, *system);
}

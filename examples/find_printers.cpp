// Finds the printers on the network and on USB, and shows each as it answers.
// Usage: find_printers [ADDRESS]...   addresses are asked instead of all networks; exit 1: none
#include <iostream>
#include <string>

#include "nuvprinter/nuvprinter.hpp"

namespace {

bool Show(const nuv::Identity& printer) {
  std::cout << printer.address << "  " << printer.serial.value_or("?") << "  "
            << printer.model.value_or("?");
  if (printer.nickname && !printer.nickname->empty())
    std::cout << "  \"" << *printer.nickname << '"';
  if (printer.contact != nuv::Result::kOk) {
    std::cout << "  (" << make_error_code(printer.contact).message() << ')';
  }
  std::cout << std::endl;
  return true;  // false would end the search
}

}  // namespace

int main(int argc, char** argv) {
  nuv::SearchOptions options;
  for (int i = 1; i < argc; ++i) options.addresses = options.addresses.value_or("") + argv[i] + ' ';
  options.found = Show;
  try {
    return nuv::Find(options).empty() ? 1 : 0;
  } catch (const nuv::Error& error) {
    std::cerr << "find_printers: " << error.what() << '\n';
    return 1;
  }
}

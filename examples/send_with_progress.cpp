// Sends a print file and shows a bar; Ctrl-C cancels at the end of a line.
// Usage: send_with_progress ADDRESS FILE
#include <csignal>
#include <iostream>
#include <string>

#include "nuvprinter/nuvprinter.hpp"

namespace {

volatile std::sig_atomic_t interrupted = 0;

bool ShowBar(const nuv::Progress& progress) {
  constexpr int kWidth = 40;
  const int filled = progress.Percent() * kWidth / 100;
  std::cerr << "\r[" << std::string(static_cast<size_t>(filled), '#')
            << std::string(static_cast<size_t>(kWidth - filled), ' ') << "] " << progress.Percent()
            << " %" << std::flush;
  return true;  // false would cancel
}

// Whether the person wants it all the same.
bool Accepts(const std::string& findings) {
  std::cerr << '\n' << findings << "\nSend it all the same? [y/N] ";
  std::string answer;
  return std::getline(std::cin, answer) && answer == "y";
}

int Send(const std::string& address, const std::string& file) {
  nuv::Call call;
  call.stillWanted = [] { return interrupted == 0; };
  nuv::Printer printer = nuv::Printer::OpenAddress(address, call);

  nuv::SendOptions options;
  options.progress = ShowBar;
  nuv::Outcome outcome = printer.Send(file, options, call);
  if (outcome.kind == nuv::OutcomeKind::kNotFit && Accepts(outcome.message)) {
    options.accept = outcome.findings;  // these, and no others that may have come up since
    outcome = printer.Send(file, options, call);
  }
  std::cerr << '\n';
  (outcome ? std::cout : std::cerr) << outcome.message << std::endl;
  if (outcome.mayHoldJob) std::cerr << "the printer may still wait for the rest\n";
  return outcome ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: send_with_progress ADDRESS FILE\n";
    return 2;
  }
  std::signal(SIGINT, [](int) { interrupted = 1; });
  try {
    return Send(argv[1], argv[2]);
  } catch (const nuv::Error& error) {
    std::cerr << "\nsend_with_progress: " << error.what() << '\n';
    return 1;
  }
}

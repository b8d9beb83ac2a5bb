// Watches up to ten printers for some seconds and prints what changes.
// Usage: watch_ten [SECONDS [ADDRESS]...]   addresses are asked instead of all networks
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "nuvprinter/nuvprinter.hpp"

namespace {

using std::chrono::seconds;

std::mutex output;  // each printer is told of on its own thread

std::string InWords(const nuv::Event& event) {
  switch (event.kind) {
    case nuv::EventKind::kSilent:
      return "no answer";
    case nuv::EventKind::kGone:
      return "gone";
    case nuv::EventKind::kPrintEnded:
      return event.jobResult == nuv::JobResult::kFinished ? "finished" : "ended, not finished";
    default:
      break;
  }
  const nuv::State& state = *event.state;
  if (state.state != nuv::PrinterState::kPrinting) return "not printing";
  return state.jobName.value_or("a job") + ", " + std::to_string(state.percent.value_or(0)) + " %";
}

// The printer and the watch on it belong together: the watch ends with its printer.
struct Row {
  nuv::Printer printer;
  nuv::Watch watch;
};

Row Follow(const nuv::Identity& found) {
  Row row;
  row.printer = nuv::Printer::Open(found);
  const std::string name = found.nickname.value_or(found.address);
  row.watch = row.printer.Watch(seconds(1), [name](const nuv::Event& event) {
    const std::lock_guard<std::mutex> lock(output);
    if (event.changed) std::cout << name << ": " << InWords(event) << std::endl;
    return true;
  });
  return row;
}

}  // namespace

int main(int argc, char** argv) {
  const seconds howLong(argc > 1 ? std::atoi(argv[1]) : 10);
  nuv::SearchOptions options;
  for (int i = 2; i < argc; ++i) options.addresses = options.addresses.value_or("") + argv[i] + ' ';
  std::vector<Row> rows;
  for (const nuv::Identity& found : nuv::Find(options)) {
    if (rows.size() == 10) break;
    try {
      rows.push_back(Follow(found));
    } catch (const nuv::Error& error) {
      std::cerr << found.address << ": " << error.what() << '\n';
    }
  }
  std::this_thread::sleep_for(howLong);
  return rows.empty() ? 1 : 0;  // watches end here, within 0.6 s, then their printers
}

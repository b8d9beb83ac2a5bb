#include "nuvsim/search_answers.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace nuvsim {
namespace {

using std::chrono::milliseconds;

constexpr std::string_view kSearch = "F195";

// No proper answers: too short, refused, cut off, out of order, overlong, no text.
std::vector<std::string> MalformedDatagrams() {
  return {"",
          "F195",
          "F195 NG\r\n",
          "F195 OK IP=<10.",
          "PORT= IP=< OK F195\r\n",
          "F195 NG " + std::string(1400, 'x'),
          std::string("\x80\xff\x00\xfe\r\n", 6)};
}

// What other devices send around on a local network.
std::vector<std::string> ForeignDatagrams() {
  return {"M-SEARCH * HTTP/1.1\r\nHOST: 239.255.255.250:1900\r\nMAN: \"ssdp:discover\"\r\n\r\n",
          "NOTIFY * HTTP/1.1\r\nNTS: ssdp:alive\r\n\r\n",
          "{\"type\":\"announce\",\"device\":\"camera\"}"};
}

std::string Reply(const PrinterConfig& printer, const std::string& address,
                  const std::string& port) {
  return "F195 OK IP=<" + address + "> PORT=" + port + " N=<" + printer.name +
         "> M:" + printer.mac + " CN:" + printer.serial + "\r\n";
}

// Distinct answers as of so many printers; all lead to the one that exists.
std::vector<std::string> Burst(const PrinterConfig& printer, const std::string& address,
                               std::uint16_t port, std::uint64_t count) {
  std::vector<std::string> replies;
  for (std::uint64_t i = 1; i <= count; ++i) {
    PrinterConfig other = printer;
    other.name += "-" + std::to_string(i);
    other.serial += "-" + std::to_string(i);
    replies.push_back(Reply(other, address, std::to_string(port)));
  }
  return replies;
}

// What the fault sends ahead of the answer.
std::vector<std::string> Ahead(const Fault& fault, const PrinterConfig& printer,
                               const std::string& address, std::uint16_t port,
                               std::string_view search) {
  if (fault.kind == FaultKind::kEcho) return {std::string(search)};
  if (fault.kind == FaultKind::kBurst) return Burst(printer, address, port, fault.size);
  const bool isForeign = fault.kind == FaultKind::kForeign;
  if (!isForeign && fault.kind != FaultKind::kMalformed) return {};
  if (!fault.text.empty()) return {fault.text};
  return isForeign ? ForeignDatagrams() : MalformedDatagrams();
}

}  // namespace

bool IsSearch(std::string_view datagram) {
  while (!datagram.empty() && (datagram.back() == '\n' || datagram.back() == '\r')) {
    datagram.remove_suffix(1);
  }
  return std::equal(datagram.begin(), datagram.end(), kSearch.begin(), kSearch.end(),
                    [](unsigned char got, char want) { return std::toupper(got) == want; });
}

std::vector<Delivery> AnswerSearch(const PrinterConfig& printer, const std::string& address,
                                   std::uint16_t port, const std::vector<Fault>& faults,
                                   std::string_view search) {
  std::vector<Delivery> deliveries;
  std::string portText = std::to_string(port);
  milliseconds delay{0};
  milliseconds apart{0};  // the copies
  std::uint64_t copies = 0;
  for (const Fault& fault : faults) {
    if (fault.kind == FaultKind::kSilent) return {};
    if (fault.kind == FaultKind::kLate) delay = fault.delay;
    if (fault.kind == FaultKind::kDuplicate) {
      copies += fault.size;
      apart = fault.delay;
    }
    if (fault.kind == FaultKind::kBadPort) portText = fault.text;
    for (std::string& each : Ahead(fault, printer, address, port, search)) {
      deliveries.push_back({std::move(each), fault.delay});
    }
  }
  const std::string reply = Reply(printer, address, portText);
  deliveries.push_back({reply});
  deliveries.insert(deliveries.end(), copies, {reply, apart});
  deliveries.front().delay += delay;
  return deliveries;
}

}  // namespace nuvsim

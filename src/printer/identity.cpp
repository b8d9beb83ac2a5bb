#include "printer/identity.h"

#include "command/commands.h"
#include "connect/device_table.h"
#include "printer/query.h"

namespace Nuv::Printer {
namespace {

using Connect::Reason;

// Of a later command: only that nobody waits any more ends the asking.
bool Answered(const Outcome& outcome) {
  if (outcome.reason == Reason::kGivenUp) throw Failure{NUV_RESULT_CANCELLED, {}, outcome.code};
  return outcome.result == NUV_OK;
}

}  // namespace

nuv_identity IdentityOf(const Transport::NetworkDevice& device) {
  nuv_identity printer = NUV_INIT(nuv_identity);
  printer.link = NUV_LINK_NETWORK;
  printer.address = Text(device.address);
  printer.tcp_port = device.port;
  if (!device.mac.empty()) printer.mac = Text(device.mac);
  if (!device.name.empty()) printer.name = Text(device.name);
  return printer;
}

nuv_identity IdentityOf(const std::string& usbPath) {
  nuv_identity printer = NUV_INIT(nuv_identity);
  printer.link = NUV_LINK_USB;
  printer.address = Text(usbPath);
  return printer;
}

void AskIdentity(const Connect::CommandRunner& commands, nuv_identity& printer) {
  const Outcome identity = commands.Run(101);
  if (!Answered(identity)) {
    throw Failure{ResultOf(identity.reason),
                  std::string(printer.address.text) + ": " + Connect::WordsFor(identity.reason),
                  identity.code};
  }
  Take(identity, {{"V", &printer.firmware},
                  {"N", &printer.name},
                  {"M", &printer.model},
                  {"S", &printer.serial},
                  {"C", &printer.controller}});
  if (Connect::HasOwnSerialQuery(identity.Text("M"))) {
    const Outcome dental = commands.Run<Command::F354Cmd>();
    if (Answered(dental)) Take(dental, {{"D", &printer.manufactured}});
    const Outcome serial = commands.Run<Command::F140Cmd>();
    if (Answered(serial) && !serial.values.empty()) printer.serial = Text(serial.values.front());
  }
  const Outcome nickname = commands.Run(197);
  if (!Answered(nickname)) return;
  // By position, not by key: a nickname may itself hold a colon.
  printer.nickname = Text(nickname.values.empty() ? std::string() : nickname.values.front());
}

}  // namespace Nuv::Printer

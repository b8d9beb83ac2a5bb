// Reads the input as an answer to a search, and its fields as those do who connect.
#include <string>

#include "fuzz/targets.h"
#include "transport/addresses.h"
#include "transport/discovery_reply.h"

void Fuzz::Discovery(const uint8_t* data, size_t size) {
  using namespace Nuv::Transport;  // NOLINT(google-build-using-namespace): of its reader
  const std::string reply(data, data + size);
  const NetworkDevice device = ParseDiscoveryReply(reply);
  Require(!device.valid || reply.find(" OK") != std::string::npos,
          "an answer without OK is no printer");
  for (const std::string& field : {device.address, device.name, device.mac}) {
    Require(device.valid || field.empty(), "what is no printer has no fields");
    Require(reply.find(field.substr(0, field.find(' '))) != std::string::npos,
            "a field begins with what the answer holds");
    Require(field.size() <= reply.size(), "a field is no longer than the answer");
  }
  Require(device.Identity() == device.address + ":" + std::to_string(device.port),
          "a printer is told by its address and port");
  const std::string address = LiteralAddress(device.address);
  Require(LiteralAddress(address) == address, "the plain form of an address is its own");
}

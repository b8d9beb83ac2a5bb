// Reads the input as what a printer answers: to a command, which the first byte chooses, and to a
// search.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "command/catalogue.h"
#include "command/processors.h"
#include "command/reply_views.h"
#include "nuvconnect/ResultCodes.h"
#include "tests/support/manual_clock.h"
#include "tests/support/scripted_channel.h"
#include "transport/discovery_reply.h"

namespace {

using namespace Nuv;  // NOLINT(google-build-using-namespace): a program of its own

void Require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "a reply was read wrongly: %s\n", what);
  std::abort();
}

// Whoever reads a number is told of a malformed one by these two exceptions and no other.
template <class Parse>
void ReadNumber(Parse parse, const std::string& text) {
  try {
    parse(text, 101);
  } catch (const std::invalid_argument&) {
    return;
  } catch (const std::out_of_range&) {
    return;
  }
}

void ReadReply(const Command::CommandRow& row, const std::string& reply) {
  ScriptedChannel channel;
  channel.Always("", reply);
  ManualClock clock;
  Command::CommandArguments arguments;
  arguments.clock = &clock;
  auto command = Command::CreateCommand(channel, row.code, std::move(arguments));
  if (!command) return;  // a processor makes it for itself
  Connect::GeneralCommandProc processor(std::move(command));
  std::vector<std::string> values;
  try {
    const int result = processor.Process(values);
    Require(result == NUV_OK || result == NUV_FAILED || result == NUV_PRINTER_REFUSED,
            "an unknown result");
  } catch (const std::invalid_argument&) {
    return;
  } catch (const std::out_of_range&) {
    return;
  }
  // A command that recovers reads up to three replies as one, with a blank between them.
  const size_t most = 3 * (reply.size() + 1);
  for (const std::string& value : values) Require(value.size() <= most, "a value is too long");
  for (const auto& [key, value] : processor.result()) {
    Require(value.size() <= most, "a field is too long");
    ReadNumber(Command::ParseDecimal, value);
    ReadNumber(Command::ParseFraction, value);
  }
}

void ReadSearchReply(const std::string& reply) {
  const Nuv::Transport::NetworkDevice device = Nuv::Transport::ParseDiscoveryReply(reply);
  Require(device.address.size() <= reply.size(), "an address longer than the reply");
  Require(device.name.size() <= reply.size(), "a name longer than the reply");
}

}  // namespace

// Declared here because no header of the fuzzing library does.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::string reply(data + 1, data + size);
  ReadReply(Command::kRows[data[0] % std::size(Command::kRows)], reply);
  ReadSearchReply(reply);
  return 0;
}

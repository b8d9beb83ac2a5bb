// Resin: what is in place, and whether the printer takes it.

#include "command/commands.h"
#include "connect/connecting_framework.h"
#include "nuvconnect/ResultCodes.h"

namespace Nuv::Connect {
namespace {

// The result for a printer that refuses a resin query and names its resin state instead.
int ResinRefusal(int resinState) {
  switch (resinState) {
    case 0:
      return NUV_RESIN_NO_CARTRIDGE;
    case 1:
      return NUV_RESIN_TAG_UNREADABLE;
    case 2:
      return NUV_RESIN_EXPIRED;
    case 3:
      return NUV_RESIN_WRONG_TYPE;
    case 4:
      return NUV_RESIN_EMPTY;
    default:
      return NUV_FAILED;
  }
}

}  // namespace

int ConnectingFramework::ReadResin(int code, Outputs outputs) {
  Clear(outputs);
  const Outcome outcome = Commands().Run(code, {}, Refusal::kAnswers);
  if (outcome.reason != Reason::kRefused) return outcome.Fill(outputs);
  // A printer that has no such query refuses it without naming a state.
  const bool namesState = outcome.fields.count("S") != 0;
  return Fail(
      namesState ? ResinRefusal(outcome.Number("S")) : ResultOf(outcome.reason, Step::kCommand),
      code);
}

int ConnectingFramework::GetResinInfo2(int* state, int* remaining, std::string& resinCode,
                                       int* tankVolume, std::string& lot) {
  return ReadResin(
      105, {{"S", state}, {"R", remaining}, {"C", &resinCode}, {"V", tankVolume}, {"Q", &lot}});
}

int ConnectingFramework::GetResinInfo(int* state, int* remaining, std::string& date,
                                      std::string& type) {
  return ReadResin(120, {{"S", state}, {"R", remaining}, {"D", &date}, {"T", &type}});
}

int ConnectingFramework::GetResinInfo_BEGO(std::string& name, std::string& lot, std::string& expiry,
                                           std::string& volume) {
  return Commands().Read<Command::F356Cmd>(
      {{"N", &name}, {"L", &lot}, {"D", &expiry}, {"V", &volume}});
}

int ConnectingFramework::IsRegisteredCorrectTag(int* registered) {
  *registered = 0;
  const int result = Commands().Run(219).result;
  if (result == NUV_OK) *registered = 1;
  return result;
}

int ConnectingFramework::IsOpenModeSupported(int* supported) {
  return Commands().Read(335, {}, {{"S", supported}});
}

}  // namespace Nuv::Connect

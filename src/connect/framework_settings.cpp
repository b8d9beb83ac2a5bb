// Settings: scaling, nickname, laser power, Z compensation.

#include <array>

#include "command/commands.h"
#include "command/reply_views.h"
#include "connect/connecting_framework.h"
#include "nuvconnect/ResultCodes.h"
#include "platform/diagnostics.h"

namespace Nuv::Connect {
namespace {

using Pair = std::array<float, 2>;

// Two scaling factors travel in one parameter.
std::string Joined(float first, float second) {
  return Command::Fixed(first) + "," + Command::Fixed(second);
}

// The reverse; a factor that is missing is 0.
Pair Split(const std::string& text, int code) {
  Pair pair{};
  if (text.empty()) return pair;
  pair[0] = Command::ParseFraction(text, code);
  const size_t comma = text.find(',');
  if (comma != std::string::npos) pair[1] = Command::ParseFraction(text.substr(comma + 1), code);
  return pair;
}

// The number by which commands 159 and 332 tell their settings apart.
std::string Number(PrinterParameter parameter) {
  return std::to_string(static_cast<int>(parameter));
}

}  // namespace

int ConnectingFramework::SetBCPScaling(float x1, float x2, float y1, float y2, float z1, float z2) {
  return Commands().Run<Command::F370Cmd>({Joined(x1, x2), Joined(y1, y2), Joined(z1, z2)}).result;
}

int ConnectingFramework::GetBCPScaling(float* x1, float* x2, float* y1, float* y2, float* z1,
                                       float* z2) {
  *x1 = *x2 = *y1 = *y2 = *z1 = *z2 = 0;
  const Outcome outcome = Commands().Run<Command::F369Cmd>();
  if (outcome.result != NUV_OK) return outcome.result;
  const Pair x = Split(outcome.Text("X"), outcome.code);
  const Pair y = Split(outcome.Text("Y"), outcome.code);
  const Pair z = Split(outcome.Text("Z"), outcome.code);
  *x1 = x[0];
  *x2 = x[1];
  *y1 = y[0];
  *y2 = y[1];
  *z1 = z[0];
  *z2 = z[1];
  return NUV_OK;
}

int ConnectingFramework::SetNickName(const std::string& name) {
  return Commands().Run(196, {name}).result;
}

int ConnectingFramework::GetNickName(std::string& name) {
  name.clear();
  const Outcome outcome = Commands().Run(197);
  // By position, not by key: a nickname may itself hold a colon.
  if (outcome.result == NUV_OK && !outcome.values.empty()) name = outcome.values.front();
  return outcome.result;
}

int ConnectingFramework::SetParameter(PrinterParameter parameter, int value) {
  return Commands().Run(332, {Number(parameter), std::to_string(value)}).result;
}

int ConnectingFramework::GetParameter(PrinterParameter parameter, int* value) {
  constexpr size_t kValuePlace = 1;  // behind the setting's number
  *value = 0;
  const Outcome outcome = Commands().Run(159, {Number(parameter)});
  if (outcome.result != NUV_OK || outcome.values.size() <= kValuePlace) return outcome.result;
  // The late answer to a question for the other setting has the same code.
  if (Command::ParseDecimal(outcome.values.front(), outcome.code) != static_cast<int>(parameter)) {
    Platform::Diagnostic("F159: asked for setting %s, the answer is of setting %s",
                         Number(parameter).c_str(), outcome.values.front().c_str());
    return Fail(NUV_FAILED, outcome.code);
  }
  *value = Command::ParseDecimal(outcome.values[kValuePlace], outcome.code);
  return NUV_OK;
}

}  // namespace Nuv::Connect

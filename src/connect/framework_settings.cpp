// Settings: scaling, nickname, laser power, Z compensation, warm-up.

#include <array>

#include "command/commands.h"
#include "command/decimal.h"
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
Pair Split(const std::string& text, int32_t code) {
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
  return NewQuery().RunDirect<Command::F370Cmd>({Joined(x1, x2), Joined(y1, y2), Joined(z1, z2)});
}

int ConnectingFramework::GetBCPScaling(float* x1, float* x2, float* y1, float* y2, float* z1,
                                       float* z2) {
  for (float* factor : {x1, x2, y1, y2, z1, z2}) *factor = 0;
  Query query = NewQuery();
  const int result = query.RunDirect<Command::F369Cmd>();
  if (result != NUV_OK) return result;
  const Pair x = Split(query.Text("X"), query.code());
  const Pair y = Split(query.Text("Y"), query.code());
  const Pair z = Split(query.Text("Z"), query.code());
  *x1 = x[0];
  *x2 = x[1];
  *y1 = y[0];
  *y2 = y[1];
  *z1 = z[0];
  *z2 = z[1];
  return NUV_OK;
}

int ConnectingFramework::SetNickName(const std::string& name) {
  return NewQuery().Run(196, {name});
}

int ConnectingFramework::GetNickName(std::string& name) {
  name.clear();
  Query query = NewQuery();
  const int result = query.Run(197);
  // By position, not by key: a nickname may itself hold a colon.
  if (result == NUV_OK && !query.values().empty()) name = query.values().front();
  return result;
}

int ConnectingFramework::SetParameter(PrinterParameter parameter, int value) {
  return NewQuery().Run(332, {Number(parameter), std::to_string(value)});
}

int ConnectingFramework::GetParameter(PrinterParameter parameter, int* value) {
  constexpr size_t kValuePlace = 1;  // behind the setting's number
  *value = 0;
  Query query = NewQuery();
  const int result = query.Run(159, {Number(parameter)});
  if (result != NUV_OK || query.values().size() <= kValuePlace) return result;
  // The late answer to a question for the other setting has the same code.
  if (Command::ParseDecimal(query.values().front(), query.code()) != static_cast<int>(parameter)) {
    Platform::Diagnostic("F159: asked for setting %s, the answer is of setting %s",
                         Number(parameter).c_str(), query.values().front().c_str());
    return query.Fail(NUV_FAILED);
  }
  *value = Command::ParseDecimal(query.values()[kValuePlace], query.code());
  return NUV_OK;
}

int ConnectingFramework::SkipSLAWarmup() { return NewQuery().Run(112); }

}  // namespace Nuv::Connect

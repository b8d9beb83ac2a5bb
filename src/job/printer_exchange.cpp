#include "job/printer_exchange.h"

#include <chrono>
#include <vector>

#include "command/processors.h"
#include "command/reply_views.h"
#include "job/machine_ids.h"
#include "nuvconnect/ResultCodes.h"
#include "platform/diagnostics.h"
#include "platform/waiter.h"

namespace Nuv::Connect {
namespace {

constexpr int kJobControl = 104;
constexpr char kAbandonJob[] = "2";
constexpr int kFreeBuffer = 117;
constexpr int kFreeBufferAndroid = 503;
constexpr char kState[] = "S";
constexpr char kIdle[] = "0";
constexpr char kReceiving[] = "2";

}  // namespace

uint64_t QueryFreeBufferSize(const JobContext& context, const std::string& machineId) {
  const bool android = FamilyOf(machineId) == PrinterFamily::kAndroid;
  const Outcome outcome = context.Commands().Run(android ? kFreeBufferAndroid : kFreeBuffer);
  if (outcome.result != NUV_OK) return 0;
  const int free = outcome.Number(kState);
  return free > 0 ? static_cast<uint64_t>(free) : 0;
}

std::optional<std::string> QueryState(const JobContext& context) {
  F102proc proc(context.Commands());
  std::vector<std::string> values;
  if (proc.Process(values) != NUV_OK) return std::nullopt;
  const auto state = proc.Fields().find(kState);
  return state == proc.Fields().end() ? std::string() : state->second;
}

namespace {

// A state that cannot be read is none.
bool IsReceiving(const JobContext& context) {
  try {
    return QueryState(context) == kReceiving;
  } catch (const Command::ReplyError&) {
    return false;
  }
}

}  // namespace

int OpenJob(const JobContext& context, CodeProc& opening, const std::string& before) {
  std::vector<std::string> values;
  context.host.ReportOpening();
  const int result = opening.ProcessAccepted(values);
  // Only then is it certain that the job on the printer is ours and not somebody's print.
  if (result == NUV_PRINTER_REFUSED && opening.SentAgain() && before == kIdle &&
      IsReceiving(context)) {
    AbandonJob(context);
  }
  return result;
}

namespace {

// Sends the order at once, also behind a question whose answer is still on its way, and waits for
// the answer as long as somebody who has given up does. True when the printer accepted it.
bool AbandonAtOnce(const JobContext& context) {
  constexpr std::chrono::milliseconds kPatience(400);
  const std::string order = "F" + std::to_string(kJobControl);
  Platform::TimeLimit limit(context.clock, kPatience);
  Reply reply = context.channel.Transact({order + " S" + kAbandonJob + "\r\n", true, &limit});
  const std::string accepted = order + " OK";
  while (reply.reason == Reason::kNone && reply.text.compare(0, accepted.size(), accepted) != 0) {
    reply = context.channel.ReadAgain(&limit);
  }
  return reply.reason == Reason::kNone;
}

}  // namespace

void AbandonJob(const JobContext& context) {
  if (context.interrupt != nullptr) return context.host.ReportAbandoned(AbandonAtOnce(context));
  try {
    context.Commands().Run(kJobControl, {kAbandonJob});
  } catch (const Command::ReplyError&) {
    Platform::Diagnostic("the answer to the order to abandon the job cannot be read");
  }
}

}  // namespace Nuv::Connect

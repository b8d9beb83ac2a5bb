#include "printer/sending.h"

#include <optional>

#include "command/commands.h"
#include "command/reply_views.h"
#include "job/block_transfer.h"
#include "job/gcode_job.h"
#include "job/machine_ids.h"
#include "job/nuv_file_library.h"
#include "job/printer_exchange.h"
#include "nuvconnect/ResultCodes.h"
#include "printer/query.h"

namespace Nuv::Printer {
namespace {

using Connect::JobContext;
using Connect::JobState;

// How a transfer ended that did not end well.
struct End {
  int32_t outcome;
  Failure failure;
};

[[noreturn]] void Finish(const End& end, nuv_outcome& outcome) {
  outcome.outcome = end.outcome;
  throw end.failure;
}

std::string Bytes(const Transfer& transfer) {
  return std::to_string(transfer.Sent()) + " of " + std::to_string(transfer.Total()) + " bytes";
}

// Runs what the core does for a transfer. A number in an answer that cannot be read ends it as any
// other failure does.
template <class Send>
int Run(Transfer& transfer, Send send) {
  try {
    return send();
  } catch (const Command::ReplyError& error) {
    transfer.ReportError(Connect::kErrorOtherReply, error.Code());
    return NUV_FAILED;
  }
}

// Why a command of a job failed.
Failure CommandFailure(Session& session, const Transfer& transfer) {
  const auto [error, command] = transfer.Last();
  const std::string who = session.GetDevice().Place() + ": command " + std::to_string(command);
  if (error == Connect::kErrorRefused) {
    return {NUV_RESULT_REFUSED, who + ": the printer refused", command};
  }
  if (error == Connect::kErrorOtherReply) {
    return {NUV_RESULT_UNREADABLE, who + ": the answer cannot be read", command};
  }
  if (session.IsAlive()) return {NUV_RESULT_NO_ANSWER, who + ": no answer", command};
  return {NUV_RESULT_LOST, who + ": the connection was lost", command};
}

// ---- Whether the printer has it

struct JobMark {
  bool known = false;  // models without a history keep no count of jobs
  int index = 0;
  int bytes = 0;

  bool IsOf(const JobMark& before, int total) const {
    return known && before.known && index != before.index && bytes == total;
  }
};

JobMark ReadMark(Session& session) {
  const Outcome outcome = session.Ask(157);
  if (outcome.reason != Connect::Reason::kNone || outcome.fields.count("I") == 0) return {};
  return {true, outcome.Number("I"), outcome.Number("S")};
}

struct Confirmation {
  bool accepted = false;
  JobMark mark;  // as told last
};

// Asks until the printer has a new job with all bytes: the last lines may still be in its receive
// buffer, if there were all. One that keeps no count must be printing. Throws Failure when it does
// not tell.
Confirmation Confirm(Session& session, const JobMark& before, const Transfer& transfer, bool lost) {
  const int attempts = transfer.All() ? 10 : 4;
  constexpr std::chrono::milliseconds kPause(500);
  Confirmation seen;
  std::optional<Failure> unanswered;
  for (int attempt = 0; attempt < attempts && !seen.accepted; ++attempt) {
    if (attempt > 0) session.Pause(kPause);
    try {
      session.Reconnect();
      seen.mark = ReadMark(session);
      seen.accepted = seen.mark.IsOf(before, transfer.Total());
      if (!before.known && !lost)
        seen.accepted = session.Run(102).Number("S") == NUV_STATE_PRINTING;
      unanswered.reset();
    } catch (const Failure& failure) {
      // It may close the connection behind the last byte, and take a moment for the next one.
      if (failure.result != NUV_RESULT_LOST && failure.result != NUV_RESULT_UNREACHABLE) throw;
      unanswered = failure;
    }
  }
  if (unanswered) throw Failure(*unanswered);
  return seen;
}

// What the printer has of a job that was sent in full, or up to where the connection was lost
// (`why`).
void Judge(Session& session, const JobMark& before, const Transfer& transfer, const Failure* why,
           nuv_outcome& outcome) {
  const std::string sent = why == nullptr ? "" : why->message + "; ";
  const bool hasAll = transfer.All();
  const std::string unknown = "whether the printer has the job is not known";
  const auto doubt = [&](const std::string& cause, int command) {
    outcome.may_hold_job = 1;
    Finish(
        {NUV_OUTCOME_UNCONFIRMED,
         {hasAll ? NUV_RESULT_UNCONFIRMED : why->result, sent + cause + ": " + unknown, command}},
        outcome);
  };
  Confirmation seen;
  try {
    if (why == nullptr || before.known) {
      seen = Confirm(session, before, transfer, why != nullptr);
    }
  } catch (const Failure& failure) {
    doubt(failure.message, failure.command);
  } catch (const Command::ReplyError& error) {
    doubt("its answer cannot be read", error.Code());
  }
  const JobMark& mark = seen.mark;
  if (seen.accepted) {
    outcome.outcome = NUV_OUTCOME_ACCEPTED;
    outcome.bytes_sent = transfer.Total();
    if (mark.known) outcome.job_index = Known(mark.index);
    outcome.message = Text(mark.known ? "the printer took it as job " + std::to_string(mark.index)
                                      : "the printer is printing it");
    return;
  }
  const bool nothing = mark.known && mark.index == before.index;
  outcome.may_hold_job = nothing ? 0 : 1;
  std::string has = unknown;
  if (nothing) {
    has = "its last job is still number " + std::to_string(before.index);
  } else if (mark.known) {
    has = "its job " + std::to_string(mark.index) + " has " + std::to_string(mark.bytes) + " of " +
          std::to_string(transfer.Total()) + " bytes";
  } else if (why == nullptr) {
    has = "it does not print";
  }
  if (why == nullptr) {
    Finish({NUV_OUTCOME_REFUSED,
            {NUV_RESULT_REFUSED, "the printer did not take the job: " + has, 157}},
           outcome);
  }
  const bool mayHaveAll = hasAll && !mark.known;
  Finish({NUV_OUTCOME_UNCONFIRMED,
          {mayHaveAll ? NUV_RESULT_UNCONFIRMED : why->result, sent + has, why->command}},
         outcome);
}

// ---- How a job ends

// The host does not want it any more, or the file could not be read on.
End Abandoned(Session& session, const JobContext& job, const Transfer& transfer,
              const std::string& name, nuv_outcome& outcome) {
  const bool interrupted = job.Interrupted();
  if (transfer.Opened() && !transfer.Abandoned()) AbandonJob(job);
  const bool free = !transfer.Opened() || transfer.Abandoned() == true;
  outcome.may_hold_job = free ? 0 : 1;
  if (interrupted && transfer.Abandoned() != true) session.LeaveUnanswered();
  const nuv_result result = interrupted ? session.Limits().Why() : NUV_RESULT_BAD_FILE;
  const int32_t how = transfer.Opened() ? NUV_OUTCOME_CANCELLED : NUV_OUTCOME_NONE;
  return {interrupted ? NUV_OUTCOME_CANCELLED : how,
          {result, name + ": " + nuv_result_text(result) + " after " + Bytes(transfer) +
                       (free ? "; the printer has no job of it"
                             : "; the printer may still wait for the rest")}};
}

// Why the core ended the job, when nobody wanted that.
End Ended(Session& session, int result, const Transfer& transfer, nuv_outcome& outcome) {
  const std::string& place = session.GetDevice().Place();
  const int32_t cut = transfer.Opened() ? NUV_OUTCOME_UNCONFIRMED : NUV_OUTCOME_NONE;
  switch (result) {
    case NUV_PRINTER_REFUSED:
      return {NUV_OUTCOME_REFUSED,
              {NUV_RESULT_REFUSED, place + ": the printer refused to open the job",
               transfer.Last().command}};
    case NUV_NO_BUFFER_SPACE:
      outcome.may_hold_job = 1;
      if (session.IsAlive() && !transfer.Started()) {
        return {NUV_OUTCOME_REFUSED,
                {NUV_RESULT_REFUSED, place + ": the printer has no memory free for the job"}};
      }
      [[fallthrough]];
    case NUV_WRITE_FAILED:
      outcome.may_hold_job = transfer.Opened() ? 1 : 0;
      return {cut, {NUV_RESULT_LOST, place + ": the connection was lost after " + Bytes(transfer)}};
    default:
      outcome.may_hold_job = transfer.Opened() ? 1 : 0;
      return {cut, CommandFailure(session, transfer)};
  }
}

}  // namespace

void SendPrintFile(Session& session, Connect::OpenPrintFile& file,
                   Connect::IPrintFileLibrary& library, Transfer& transfer, nuv_outcome& outcome) {
  const JobMark before = ReadMark(session);
  transfer.Expect(library.GetModelDataSize());
  transfer.Enter(NUV_STAGE_OPENING);
  JobState state;
  const JobContext job = session.Job(library, transfer, state);
  const int result = Run(transfer, [&] { return Connect::SendPrintFile(job, file, nullptr); });
  outcome.bytes_sent = transfer.Sent();
  if (result == NUV_OK && transfer.All() && !transfer.Abandoned()) {
    transfer.Enter(NUV_STAGE_CONFIRMING);
    return Judge(session, before, transfer, nullptr, outcome);
  }
  if (job.Interrupted() || result == NUV_FILE_NOT_READABLE) {
    Finish(Abandoned(session, job, transfer, file.File().name, outcome), outcome);
  }
  const End end = Ended(session, result, transfer, outcome);
  if (end.failure.result != NUV_RESULT_LOST || !transfer.Opened()) Finish(end, outcome);
  transfer.Enter(NUV_STAGE_CONFIRMING);
  Judge(session, before, transfer, &end.failure, outcome);
}

void SendText(Session& session, const HostFile& file, Transfer& transfer, nuv_outcome& outcome) {
  const auto identity = session.Try(101);
  transfer.Enter(NUV_STAGE_OPENING);
  JobState state;
  // Which query tells the free memory, the family decides.
  if (identity && Connect::FamilyOfModel(identity->Text("M")) == Connect::PrinterFamily::kAndroid) {
    state.machineId = Connect::kAndroidMachineId;
  }
  Connect::NuvFileLibrary none;
  const JobContext job = session.Job(none, transfer, state);
  const int result = Run(transfer, [&] { return SendGCodeFile(job, file.path, nullptr); });
  outcome.bytes_sent = transfer.Sent();
  if (result == NUV_OK && transfer.All()) {
    outcome.outcome = NUV_OUTCOME_SENT;
    outcome.message = Text("sent; printers do not confirm command files");
    return;
  }
  if (result == NUV_FILE_NOT_READABLE || job.Interrupted()) {
    Finish(Abandoned(session, job, transfer, file.name, outcome), outcome);
  }
  End end = Ended(session, result, transfer, outcome);
  outcome.may_hold_job = 0;
  if (transfer.All()) end.failure.result = NUV_RESULT_UNCONFIRMED;
  if (transfer.Sent() > 0) end.outcome = NUV_OUTCOME_UNCONFIRMED;
  Finish(end, outcome);
}

// ---- Firmware

namespace {

struct PartRow {
  Connect::BlockHeader header;
  // Announces the image; throws Failure unless the printer accepted it.
  void (*announce)(Session&, const std::string& name, size_t bytes, int kind);
  // Ends the update; null: nothing does. The printer's answer.
  std::string (*finish)(Session&);
};

const PartRow& RowOf(int32_t part) {
  static const PartRow kRows[] = {
      {Connect::BlockHeader::kNone,
       [](Session& session, const std::string& name, size_t bytes, int) {
         session.Run<Command::F141Cmd>({std::to_string(bytes) + "," + name});
       },
       nullptr},
      {Connect::BlockHeader::kL105,
       [](Session& session, const std::string& name, size_t bytes, int kind) {
         session.Run(506, {std::to_string(kind), std::to_string(bytes), name});
       },
       [](Session& session) {
         session.Run(507);
         return std::string("the printer has it whole and upgrades");
       }},
      {Connect::BlockHeader::kNone,
       [](Session& session, const std::string& name, size_t, int) {
         session.Run<Command::F188Cmd>({name});
       },
       [](Session& session) {
         const Outcome outcome = session.Run<Command::F189Cmd>();
         return outcome.values.empty() ? std::string() : outcome.values.front();
       }},
  };
  return kRows[part - NUV_PART_ENGINE];
}

}  // namespace

void SendImage(Session& session, const std::vector<uint8_t>& image, int32_t part,
               const std::string& name, Transfer& transfer, nuv_outcome& outcome) {
  const PartRow& row = RowOf(part);
  JobState state;
  Connect::NuvFileLibrary none;
  const JobContext job = session.Job(none, transfer, state);
  transfer.Expect(static_cast<int>(image.size()));
  transfer.Enter(NUV_STAGE_OPENING);
  const int kind = transfer.Options().android_kind != 0 ? transfer.Options().android_kind : 1;
  AnnounceImage(job, [&] {
    row.announce(session, name, image.size(), kind);
    return NUV_OK;
  });
  const int result = SendFirmware(job, image, row.header, Connect::LostLink::kEndsTransfer);
  outcome.bytes_sent = transfer.Sent();
  if (result != NUV_OK) {
    // Until nothing has come for a second, it takes lines for a part of the image.
    session.LeaveUnanswered();
    const bool cancelled = result == NUV_CANCELLED;
    const nuv_result why = cancelled ? session.Limits().Why() : NUV_RESULT_LOST;
    Finish({cancelled ? NUV_OUTCOME_CANCELLED : NUV_OUTCOME_UNCONFIRMED,
            {why, name + ": " + nuv_result_text(why) + " after " + Bytes(transfer) +
                      "; the printer keeps its old firmware"}},
           outcome);
  }
  outcome.outcome = NUV_OUTCOME_SENT;
  if (row.finish == nullptr) {
    outcome.message = Text("sent; printers do not confirm an engine image");
    return;
  }
  transfer.Enter(NUV_STAGE_CONFIRMING);
  try {
    outcome.message = Text(row.finish(session));
    outcome.outcome = NUV_OUTCOME_ACCEPTED;
  } catch (const Failure& failure) {
    const bool refused = failure.result == NUV_RESULT_REFUSED;
    Finish(
        {refused ? NUV_OUTCOME_REFUSED : NUV_OUTCOME_UNCONFIRMED,
         {refused ? NUV_RESULT_REFUSED : NUV_RESULT_UNCONFIRMED, failure.message, failure.command}},
        outcome);
  }
}

}  // namespace Nuv::Printer

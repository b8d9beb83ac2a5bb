#include "job_check.h"

#include <stdexcept>

#include "library.h"
#include "printer_state.h"
#include "wait.h"

namespace nuvctl {
namespace {

// The last lines may still be in the printer's receive buffer when the transfer ends.
constexpr int kAttempts = 10;

constexpr char kUnfinishedHint[] =
    "A printer keeps an unfinished job open (receiving) and takes no other: 'nuvctl raw \"F104 "
    "S2\"' "
    "abandons it.";

CommandError NotTaken(
    const std::string& reason,
    const std::string& hint = "Look at the printer's panel, then send the file again.") {
  return CommandError("job_not_taken", kPrinterFailed,
                      "The printer did not take the job: " + reason, hint);
}

CommandError Unconfirmed(const CommandError& cause) {
  CommandError error(
      "job_unconfirmed", cause.exit,
      "Everything was sent, but whether the printer took the job is not known: " + cause.message,
      "Look at the printer's panel, or run 'nuvctl status', before sending again.");
  error.result = cause.result;
  return error;
}

bool HasAll(const JobMark& before, const JobMark& after, int total) {
  return after.known && after.index != before.index && after.bytes == total;
}

std::optional<int> ConfirmByMark(System& system, const JobMark& before, JobMark after, int total) {
  const auto taken = [&] {
    after = ReadJobMark();
    return HasAll(before, after, total);
  };
  if (WaitFor(system, kAttempts, taken)) return after.index;
  if (after.index == before.index) {
    throw NotTaken("its last job is still number " + std::to_string(before.index));
  }
  throw NotTaken("its job " + std::to_string(after.index) + " holds " +
                     std::to_string(after.bytes) + " of " + std::to_string(total) + " bytes",
                 kUnfinishedHint);
}

void ConfirmByState(System& system) {
  int state = 0;
  const auto printing = [&] {
    state = ReadState().number;
    return state == NUV_PRINTER_PRINTING;
  };
  if (!WaitFor(system, kAttempts, printing)) {
    throw NotTaken("it keeps no count of jobs, and its state is " + StateName(state));
  }
}

}  // namespace

JobMark ReadJobMark() {
  JobMark mark;
  const int result = API_GetCurrJobIndexAndTotalSize(&mark.index, &mark.bytes);
  if (result == NUV_PRINTER_REFUSED) return JobMark();
  Check(result, "Reading the number of the last job");
  mark.known = true;
  return mark;
}

std::optional<int> ConfirmJob(const Context& context, const Printer& printer, const JobMark& before,
                              int total) {
  std::optional<CommandError> unanswered;
  while (true) {
    try {
      if (unanswered) ReopenPrinter(context, printer);
      const JobMark after = before.known ? ReadJobMark() : JobMark();
      if (after.known) return ConfirmByMark(context.system, before, after, total);
      ConfirmByState(context.system);
      return std::nullopt;
    } catch (const CommandError& error) {
      if (error.code == "job_not_taken") throw;
      // A printer may close the connection behind the last byte.
      if (unanswered) throw Unconfirmed(*unanswered);
      if (error.exit != kConnectionProblem) throw Unconfirmed(error);
      unanswered = error;
    } catch (const std::logic_error& error) {
      throw Unconfirmed(
          CommandError("bad_reply", kPrinterFailed,
                       std::string("its reply cannot be understood (") + error.what() + ")", ""));
    }
  }
}

bool IsCut(const Transfer& transfer) {
  return !transfer.cancelled &&
         (transfer.result == NUV_NO_BUFFER_SPACE || transfer.result == NUV_WRITE_FAILED);
}

int ConfirmCutJob(const Context& context, const Printer& printer, const JobMark& before,
                  const Transfer& transfer, CommandError failure) {
  JobMark after;
  const auto taken = [&] {
    after = ReadJobMark();
    return transfer.reported && HasAll(before, after, transfer.total);
  };
  try {
    // Without the count from before, a job of equal size would be taken for this one.
    if (before.known) {
      ReopenPrinter(context, printer);
      if (WaitFor(context.system, kAttempts, taken)) return after.index;
    }
  } catch (const std::exception&) {
    after = JobMark();  // what the printer has cannot be found out
  }
  if (after.known && after.index == before.index) {
    failure.message += "; the printer has nothing of the job";
    throw failure;
  }
  if (after.known) {
    failure.message += "; the printer has " + std::to_string(after.bytes) +
                       (transfer.reported ? " of " + std::to_string(transfer.total) : "") +
                       " bytes of it, as job " + std::to_string(after.index);
  } else if (transfer.reported && transfer.sent == transfer.total) {
    CommandError unconfirmed = Unconfirmed(failure);
    unconfirmed.shown = failure.shown;
    unconfirmed.shown.json["result"] = "not_confirmed";
    failure = unconfirmed;
  }
  failure.hint += std::string(" ") + kUnfinishedHint;
  throw failure;
}

CommandError JobRefused(CommandError failure) {
  failure.code = "job_refused";
  failure.message = "The printer refused to open the job";
  failure.hint =
      "It prints, or an unfinished job is still open on it. When 'nuvctl status' says receiving "
      "although nobody sends, 'nuvctl raw \"F104 S2\"' abandons it.";
  return failure;
}

}  // namespace nuvctl

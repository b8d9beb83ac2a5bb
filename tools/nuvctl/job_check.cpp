#include "job_check.h"

#include <stdexcept>

#include "error.h"
#include "library.h"
#include "printer_state.h"
#include "wait.h"

namespace nuvctl {
namespace {

// The last lines may still be in the printer's receive buffer when the transfer ends.
constexpr int kAttempts = 10;

CommandError NotTaken(const std::string& reason) {
  return CommandError("job_not_taken", kPrinterFailed,
                      "The printer did not take the job: " + reason,
                      "Look at the printer's panel, then send the file again.");
}

CommandError Unconfirmed(const CommandError& cause) {
  CommandError error(
      "job_unconfirmed", cause.exit,
      "Everything was sent, but whether the printer took the job is not known: " + cause.message,
      "Look at the printer's panel, or run 'nuvctl status', before sending again.");
  error.result = cause.result;
  return error;
}

std::optional<int> ConfirmByMark(System& system, const JobMark& before, JobMark after, int total) {
  const auto taken = [&] {
    after = ReadJobMark();
    return after.known && after.index != before.index && after.bytes == total;
  };
  if (WaitFor(system, kAttempts, taken)) return after.index;
  if (after.index == before.index) {
    throw NotTaken("its last job is still number " + std::to_string(before.index));
  }
  throw NotTaken("its job " + std::to_string(after.index) + " holds " +
                 std::to_string(after.bytes) + " of " + std::to_string(total) + " bytes");
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

std::optional<int> ConfirmJob(const Context& context, const JobMark& before, int total) {
  try {
    const JobMark after = before.known ? ReadJobMark() : JobMark();
    if (after.known) return ConfirmByMark(context.system, before, after, total);
    ConfirmByState(context.system);
    return std::nullopt;
  } catch (const CommandError& error) {
    if (error.code == "job_not_taken") throw;
    throw Unconfirmed(error);
  } catch (const std::logic_error& error) {
    throw Unconfirmed(
        CommandError("bad_reply", kPrinterFailed,
                     std::string("its reply cannot be understood (") + error.what() + ")", ""));
  }
}

}  // namespace nuvctl

// Questions that more than one function of the interface asks. They throw Failure, and what
// ParseDecimal throws.
#ifndef NUV_PRINTER_ASKING_H_
#define NUV_PRINTER_ASKING_H_

#include "printer/device.h"

namespace Nuv::Printer {

// Command 102.
void AskState(Session& session, nuv_state& state);

// Commands 107 and 157; fails only when both do.
void AskJob(Session& session, nuv_job& job);

// What command 105, 120 or 356 tells, as the model has it.
void AskResin(Session& session, nuv_resin& resin);

// For a state with which the printer does not print.
const char* WordsForResin(int state);

}  // namespace Nuv::Printer

#endif  // NUV_PRINTER_ASKING_H_

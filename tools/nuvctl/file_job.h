// The steps that sending any file has in common.
#ifndef NUVCTL_FILE_JOB_H_
#define NUVCTL_FILE_JOB_H_

#include <string>

#include "context.h"
#include "error.h"
#include "printers.h"
#include "transfer.h"

namespace nuvctl {

struct JobFile {
  std::string name;  // as the user gave it
  std::wstring path;
};

// Checks that `name` (UTF-8) is a file that can be read, before any printer is bothered.
JobFile OpenJobFile(const std::string& name);

// Throws unless the current printer is free to take a job.
void RequireReady();

// Opens the printer that the options choose, checks that it is ready and says what will be sent.
Printer OpenReadyPrinter(const Context& context, const JobFile& file);

// The failure of a transfer that the library ended with a result other than 0.
CommandError TransferFailure(const JobFile& file, const Transfer& transfer);

// Throws unless the whole file went out. `cancel_hint`: what a cancel means for the printer, asked
// only when the transfer was cancelled.
void RequireSent(const Context& context, const JobFile& file, const Transfer& transfer,
                 std::string (*cancel_hint)());

// File, bytes, seconds and `result` for scripts.
nlohmann::ordered_json TransferJson(const JobFile& file, const Transfer& transfer,
                                    const std::string& result);

// "1.2 MB in 1:23"
std::string TransferText(const Transfer& transfer);

}  // namespace nuvctl

#endif  // NUVCTL_FILE_JOB_H_

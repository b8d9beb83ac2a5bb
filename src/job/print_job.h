#ifndef NUV_JOB_PRINT_JOB_H_
#define NUV_JOB_PRINT_JOB_H_

#include <memory>
#include <optional>
#include <string>

#include "job/job_context.h"
#include "job/send_job_proc.h"
#include "platform/process_claim.h"

namespace Nuv::Connect {

// The print file that this process has open: the print-file library holds one. Closes it when it
// goes.
class OpenPrintFile {
 public:
  explicit OpenPrintFile(IPrintFileLibrary& library) : library_(library) {}
  ~OpenPrintFile();
  OpenPrintFile(const OpenPrintFile&) = delete;
  OpenPrintFile& operator=(const OpenPrintFile&) = delete;

  // 0, 1 another one is open in this process, 4 the file cannot be opened or is damaged, 23 there
  // is no print-file library.
  int Open(const std::wstring& path);

  const JobFile& File() const { return file_; }

  // What is wrong with the file that Open found damaged; empty when there is nothing.
  const std::string& Damage() const { return damage_; }

  // The next one that is opened closes it.
  void LeaveOpen() { open_ = false; }

 private:
  IPrintFileLibrary& library_;
  std::optional<Platform::ProcessClaim> claim_;
  JobFile file_;
  std::string damage_;
  bool open_ = false;
};

// Sends the open print file: opening exchange, data lines, abandon command when cancelled. Blocks
// for the whole job; `progress` may be null. Results as at API_SendPrintFile.
int SendPrintFile(const JobContext& context, OpenPrintFile& file, NuvJobProgressCallback progress);

// Opens the print file at `path` and sends it. An exception of a malformed number in a reply passes
// through and leaves the link free.
int SendPrintFile(const JobContext& context, const std::wstring& path,
                  NuvJobProgressCallback progress);

}  // namespace Nuv::Connect

#endif  // NUV_JOB_PRINT_JOB_H_

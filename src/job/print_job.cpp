#include "job/print_job.h"

#include <vector>

#include "job/line_transfer.h"
#include "job/printer_exchange.h"
#include "job/send_job_proc.h"
#include "nuvconnect/ResultCodes.h"
#include "platform/diagnostics.h"
#include "platform/files.h"

using Nuv::Platform::Diagnostic;

namespace Nuv::Connect {
namespace {

// The file at `path`, when it can be opened for reading.
std::optional<JobFile> ReadableFile(const std::wstring& path) {
  std::optional<std::string> narrow = Platform::NarrowPath(path);
  if (!narrow) {
    Diagnostic("print file: the path cannot be written in this system's narrow characters");
    return std::nullopt;
  }
  if (!Platform::RegularFile(*narrow).IsOpen()) {
    Diagnostic("print file %s cannot be opened, or is no regular file", narrow->c_str());
    return std::nullopt;
  }
  // A part of a path that has a narrow form has one too.
  return JobFile{*narrow, Platform::NarrowPath(Platform::FileName(path)).value_or(std::string())};
}

// Streams the data lines of the open print file, as far as the host does not cancel.
int SendDataLines(const JobContext& context, int total, LineTransfer& transfer) {
  if (total < 1) return NUV_OK;
  int index = 0;
  while (!context.host.IsCancelled()) {
    std::vector<uint8_t> line;
    if (!context.printFiles.ReadLayer(index, line)) return NUV_FILE_NOT_READABLE;
    line.insert(line.end(), kLineEnd, kLineEnd + kLineEndBytes);
    bool sent = false;
    const int result = transfer.Pass(line, line.size(), sent);
    if (result != NUV_OK) return result;
    if (sent) ++index;
    if (transfer.IsComplete()) break;
  }
  return NUV_OK;
}

int TransferModelData(const JobContext& context, int total, NuvJobProgressCallback progress) {
  LineTransfer transfer(context, total, progress);
  transfer.Start();
  const int result = SendDataLines(context, total, transfer);
  // The next job would be appended to one that the file broke off.
  if (result == NUV_FILE_NOT_READABLE) AbandonJob(context);
  if (result != NUV_OK) return result;
  // Asked once more: a cancel that comes with the last line still stops the print.
  if (!context.host.IsCancelled()) return transfer.Finish();
  AbandonJob(context);
  return NUV_OK;
}

}  // namespace

int OpenPrintFile::Open(const std::wstring& path) {
  claim_.emplace("print-file");
  if (!claim_->Held()) {
    Diagnostic("job refused: another one is running");
    return NUV_FAILED;
  }
  const std::optional<JobFile> file = ReadableFile(path);
  if (!file) return NUV_FILE_NOT_READABLE;
  file_ = *file;
  if (!library_.LoadLibrary()) return NUV_NUVFILE_MISSING;
  open_ = library_.Load(file_.path);
  if (open_) return NUV_OK;
  damage_ = library_.LastError();
  return NUV_FILE_NOT_READABLE;
}

OpenPrintFile::~OpenPrintFile() {
  if (open_) library_.Close();
}

int SendPrintFile(const JobContext& context, const std::wstring& path,
                  NuvJobProgressCallback progress) {
  const JobClaim claim(context.state.jobRunning);
  if (!claim.Held()) return NUV_FAILED;
  OpenPrintFile file(context.printFiles);
  const int opened = file.Open(path);
  return opened == NUV_OK ? SendPrintFile(context, file, progress) : opened;
}

int SendPrintFile(const JobContext& context, OpenPrintFile& file, NuvJobProgressCallback progress) {
  context.state.machineId = context.printFiles.GetMachineID();
  const std::unique_ptr<ISendJobProc> sender =
      CreateSendJobProc(context.state.machineId, file.File(), context);
  if (sender == nullptr) {
    Diagnostic("print file %s: no sender for machine ID \"%s\"", file.File().path.c_str(),
               context.state.machineId.c_str());
    return NUV_NO_JOB_SENDER;
  }
  // From the first command to the last line: a poll between them would find the job opened and end
  // its connection.
  const LinkClaim link(context, JobKind::kLines);
  // This figure decides only whether the job begins. The transfer asks for its own when it starts,
  // since the jobs of Android printers and command text come to it without one.
  const int prepared = sender->PrepareJob(context.state.freeBuffer);
  if (prepared != NUV_OK) {
    Diagnostic("print file %s: the printer did not open the job (%d)", file.File().path.c_str(),
               prepared);
    // The host may try again; the next load closes the file.
    file.LeaveOpen();
    return prepared;
  }
  return TransferModelData(context, context.printFiles.GetModelDataSize(), progress);
}

}  // namespace Nuv::Connect

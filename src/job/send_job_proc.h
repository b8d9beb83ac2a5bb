#ifndef NUV_JOB_SEND_JOB_PROC_H_
#define NUV_JOB_SEND_JOB_PROC_H_

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "job/block_transfer.h"
#include "job/job_context.h"

namespace Nuv::Connect {

// How a family of printers takes a job: the exchange that opens it. The model data that follows is
// streamed in the same way for all.
class ISendJobProc {
 public:
  virtual ~ISendJobProc() = default;

  // Runs the opening exchange and writes the printer's free receive buffer, in bytes, to
  // `freeBuffer`. 0, or the result that ends the job.
  virtual int PrepareJob(uint64_t& freeBuffer) = 0;
};

// The print file of a job.
struct JobFile {
  std::string path;  // narrow, to open it
  std::string name;  // without folders, as printers are told
};

// The sender for the printers of `machineId`, or null when there is none. The file is the one that
// is open in the context's library. The context must outlive the sender.
std::unique_ptr<ISendJobProc> CreateSendJobProc(const std::string& machineId, const JobFile& file,
                                                const JobContext& context);

// Sender of the Zafel Superfine family: state, job opening, free buffer.
class SendJobProcZSF final : public ISendJobProc {
 public:
  explicit SendJobProcZSF(const JobContext& context) : context_(context) {}

  // 1 an exchange failed, 16 the printer has no free buffer.
  int PrepareJob(uint64_t& freeBuffer) override;

 private:
  const JobContext& context_;
};

// Sender of the dental printers: state, identity, readiness, file name, material and project, job
// opening; then the key and the records L102 and L103 as they are; free buffer.
class SendJobProcBEGO final : public ISendJobProc {
 public:
  SendJobProcBEGO(const JobContext& context, JobFile file)
      : context_(context), file_(std::move(file)) {}

  // 1 an exchange failed, 4 a part of the file cannot be read or its name cannot be sent, 16 the
  // printer has no free buffer, 20 a part could not be written, 29 it refused to open the job.
  int PrepareJob(uint64_t& freeBuffer) override;

 private:
  const JobContext& context_;
  const JobFile file_;
};

// Sender of printers with an Android board: state, the file's digest, thumbnail in framed blocks,
// job opening, then the records L101, L102 and L103 joined, in blocks. The free buffer is left to
// the transfer that follows.
class SendJobProcAndroid final : public ISendJobProc {
 public:
  SendJobProcAndroid(const JobContext& context, JobFile file)
      : context_(context), file_(std::move(file)) {}

  // 1 an exchange failed, 4 the file or a part of it cannot be read or its name cannot be sent, 20
  // a part could not be written, 29 the printer refused to open the job.
  int PrepareJob(uint64_t& freeBuffer) override;

 private:
  struct Parts {
    std::vector<uint8_t> thumbnail;
    std::vector<uint8_t> records;
  };

  bool ReadParts(Parts& parts) const;
  int SendThumbnail(const std::vector<uint8_t>& thumbnail) const;
  int SendBlocks(const std::vector<uint8_t>& bytes, BlockHeader header) const;

  const JobContext& context_;
  const JobFile file_;
};

}  // namespace Nuv::Connect

#endif  // NUV_JOB_SEND_JOB_PROC_H_

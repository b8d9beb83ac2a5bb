#ifndef NUV_JOB_LINE_TRANSFER_H_
#define NUV_JOB_LINE_TRANSFER_H_

#include <cstdint>
#include <string>
#include <vector>

#include "job/job_context.h"
#include "nuvconnect/ResultCodes.h"

namespace Nuv::Connect {

// Streams lines to the printer against the estimate of its free buffer, and reports progress.
//
// The printer acknowledges no line. Each pass tries one line and ends with a pause, also when it
// could only ask for the free buffer again.
class LineTransfer {
 public:
  // `total`: bytes of all lines without line ends; `progress` may be null.
  LineTransfer(const JobContext& context, int total, NuvJobProgressCallback progress);

  // Tells the host that the transfer starts and asks for the free buffer.
  void Start();

  // One pass with a line as it goes out, line end included: it waits until the whole of it fits.
  // `cost`: bytes that it is charged with. `sent` tells whether it went out or is to be tried again
  // in the next pass. 0, 16 the printer was lost while waiting for buffer space, 20 the line could
  // not be written, or the printer ended the link and nobody can tell what it had taken until then.
  int Pass(const std::vector<uint8_t>& line, uint64_t cost, bool& sent);

  // Looks at the link once more, behind the last pause. 0 or 20, as Pass.
  int Finish() const { return IsLost() ? NUV_WRITE_FAILED : NUV_OK; }

  bool IsComplete() const { return sent_ >= total_; }

 private:
  int Write(const std::vector<uint8_t>& line, uint64_t cost);
  int WaitForSpace();
  // True when the link has ended with bytes on it that no reply has confirmed.
  bool IsLost() const;

  const JobContext& context_;
  NuvJobProgressCallback progress_;
  int total_;
  int sent_ = 0;          // without line ends
  uint64_t charged_ = 0;  // running total of the lines' cost
};

// Line end of everything that a job writes, and its length.
extern const char kLineEnd[3];
constexpr size_t kLineEndBytes = 2;

}  // namespace Nuv::Connect

#endif  // NUV_JOB_LINE_TRANSFER_H_

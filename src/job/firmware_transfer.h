#ifndef NUV_JOB_FIRMWARE_TRANSFER_H_
#define NUV_JOB_FIRMWARE_TRANSFER_H_

#include <cstdint>
#include <functional>
#include <vector>

#include "job/block_stream.h"
#include "job/job_context.h"

namespace Nuv::Connect {

// Runs `announce`, which announces an image to the printer, and returns its result. The status
// thread stays off the link meanwhile and, once the printer has accepted, for as long as it waits
// for the image: it would take a query for a part of it, and a new connection for its end.
// 1 when a job or another transfer is running; nothing is announced then.
int32_t AnnounceImage(const JobContext& context, const std::function<int32_t()>& announce);

// Streams a firmware image to the printer, one block every 15 ms, on the caller's thread. Tells the
// host of the start and of each block, and asks it before each block whether to go on. The printer
// acknowledges nothing, and a block that is not written does not stop the transfer: what the
// printer answers to the next command is the only report.
//
// 0 every block was handed to the channel, 1 another transfer is running, 2 cancelled.
int32_t SendFirmware(const JobContext& context, const std::vector<uint8_t>& image,
                     BlockHeader header);

}  // namespace Nuv::Connect

#endif  // NUV_JOB_FIRMWARE_TRANSFER_H_

#ifndef NUV_COMMAND_I_FCMD_PROC_H_
#define NUV_COMMAND_I_FCMD_PROC_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace Nuv::Connect {

// What a processor tells the error callback: the status of a failed transaction or a refusal.
enum ConnectError : int32_t {
  kErrorNoReply = -1,     // nothing usable came back
  kErrorOtherReply = -2,  // only replies to other commands came back
  kErrorRefused = 29      // the printer answered without "OK"
};

// Called with the error and the code of the command that failed.
using ErrorCallback = std::function<void(ConnectError error, int32_t code)>;

// Runs one command and turns its outcome into values for the caller.
//
// Thread-safety: none; runs on the caller's thread and holds no lock. One processor runs one
// command at a time. Errors raised inside the command (a reply whose head bears no number) pass
// through.
class IFcmdProc {
 public:
  virtual ~IFcmdProc() = default;

  // Replaces `output` by the values that the command delivered. Nonzero: failed.
  virtual int32_t Process(std::vector<std::string>& output) = 0;
};

}  // namespace Nuv::Connect

#endif  // NUV_COMMAND_I_FCMD_PROC_H_

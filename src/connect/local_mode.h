#ifndef NUV_CONNECT_LOCAL_MODE_H_
#define NUV_CONNECT_LOCAL_MODE_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Nuv::Connect {

// One way in which the local link reaches a printer.
//
// Thread-safety: none; the channel serialises the calls.
class LocalMode {
 public:
  virtual ~LocalMode() = default;

  // Opens printer `index` of the mode's last search.
  virtual bool Open(int index) = 0;
  // Opens the printer again that is at `index` of the search in which it was chosen.
  virtual bool Reopen(int index) { return Open(index); }
  virtual void Close() = 0;
  virtual bool IsOpen() const = 0;

  // Sends `length` bytes, after throwing away replies that nobody has read.
  virtual bool Write(const uint8_t* data, size_t length) = 0;

  // The next reply line, however many blocks it comes in; what came when no more does within the
  // time limit; empty when nothing came.
  std::string ReadReply();

  // The bytes of the last reply; false when there are none.
  bool LastRead(std::vector<uint8_t>& data) const;

 protected:
  // How long a transfer may take.
  static constexpr uint32_t kTransferTimeoutMs = 3000;

  // One block of a reply; empty when none came within the time limit.
  virtual std::string ReadBlock() = 0;

 private:
  std::string lastRead_;
};

}  // namespace Nuv::Connect

#endif  // NUV_CONNECT_LOCAL_MODE_H_

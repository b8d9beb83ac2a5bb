#ifndef NUV_CONNECT_USB_MODE_H_
#define NUV_CONNECT_USB_MODE_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "transport/connector_base.h"

namespace Nuv::Connect {

// The local link's printers on USB.
//
// Thread-safety: none; the channel serialises the calls.
class UsbMode {
 public:
  explicit UsbMode(std::unique_ptr<ConnectorBase> connector) : connector_(std::move(connector)) {}

  // Replaces `found` by the stored names of the attached printers. False: they could not all be
  // listed.
  bool EnumerateDevices(std::vector<std::string>& found);

  // Opens printer `index` of the last enumeration; an open one is closed first. A negative index is
  // refused and changes nothing.
  bool Open(int index);
  void Close();
  bool IsOpen() const { return isOpen_; }

  // True when the printer took all within the time limit.
  bool Write(const uint8_t* data, size_t length);

  // Reads until a line feed has come, each block within the time limit; a block with nothing in it
  // ends the reply. Empty when nothing came.
  std::string ReadReply();

  // Copies the bytes of the last reply. False when there were none.
  bool LastRead(std::vector<uint8_t>& data) const;

 private:
  std::string ReadBlock();

  std::unique_ptr<ConnectorBase> connector_;
  std::vector<uint8_t> lastRead_;
  bool isOpen_ = false;
};

}  // namespace Nuv::Connect

#endif  // NUV_CONNECT_USB_MODE_H_

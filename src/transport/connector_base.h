#ifndef NUV_TRANSPORT_CONNECTOR_BASE_H_
#define NUV_TRANSPORT_CONNECTOR_BASE_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/waiter.h"
#include "transport/link_state.h"

// Results of Write and Read beside 0; any other is the system's error code.
constexpr uint32_t kTransferTimeout = 258;
constexpr uint32_t kNotOpen = 4054;

// What Read asks for, and what its buffer must hold.
constexpr uint32_t kReadBytes = 512;

// Byte stream to one printer on a USB port. What is open never becomes another printer: a node or
// path that another printer has got in the meantime is not used.
//
// Thread-safety: none; the raw channel serialises the calls. One read and one write may be in
// flight at the same time. Errors: returned as a status, never thrown; the connector stays usable
// after kTransferTimeout, which also tells that nobody waits any more.
class ConnectorBase {
 public:
  // Lists the attached printers anew. False when the devices could not be walked; paths found until
  // then stay in the list.
  virtual bool SearchDevices() = 0;

  // Opens the printer whose place in the list `indexText` names in decimal (0 when it names none),
  // also when it has been plugged in anew since. It is kept when it is open already and usable;
  // another one that is open is closed once it stands.
  virtual bool Open(const wchar_t* indexText) = 0;

  // Does nothing when none is open.
  virtual void Close() = 0;

  // Sends `length` bytes (0 allowed) as one block, after throwing away replies that nobody has
  // read. `timeoutMs`: milliseconds to wait for completion. Returns 0, kTransferTimeout, kNotOpen,
  // or the system's error code. A block that the printer has not taken in time is taken back.
  virtual uint32_t Write(const uint8_t* data, uint32_t length, uint32_t timeoutMs) = 0;

  // Reads one block of at most kReadBytes bytes into `buffer`, which the caller has filled with
  // zeros: the reply is the text up to the first of them. Returns 0, kTransferTimeout or kNotOpen.
  virtual uint32_t Read(uint8_t* buffer, uint32_t timeoutMs) = 0;

  // Replaces `paths` by the stored names of the list, each a path of the system and "\1".
  virtual std::vector<std::wstring>& GetDevicePaths(std::vector<std::wstring>& paths) = 0;

  // Closes.
  virtual ~ConnectorBase() = default;

  // Opens the printer again that was opened last, unless it is open and usable: that on the same
  // port with the same vendor, product and serial number, whatever a later search found.
  // `samePlugging`: only when it has not been unplugged since.
  virtual bool Reopen(bool samePlugging) = 0;

  // Without waiting.
  virtual Nuv::Transport::LinkState Look() = 0;

  // Throws input away until none came for `quietMs`, for `limitMs` at most. True when there was
  // any.
  virtual bool DiscardUntilQuiet(uint32_t quietMs, uint32_t limitMs) = 0;

  // Names the printer at `index` of the list, its port and this plugging in of it; empty when there
  // is none.
  virtual std::string Identity(size_t index) const = 0;

  // How it waits from now on; `waiter` outlives it. Without: on the system's clock.
  void SetWaiter(const Nuv::Platform::Waiter& waiter) { waiter_ = &waiter; }

 protected:
  const Nuv::Platform::Waiter* waiter_ = &Nuv::Platform::SystemWaiter();
};

// The USB connector of this system.
std::unique_ptr<ConnectorBase> MakeUsbConnector();

#endif  // NUV_TRANSPORT_CONNECTOR_BASE_H_

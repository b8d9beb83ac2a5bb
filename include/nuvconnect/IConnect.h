// The raw command channel: every byte to and from a printer passes through one object of this
// interface. Handed to hosts by IConnectingFramework::GetConnect.
#ifndef NUVCONNECT_ICONNECT_H_
#define NUVCONNECT_ICONNECT_H_

#include <cstdint>
#include <string>
#include <vector>

// Nested like this for hosts older than C++17.
namespace Nuv {
namespace Connect {

// Thread-safety: every operation holds the channel's own lock for its duration, so one request
// and its reply are never interleaved with another thread's. EnumerateDevices of the network first
// waits for such searches of this program and of the user's others, without the lock.
// Errors: false, or an empty reply. The channel knows no error codes; callers judge the reply.
// The order of the operations is binding: hosts call them through the virtual table.
class IConnect {
 public:
  virtual ~IConnect() = default;

  // Searches printers by UDP on the network of `address` with `netmask` (both empty: on every
  // network of the host), waiting `timeoutMs` milliseconds after the last answer (0 or below:
  // 3000). Replaces `found` by the answers; false when the search could not be made.
  virtual bool SearchDevices(std::vector<std::string>& found, std::string address,
                             std::string netmask, int timeoutMs) = 0;

  // Lists what can be opened, and opens nothing. `kind` 0: USB; any other: network. Replaces
  // `found` by one identifier per device, in the order that ChooseDevice counts in. False when the
  // search failed.
  virtual bool EnumerateDevices(int kind, std::vector<std::string>& found) = 0;

  // Copies the bytes of the last reply over USB into `data`, also after a network printer was
  // chosen; false when there are none or USB was closed otherwise.
  virtual bool ReadLocalData(std::vector<uint8_t>& data) = 0;

  // Opens device `index` of the last enumeration of `kind`, makes it current, and closes what is
  // open of the other kind. On failure the earlier choice stays in force, and its connection but
  // for one on the network, which is closed before another on the network is tried.
  virtual bool ChooseDevice(int kind, int index) = 0;

  // Reopens the printer of the last successful choice, by index or by address, whatever is at its
  // index by now. An open connection is closed first; but a USB printer that is open and usable and
  // owes no reply is kept. In a job one that was unplugged is not reopened.
  virtual bool OpenDevice() = 0;

  // Closes the current link; the choice is kept for OpenDevice. Always true.
  virtual bool CloseDevice() = 0;

  // Reads one more reply without sending; a final line feed is removed, a carriage return stays.
  // Empty when nothing came within 36 s (USB: 3 s for each block, 30 s in all). At most 64 KiB.
  virtual std::string ReceiveReply() = 0;

  // Sends `command` as it stands (the caller supplies the line end) and returns the reply, read as
  // ReceiveReply does. Input left over from an earlier command is discarded before sending; while
  // the printer owes replies to earlier requests, they are waited for, 2 s at most.
  // An empty command returns an empty reply at once; nothing is sent.
  virtual std::string ExecuteCommand(std::string command) = 0;

  // Sends `bytes`; true when the system took them all. False at once when `bytes` is empty.
  virtual bool SendBytes(std::vector<uint8_t> bytes) = 0;

  // Mode of the local link: 0 USB, 1 sockets.
  virtual void SetLocalOption(int option) = 0;

  // Process-wide search settings, kept across framework instances. The time limit is in
  // milliseconds, and 0 or below stands for 3000; the port is 1 to 65535, by default 6013; the
  // message is by default "F195\r\n".
  virtual void SetSearchTimeout(int timeoutMs) = 0;
  virtual void SetSearchPort(int port) = 0;
  virtual void SetSearchMessage(std::string message) = 0;
};

}  // namespace Connect
}  // namespace Nuv

#endif  // NUVCONNECT_ICONNECT_H_

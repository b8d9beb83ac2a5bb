#include "transport/usb_connector_linux.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cwchar>
#include <limits>
#include <system_error>

#include "platform/diagnostics.h"
#include "transport/usb_nodes.h"

namespace {

using std::chrono::milliseconds;

constexpr short kGone = POLLHUP | POLLERR | POLLNVAL;
// The rest of a late reply follows its first packet at once.
constexpr int kQuietMs = 20;

class SystemCalls final : public DeviceCalls {
 public:
  int Open(const std::string& node) override {
    return OrError(open(node.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
  }
  int64_t Read(int fd, uint8_t* buffer, size_t size) override {
    return OrError(read(fd, buffer, size));
  }
  int64_t Write(int fd, const uint8_t* data, size_t size) override {
    return OrError(write(fd, data, size));
  }
  int Poll(int fd, short events, int timeoutMs) override {
    pollfd node{fd, events, 0};
    const int ready = OrError(poll(&node, 1, timeoutMs));
    return ready > 0 ? node.revents : ready;
  }
  void Close(int fd) override { close(fd); }

 private:
  template <class T>
  static T OrError(T result) {
    return result < 0 ? static_cast<T>(-errno) : result;
  }
};

bool MayTryAgain(int64_t result) { return result == -EAGAIN || result == -EINTR; }

// What helps, beside the system's own words.
const char* AdviceFor(int error) {
  switch (error) {
    case EBUSY:
      return "; another program has it open, and it opens only once";
    case EACCES:
    case EPERM:
      return "; the udev rule of packaging/udev gives users the right to use it";
    case ENOENT:
    case ENODEV:
    case ENXIO:
      return "; it is not attached any more";
    default:
      return "";
  }
}

}  // namespace

DeviceCalls& SystemDeviceCalls() {
  static SystemCalls calls;
  return calls;
}

std::unique_ptr<ConnectorBase> MakeUsbConnector() { return std::make_unique<UsbConnectorLinux>(); }

UsbConnectorLinux::UsbConnectorLinux(Nuv::Platform::Clock& clock, DeviceCalls& calls)
    : clock_(clock), calls_(calls) {}

UsbConnectorLinux::~UsbConnectorLinux() { UsbConnectorLinux::Close(); }

bool UsbConnectorLinux::SearchDevices() {
  auto found = FindPrinterNodes();
  nodes_ = found ? std::move(*found) : std::vector<std::string>();
  return found.has_value();
}

std::vector<std::wstring>& UsbConnectorLinux::GetDevicePaths(std::vector<std::wstring>& paths) {
  paths.clear();
  // Names of nodes are ASCII: the driver gives them.
  for (const std::string& node : nodes_) {
    paths.push_back(std::wstring(node.begin(), node.end()) + L"\\1");
  }
  return paths;
}

bool UsbConnectorLinux::Open(const wchar_t* indexText) {
  const long index = std::wcstol(indexText, nullptr, 10);
  if (index < 0 || static_cast<size_t>(index) >= nodes_.size()) return false;
  Close();
  openNode_ = nodes_[static_cast<size_t>(index)];
  const int fd = calls_.Open(openNode_);
  if (fd < 0) {
    Report("opening", -fd);
    return false;
  }
  fd_ = fd;
  return true;
}

void UsbConnectorLinux::Close() {
  if (fd_ < 0) return;
  calls_.Close(fd_);
  fd_ = -1;
}

uint32_t UsbConnectorLinux::Write(const uint8_t* data, uint32_t length, uint32_t timeoutMs) {
  if (fd_ < 0) return kNotOpen;
  const Deadline deadline = DeadlineIn(timeoutMs);
  DiscardInput(deadline);
  // The driver takes a part at a time.
  for (uint32_t written = 0; written < length;) {
    const int64_t count = calls_.Write(fd_, data + written, length - written);
    if (count > 0) {
      written += static_cast<uint32_t>(count);
      continue;
    }
    if (count < 0 && !MayTryAgain(count)) {
      Report("writing", static_cast<int>(-count));
      return static_cast<uint32_t>(-count);
    }
    const uint32_t status = WaitForOutput(deadline);
    if (status != 0) return status;
  }
  // It also takes the last part before the printer has.
  return length == 0 ? 0 : WaitForOutput(deadline);
}

uint32_t UsbConnectorLinux::Read(uint8_t* buffer, uint32_t timeoutMs) {
  if (fd_ < 0) return kNotOpen;
  const Deadline deadline = DeadlineIn(timeoutMs);
  do {
    const int ready = Wait(POLLIN, deadline);
    if (ready == 0) break;
    const int64_t count = calls_.Read(fd_, buffer, kReadBytes);
    if (count > 0) return 0;
    const bool failed = count < 0 && !MayTryAgain(count);
    // Nothing read is a packet without content, as long as the printer is there.
    if (failed || (ready & kGone) != 0) {
      Report("reading", failed ? static_cast<int>(-count) : ENODEV);
      break;
    }
  } while (clock_.Now() < deadline);
  return kTransferTimeout;
}

UsbConnectorLinux::Deadline UsbConnectorLinux::DeadlineIn(uint32_t timeoutMs) const {
  return clock_.Now() + milliseconds(timeoutMs);
}

int UsbConnectorLinux::Wait(short events, Deadline deadline) {
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(deadline - clock_.Now()).count();
    const auto timeoutMs = std::clamp<int64_t>(left, 0, std::numeric_limits<int>::max());
    const int ready = calls_.Poll(fd_, events, static_cast<int>(timeoutMs));
    if (ready != -EINTR) return ready >= 0 ? ready : POLLERR;
  }
}

uint32_t UsbConnectorLinux::WaitForOutput(Deadline deadline) {
  const int ready = Wait(POLLOUT, deadline);
  if (ready == 0) return kTransferTimeout;
  // A transfer that the unplugging ended counts as done too, so this is asked first.
  if ((ready & kGone) == 0) return 0;
  Report("writing", ENODEV);
  return ENODEV;
}

void UsbConnectorLinux::DiscardInput(Deadline deadline) {
  uint8_t stale[kReadBytes];
  int quietMs = 0;
  do {
    const int ready = calls_.Poll(fd_, POLLIN, quietMs);
    if (ready == -EINTR) continue;
    // A printer that has gone shows when it is written to.
    if (ready <= 0 || (ready & kGone) != 0) return;
    const int64_t count = calls_.Read(fd_, stale, sizeof stale);
    if (count < 0 && !MayTryAgain(count)) return;
    quietMs = kQuietMs;
  } while (clock_.Now() < deadline);
}

void UsbConnectorLinux::Report(const char* action, int error) const {
  Nuv::Platform::Diagnostic("USB printer %s: %s failed: %s%s", openNode_.c_str(), action,
                            std::generic_category().message(error).c_str(), AdviceFor(error));
}

#include "transport/usb_connector_linux.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cwchar>
#include <system_error>

#include "platform/diagnostics.h"
#include "transport/usb_nodes.h"

using namespace Nuv::Transport;

namespace {

constexpr short kGone = POLLHUP | POLLERR | POLLNVAL;
// The rest of a late reply follows its first packet at once.
constexpr uint32_t kQuietMs = 20;
// A printer keeps what nobody has read for whoever opens it next.
constexpr uint32_t kNewQuietMs = 100;
constexpr uint32_t kMostDiscardMs = 2000;

// The driver puts at most so much into one transfer.
constexpr uint32_t kTransferBytes = 8192;
// Its question for the bus and the number of the device; in none of the kernel's headers.
constexpr unsigned long kGetBusAddress = _IOC(_IOC_READ, 'P', 5, 2 * sizeof(int));

class SystemCalls final : public DeviceCalls {
 public:
  int Open(const std::string& node) override {
    return OrError(open(node.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
  }
  int AddressOf(int fd, UsbAddress& address) override {
    int numbers[2] = {};
    const int result = OrError(ioctl(fd, kGetBusAddress, numbers));
    address = {numbers[0], numbers[1]};
    return result;
  }
  int64_t Read(int fd, uint8_t* buffer, size_t size) override {
    return OrError(read(fd, buffer, size));
  }
  // The driver looks for signals once more when it has started a transfer, and then says "nothing
  // written" of what it sends.
  int64_t Write(int fd, const uint8_t* data, size_t size) override {
    sigset_t all, before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const int64_t count = OrError(write(fd, data, size));
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return count;
  }
  int Poll(int fd, short events) override {
    pollfd node{fd, events, 0};
    const int ready = OrError(poll(&node, 1, 0));
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

bool IsGone(int error) { return error == ENOENT || error == ENODEV || error == ENXIO; }

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

void Report(const UsbNode& node, const char* action, int error) {
  Nuv::Platform::Diagnostic("USB printer %s: %s failed: %s%s", node.path.c_str(), action,
                            std::generic_category().message(error).c_str(), AdviceFor(error));
}

}  // namespace

DeviceCalls& SystemDeviceCalls() {
  static SystemCalls calls;
  return calls;
}

std::unique_ptr<ConnectorBase> MakeUsbConnector() { return std::make_unique<UsbConnectorLinux>(); }

UsbConnectorLinux::~UsbConnectorLinux() { UsbConnectorLinux::Close(); }

bool UsbConnectorLinux::SearchDevices() {
  auto found = FindPrinterNodes();
  nodes_ = found ? std::move(*found) : std::vector<UsbNode>();
  return found.has_value();
}

std::vector<std::wstring>& UsbConnectorLinux::GetDevicePaths(std::vector<std::wstring>& paths) {
  paths.clear();
  // Names of nodes are ASCII: the driver gives them.
  for (const UsbNode& node : nodes_) {
    paths.push_back(std::wstring(node.path.begin(), node.path.end()) + L"\\1");
  }
  return paths;
}

bool UsbConnectorLinux::Open(const wchar_t* indexText) {
  const long index = std::wcstol(indexText, nullptr, 10);
  if (index < 0 || static_cast<size_t>(index) >= nodes_.size()) return false;
  return OpenAgain(nodes_[static_cast<size_t>(index)], false);
}

bool UsbConnectorLinux::Reopen(bool samePlugging) {
  if (opened_.path.empty()) return false;
  return Look() == LinkState::kAlive || OpenAgain(opened_, samePlugging);
}

bool UsbConnectorLinux::OpenAgain(UsbNode known, bool samePlugging) {
  int error = OpenNode(known);
  if (IsGone(error) && !samePlugging) {
    const auto found = FindPrinterNodes().value_or(std::vector<UsbNode>());
    const auto same = std::find_if(found.begin(), found.end(), [&](const UsbNode& node) {
      return node.port == known.port && node.device == known.device;
    });
    if (same != found.end()) {
      known = *same;
      error = OpenNode(known);
    }
  }
  if (error != 0) Report(known, "opening", error);
  return error == 0;
}

int UsbConnectorLinux::OpenNode(const UsbNode& meant) {
  if (meant.path == opened_.path && Look() == LinkState::kAlive) {
    return meant.address == opened_.address ? 0 : ENODEV;
  }
  const int fd = calls_.Open(meant.path);
  if (fd < 0) return -fd;
  // Since it was looked up, the node may have become another printer's. The driver tells which one
  // the handle is for, and that does not change any more.
  UsbAddress address;
  const int error = -calls_.AddressOf(fd, address);
  if (error != 0 || !(address == meant.address)) {
    calls_.Close(fd);
    return error != 0 ? error : ENODEV;
  }
  Close();
  fd_ = fd;
  opened_ = meant;
  isNew_ = true;
  return 0;
}

void UsbConnectorLinux::Close() {
  if (fd_ < 0) return;
  calls_.Close(fd_);
  fd_ = -1;
}

uint32_t UsbConnectorLinux::Write(const uint8_t* data, uint32_t length, uint32_t timeoutMs) {
  if (fd_ < 0) return kNotOpen;
  const uint32_t firstMs = isNew_ ? kNewQuietMs : 0;
  Discard(firstMs, std::max(firstMs, kQuietMs), waiter_->In(kMostDiscardMs));
  isNew_ = false;
  const uint32_t status = WriteBlocks(data, length, waiter_->In(timeoutMs));
  if (status != kTransferTimeout && status != EINTR) return status;
  // The driver would still send the block once the printer takes data, long after it was given up.
  Nuv::Platform::Diagnostic("USB printer %s takes no data: the rest is dropped",
                            opened_.path.c_str());
  Close();
  return Reopen(true) ? status : kNotOpen;
}

uint32_t UsbConnectorLinux::WriteBlocks(const uint8_t* data, uint32_t length, Deadline deadline) {
  // One transfer at a time, so that a count tells all that the driver has started.
  for (uint32_t written = 0; written < length;) {
    const int64_t count =
        calls_.Write(fd_, data + written, std::min(length - written, kTransferBytes));
    if (count > 0) {
      written += static_cast<uint32_t>(count);
      continue;
    }
    // An interruption (a debugger's is not held off) leaves open whether the part is on its way.
    if (count < 0 && count != -EAGAIN) {
      Report(opened_, "writing", static_cast<int>(-count));
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
  const Deadline deadline = waiter_->In(timeoutMs);
  while (const int ready = Wait(POLLIN, deadline)) {
    const int64_t count = calls_.Read(fd_, buffer, kReadBytes);
    if (count > 0) return 0;
    const bool failed = count < 0 && !MayTryAgain(count);
    // Nothing read is a packet without content, as long as the printer is there.
    if (failed || (ready & kGone) != 0) {
      Report(opened_, "reading", failed ? static_cast<int>(-count) : ENODEV);
      break;
    }
    if (waiter_->GetClock().Now() >= deadline) break;
  }
  return kTransferTimeout;
}

int UsbConnectorLinux::Events(short events) {
  int ready = 0;
  do {
    ready = calls_.Poll(fd_, events);
  } while (ready == -EINTR);
  return ready >= 0 ? ready : POLLERR;
}

int UsbConnectorLinux::Wait(short events, Deadline deadline) {
  using Nuv::Platform::Readiness;
  const Readiness readiness = events == POLLOUT ? Readiness::kOutput : Readiness::kInput;
  int ready = 0;
  while (ready == 0 && waiter_->Until(deadline, fd_, readiness)) ready = Events(events);
  return ready;
}

uint32_t UsbConnectorLinux::WaitForOutput(Deadline deadline) {
  const int ready = Wait(POLLOUT, deadline);
  if (ready == 0) return kTransferTimeout;
  // A transfer that the unplugging ended counts as done too, so this is asked first.
  if ((ready & kGone) == 0) return 0;
  Report(opened_, "writing", ENODEV);
  return ENODEV;
}

LinkState UsbConnectorLinux::Look() {
  if (fd_ < 0) return LinkState::kClosed;
  return (Events(0) & kGone) != 0 ? LinkState::kEnded : LinkState::kAlive;
}

bool UsbConnectorLinux::DiscardUntilQuiet(uint32_t quietMs, uint32_t limitMs) {
  return fd_ >= 0 && Discard(quietMs, quietMs, waiter_->In(limitMs));
}

bool UsbConnectorLinux::Discard(uint32_t firstMs, uint32_t quietMs, Deadline deadline) {
  uint8_t stale[kReadBytes];
  bool any = false;
  do {
    const int ready = Wait(POLLIN, std::min(deadline, waiter_->In(any ? quietMs : firstMs)));
    // A printer that has gone shows when it is written to.
    if (ready == 0 || (ready & kGone) != 0) break;
    const int64_t count = calls_.Read(fd_, stale, sizeof stale);
    if (count < 0 && !MayTryAgain(count)) break;
    any = any || count > 0;
  } while (waiter_->GetClock().Now() < deadline);
  return any;
}

std::string UsbConnectorLinux::Identity(size_t index) const {
  if (index >= nodes_.size()) return {};
  const UsbNode& node = nodes_[index];
  return node.path + " " + node.port + " " + node.device + " " + std::to_string(node.address.bus) +
         "/" + std::to_string(node.address.device);
}

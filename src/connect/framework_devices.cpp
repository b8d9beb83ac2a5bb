// Finding, listing and choosing printers.

#include "command/processors.h"
#include "command/reply_views.h"
#include "connect/connecting_framework.h"
#include "nuvconnect/ResultCodes.h"
#include "platform/diagnostics.h"
#include "transport/addresses.h"

namespace Nuv::Connect {
namespace {

// A device that makes up answers, each leading to a printer that says nothing, holds no listing for
// ever.
constexpr size_t kMostListed = 256;
constexpr std::chrono::minutes kMostListingTime(10);

// Closes what is open when it goes, also when a reply throws: a USB printer is open to one program
// at a time.
class CloseGuard {
 public:
  explicit CloseGuard(IConnect& channel) : channel_(channel) {}
  ~CloseGuard() { channel_.CloseDevice(); }
  CloseGuard(const CloseGuard&) = delete;
  CloseGuard& operator=(const CloseGuard&) = delete;

 private:
  IConnect& channel_;
};

}  // namespace

int ConnectingFramework::SetUpdPort(int port) {
  connect_.SetSearchPort(port);
  return NUV_OK;
}

int ConnectingFramework::SetBroadCastPort(int port) { return SetUpdPort(port); }

int ConnectingFramework::SearchNetworkDevice(std::vector<std::string>& found, std::string address,
                                             std::string netmask, int timeoutMs) {
  const bool searched =
      connect_.SearchDevices(found, std::move(address), std::move(netmask), timeoutMs);
  return searched && !found.empty() ? NUV_OK : NUV_NOT_FOUND;
}

int ConnectingFramework::ConnectNetWorkDevice(std::string address) {
  return ResultOf(connect_.ConnectAddress(address), Step::kOpening);
}

int ConnectingFramework::ChooseDevice(int kind, int index) {
  return ResultOf(connect_.Choose(kind, index), Step::kOpening);
}

int ConnectingFramework::GetBroadCastResult(std::vector<std::string>& replies, std::string filter) {
  replies.clear();
  for (std::string& reply : connect_.CollectBroadcastReplies()) {
    if (reply.find(filter) != std::string::npos) replies.push_back(std::move(reply));
  }
  return replies.empty() ? NUV_NOT_FOUND : NUV_OK;
}

DeviceTable* ConnectingFramework::TableOf(int kind) {
  if (kind == NUV_KIND_USB) return &usbDevices_;
  return kind == NUV_KIND_NETWORK ? &networkDevices_ : nullptr;
}

int ConnectingFramework::GetDeviceList(int kind, std::vector<std::string>& serials, int timeoutMs) {
  if (kind < 0) return NUV_FAILED;
  connect_.SetSearchTimeout(timeoutMs);
  std::vector<std::string> ids;
  if (!connect_.EnumerateDevices(kind, ids) || ids.empty()) return NUV_NOT_FOUND;

  DeviceTable table;
  const auto giveUp = clock_.Now() + kMostListingTime;
  for (size_t i = 0; i < ids.size(); ++i) {
    if (table.size() == kMostListed || clock_.Now() >= giveUp) {
      Platform::Diagnostic("listing: given up after %zu of %zu printers", i, ids.size());
      break;
    }
    DeviceEntry entry;
    entry[NUV_DEVICE_IDENTIFIER] = ids[i];
    entry.identity = connect_.Identity(kind, static_cast<int>(i));
    // What cannot be a printer keeps its row, since rows are counted as the channel counts.
    if (kind == NUV_KIND_USB || !Transport::LiteralAddress(ids[i]).empty()) {
      int result = ResultOf(connect_.Choose(kind, static_cast<int>(i)), Step::kOpening);
      if (result != NUV_OK) return result;
      const CloseGuard guard(connect_);
      result = IdentifyDevice(entry);
      if (result != NUV_OK) return result;
    }
    serials.push_back(entry[NUV_DEVICE_SERIAL]);
    table.push_back(std::move(entry));
  }
  if (DeviceTable* const kept = TableOf(kind)) *kept = std::move(table);
  return NUV_OK;
}

int ConnectingFramework::IdentifyDevice(DeviceEntry& entry) {
  std::string unused;
  std::string& model = entry[NUV_DEVICE_MODEL];
  // A printer that does not say who it is stays in the list, without serial number and model.
  GetPrinterInfo(unused, unused, model, entry[NUV_DEVICE_SERIAL], unused);
  if (HasOwnSerialQuery(model)) {
    const int result = QueryBegoSerial(entry[NUV_DEVICE_SERIAL]);
    if (result != NUV_OK) return result;
  }
  if (ListsNickname(model)) GetNickName(entry[NUV_DEVICE_SUPPLEMENTARY]);
  return NUV_OK;
}

int ConnectingFramework::QueryBegoSerial(std::string& serial) {
  F140Proc proc(NewJobContext().Commands());
  std::vector<std::string> lines;
  const int result = proc.Process(lines);
  if (result != NUV_OK) return result;
  if (lines.empty()) throw Command::NoSerialNumber(Command::F140Cmd::kCode);
  serial = lines.front();
  return NUV_OK;
}

int ConnectingFramework::SearchUSBDevice(int* count) {
  std::vector<std::string> serials;
  *count = 0;  // it may throw
  const int result = GetDeviceList(NUV_KIND_USB, serials, 0);
  *count = static_cast<int>(serials.size());
  return result;
}

int ConnectingFramework::GetDeviceInfo(std::string& value, int kind, int index, int field) {
  const DeviceTable* const table = TableOf(kind);
  if (table == nullptr || index < 0 || static_cast<size_t>(index) >= table->size()) {
    return NUV_NOT_FOUND;
  }
  if (field < NUV_DEVICE_IDENTIFIER || field > NUV_DEVICE_SUPPLEMENTARY) return NUV_NOT_FOUND;
  value = (*table)[static_cast<size_t>(index)][static_cast<size_t>(field)];
  return NUV_OK;
}

int ConnectingFramework::ConnectDeviceBySN(int kind, const std::string& serial) {
  const DeviceTable* const table = TableOf(kind);
  if (table == nullptr) return NUV_NOT_FOUND;
  size_t count = table->size();
  if (count == 0) {
    std::vector<std::string> serials;
    // A listing fills the table and connects nothing: the same call, made again, connects.
    if (GetDeviceList(kind, serials, 0) == NUV_OK) return NUV_NOT_FOUND;
    count = serials.size();
  }
  for (size_t i = 0; i < count; ++i) {
    const int index = static_cast<int>(i);
    // A listing that failed keeps no entries: its printers have no serial number here.
    if (i >= table->size()) {
      if (serial.empty()) return ChooseDevice(kind, index);
    } else if ((*table)[i][NUV_DEVICE_SERIAL] == serial) {
      return ResultOf(connect_.ChooseListed(kind, index, (*table)[i].identity), Step::kOpening);
    }
  }
  return NUV_NOT_FOUND;
}

}  // namespace Nuv::Connect

// Finding and choosing printers, and the raw channel.

#include "api/marshalling.h"
#include "nuvconnect/NuvConnect5.h"

using Nuv::Api::CopyTextCut;
using Nuv::Api::StringList;
using Nuv::Api::Strings;
using Nuv::Api::TextOrEmpty;
using Nuv::Api::WithFramework;

int API_SetUpdPort(int port) {
  return WithFramework([&](auto& framework) { return framework.SetUpdPort(port); });
}

int API_SetBroadCastPort(int port) {
  return WithFramework([&](auto& framework) { return framework.SetBroadCastPort(port); });
}

int API_SearchNetworkDevice(char** list, int* count, int entrySize, const char* address,
                            const char* netmask, int timeoutMs) {
  return StringList(list, count, entrySize, [&](auto& framework, auto& found) {
    return framework.SearchNetworkDevice(found, TextOrEmpty(address), TextOrEmpty(netmask),
                                         timeoutMs);
  });
}

int API_GetDeviceList(int kind, char** list, int* count, int entrySize, int timeoutMs) {
  return StringList(list, count, entrySize, [&](auto& framework, auto& serials) {
    return framework.GetDeviceList(kind, serials, timeoutMs);
  });
}

int API_SearchUSBDevice(int* count) {
  return WithFramework([&](auto& framework) { return framework.SearchUSBDevice(count); });
}

int API_GetDeviceInfo(char* out, int kind, int index, int field) {
  return Strings(std::array{out}, [&](auto& framework, auto& value) {
    return framework.GetDeviceInfo(value, kind, index, field);
  });
}

int API_ChooseDevice(int kind, int index) {
  return WithFramework([&](auto& framework) { return framework.ChooseDevice(kind, index); });
}

int API_ConnectDeviceBySN(int kind, const char* serial) {
  return WithFramework(
      [&](auto& framework) { return framework.ConnectDeviceBySN(kind, std::string(serial)); });
}

int API_ConnectNetWorkDevice(const char* address) {
  return WithFramework(
      [&](auto& framework) { return framework.ConnectNetWorkDevice(TextOrEmpty(address)); });
}

int API_GetBroadCastResult(char** list, int* count, int entrySize, const char* filter) {
  return StringList(list, count, entrySize, [&](auto& framework, auto& replies) {
    return framework.GetBroadCastResult(replies, TextOrEmpty(filter));
  });
}

namespace {

// A reply of the channel, cut to `maxLen`.
template <class Operation>
int Reply(char* reply, int maxLen, Operation&& operation) {
  std::string text;
  return WithFramework(
      [&](auto& framework) {
        text = operation(*framework.GetConnect());
        return NUV_OK;
      },
      [&](int /*result*/) { CopyTextCut(text, reply, maxLen); });
}

}  // namespace

bool API_NUVCONNECT_OpenDevice(void) {
  return WithFramework([](auto& framework) {
           return framework.GetConnect()->OpenDevice() ? NUV_OK : NUV_FAILED;
         }) == NUV_OK;
}

bool API_NUVCONNECT_CloseDevice(void) {
  return WithFramework([](auto& framework) {
           return framework.GetConnect()->CloseDevice() ? NUV_OK : NUV_FAILED;
         }) == NUV_OK;
}

int API_NUVCONNECT_ExecutiveCommand(const char* command, char* reply, int maxLen) {
  return Reply(reply, maxLen,
               [&](auto& channel) { return channel.ExecuteCommand(TextOrEmpty(command)); });
}

int API_NUVCONNECT_ReceiveCommand(char* reply, int maxLen) {
  return Reply(reply, maxLen, [](auto& channel) { return channel.ReceiveReply(); });
}

// Finding and choosing printers, and the raw channel.

#include "api/marshalling.h"
#include "nuvconnect/NuvConnect5.h"

using Nuv::Api::CopyText;
using Nuv::Api::CopyTextCut;
using Nuv::Api::StringList;
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
  return WithFramework([&](auto& framework) {
    std::string value;
    const int result = framework.GetDeviceInfo(value, kind, index, field);
    CopyText(value, out);
    return result;
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

bool API_NUVCONNECT_OpenDevice(void) {
  return g_framework != nullptr && g_framework->GetConnect()->OpenDevice();
}

bool API_NUVCONNECT_CloseDevice(void) {
  return g_framework != nullptr && g_framework->GetConnect()->CloseDevice();
}

int API_NUVCONNECT_ExecutiveCommand(const char* command, char* reply, int maxLen) {
  return WithFramework([&](auto& framework) {
    CopyTextCut(framework.GetConnect()->ExecuteCommand(TextOrEmpty(command)), reply, maxLen);
    return NUV_OK;
  });
}

int API_NUVCONNECT_ReceiveCommand(char* reply, int maxLen) {
  return WithFramework([&](auto& framework) {
    CopyTextCut(framework.GetConnect()->ReceiveReply(), reply, maxLen);
    return NUV_OK;
  });
}

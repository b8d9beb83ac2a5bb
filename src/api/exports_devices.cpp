// Finding and choosing printers, and the raw channel.

#include "api/marshalling.h"

using Nuv::Api::Forward;
using Nuv::Api::Framework;
using Nuv::Api::ListOut;
using Nuv::Api::OrEmpty;
using Nuv::Api::TextOut;
using Nuv::Api::Written;

int API_SetUpdPort(int port) { return Forward(&Framework::SetUpdPort, port); }

int API_SetBroadCastPort(int port) { return Forward(&Framework::SetBroadCastPort, port); }

int API_SearchNetworkDevice(char** list, int* count, int entrySize, const char* address,
                            const char* netmask, int timeoutMs) {
  return Forward(&Framework::SearchNetworkDevice, ListOut{list, count, entrySize}, OrEmpty{address},
                 OrEmpty{netmask}, timeoutMs);
}

int API_GetDeviceList(int kind, char** list, int* count, int entrySize, int timeoutMs) {
  return Forward(&Framework::GetDeviceList, kind, ListOut{list, count, entrySize}, timeoutMs);
}

int API_SearchUSBDevice(int* count) { return Forward(&Framework::SearchUSBDevice, count); }

int API_GetDeviceInfo(char* out, int kind, int index, int field) {
  return Forward(&Framework::GetDeviceInfo, TextOut{out}, kind, index, field);
}

int API_ChooseDevice(int kind, int index) { return Forward(&Framework::ChooseDevice, kind, index); }

int API_ConnectDeviceBySN(int kind, const char* serial) {
  return Forward(&Framework::ConnectDeviceBySN, kind, serial);
}

int API_ConnectNetWorkDevice(const char* address) {
  return Forward(&Framework::ConnectNetWorkDevice, OrEmpty{address});
}

int API_GetBroadCastResult(char** list, int* count, int entrySize, const char* filter) {
  return Forward(&Framework::GetBroadCastResult, ListOut{list, count, entrySize}, OrEmpty{filter});
}

bool API_NUVCONNECT_OpenDevice(void) {
  return Forward([](Framework& framework) {
           return framework.GetConnect()->OpenDevice() ? NUV_OK : NUV_FAILED;
         }) == NUV_OK;
}

bool API_NUVCONNECT_CloseDevice(void) {
  return Forward([](Framework& framework) {
           return framework.GetConnect()->CloseDevice() ? NUV_OK : NUV_FAILED;
         }) == NUV_OK;
}

int API_NUVCONNECT_ExecutiveCommand(const char* command, char* reply, int maxLen) {
  return Forward(
      [](Framework& framework, const OrEmpty& line, std::string& text) {
        text = framework.GetConnect()->ExecuteCommand(line);
        return NUV_OK;
      },
      OrEmpty{command}, TextOut{reply, Written::kAlways, maxLen});
}

int API_NUVCONNECT_ReceiveCommand(char* reply, int maxLen) {
  return Forward(
      [](Framework& framework, std::string& text) {
        text = framework.GetConnect()->ReceiveReply();
        return NUV_OK;
      },
      TextOut{reply, Written::kAlways, maxLen});
}

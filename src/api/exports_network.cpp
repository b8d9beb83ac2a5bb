// Wireless and network.

#include "api/marshalling.h"

using Nuv::Api::Forward;
using Nuv::Api::Framework;
using Nuv::Api::ListOut;
using Nuv::Api::OrEmpty;
using Nuv::Api::TextOut;
using Nuv::Api::Written;

int API_GetApList(char** list, int* count, int entrySize) {
  return Forward(&Framework::GetApList, ListOut{list, count, entrySize});
}

int API_IsconnectedAp(int* connected) { return Forward(&Framework::IsconnectedAp, connected); }

int API_ConnectAp(const char* name, const char* key) {
  return Forward(&Framework::ConnectAp, OrEmpty{name}, OrEmpty{key});
}

int API_GetApAttribute(const char* name, int* signal, int* security) {
  return Forward(&Framework::GetApAttribute, OrEmpty{name}, signal, security);
}

int API_DisconnectAp(void) { return Forward(&Framework::DisconnectAp); }

int API_GetMacAddressWifi(char* out) {
  return Forward(&Framework::GetMacAddressWifi, TextOut{out, Written::kOnSuccess});
}

int API_GetMacAddressLan(char* out) {
  return Forward(&Framework::GetMacAddressLan, TextOut{out, Written::kOnSuccess});
}

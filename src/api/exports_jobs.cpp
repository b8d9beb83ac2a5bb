// Jobs, and the callbacks that follow them.

#include "api/marshalling.h"

using Nuv::Api::Forward;
using Nuv::Api::Framework;

int API_SendPrintFile(const wchar_t* path, NuvJobProgressCallback progress) {
  return Forward(&Framework::SendPrintFile, path, progress);
}

int API_SendGCodeFile(const wchar_t* path, NuvJobProgressCallback progress) {
  return Forward(&Framework::SendGCodeFile, path, progress);
}

int API_RegisterPrintingInfoCallback(NuvPrintingInfoCallback callback, unsigned int intervalMs) {
  return Forward(&Framework::RegisterPrintingInfoCallback, callback, intervalMs);
}

int API_RegisterErrorCodeCallback(NuvErrorCodeCallback callback) {
  if (g_framework != nullptr) g_errorCode = callback;
  return Forward(&Framework::RegisterErrorCodeCallback, callback);
}

int API_RegisterSendDataStartCallback(NuvSendDataStartCallback callback) {
  return Forward(&Framework::RegisterSendDataStartCallback, callback);
}

int API_RegisterSendDataUpdateCallback(NuvSendDataUpdateCallback callback) {
  return Forward(&Framework::RegisterSendDataUpdateCallback, callback);
}

int API_RegisterSendDataCancelCallback(NuvSendDataCancelCallback callback) {
  return Forward(&Framework::RegisterSendDataCancelCallback, callback);
}

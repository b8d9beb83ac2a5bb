#include "api/marshalling.h"
#include "connect/connecting_framework.h"
#include "platform/environment.h"

using Nuv::Connect::ConnectingFramework;
using Nuv::Connect::IConnectingFramework;

IConnectingFramework* g_framework = nullptr;

int API_Initial(void) {
  if (g_framework != nullptr) return NUV_OK;
  g_noExceptions = Nuv::Platform::Environment("NUVCONNECT_NO_EXCEPTIONS").has_value();
  return Nuv::Api::Guarded([] {
    g_framework = new ConnectingFramework();
    return NUV_OK;
  });
}

void API_Close(void) {
  if (g_framework == nullptr) return;
  g_framework->Close();
  delete g_framework;
  g_framework = nullptr;
  g_errorCode = nullptr;
}

IConnectingFramework* GetConnectingInstance(void) { return new ConnectingFramework(); }

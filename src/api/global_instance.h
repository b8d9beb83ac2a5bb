#ifndef NUV_API_GLOBAL_INSTANCE_H_
#define NUV_API_GLOBAL_INSTANCE_H_

#include "nuvconnect/IConnectingFramework.h"

// The one framework behind the exports; null until API_Initial. Not synchronised: the host calls
// API_Initial before and API_Close after all other calls.
extern Nuv::Connect::IConnectingFramework* g_framework;

#endif  // NUV_API_GLOBAL_INSTANCE_H_

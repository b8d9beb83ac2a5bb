// Resin.

#include "api/marshalling.h"

using Nuv::Api::Forward;
using Nuv::Api::Framework;
using Nuv::Api::TextOut;

int API_GetResinInfo2(int* state, int* remaining, char* resinCode, int* tankVolume, char* lot) {
  return Forward(&Framework::GetResinInfo2, state, remaining, TextOut{resinCode}, tankVolume,
                 TextOut{lot});
}

int API_GetResinInfo(int* state, int* remaining, char* date, char* type) {
  return Forward(&Framework::GetResinInfo, state, remaining, TextOut{date}, TextOut{type});
}

int API_GetResinInfo_BEGO(char* name, char* lot, char* expiry, char* volume) {
  return Forward(&Framework::GetResinInfo_BEGO, TextOut{name}, TextOut{lot}, TextOut{expiry},
                 TextOut{volume});
}

int API_IsRegisteredCorrectTag(int* registered) {
  return Forward(&Framework::IsRegisteredCorrectTag, registered);
}

int API_IsOpenModeSupported(int* supported) {
  return Forward(&Framework::IsOpenModeSupported, supported);
}

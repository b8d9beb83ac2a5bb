// Settings, wireless network, light engine and sensors.

#include "api/marshalling.h"
#include "nuvconnect/NuvConnect5.h"

using Nuv::Api::OneString;
using Nuv::Api::StringList;
using Nuv::Api::TextOrEmpty;
using Nuv::Api::WithFramework;
using Nuv::Connect::PrinterParameter;

int API_SetBCPScaling(float x1, float x2, float y1, float y2, float z1, float z2) {
  return WithFramework(
      [&](auto& framework) { return framework.SetBCPScaling(x1, x2, y1, y2, z1, z2); });
}

int API_GetBCPScaling(float* x1, float* x2, float* y1, float* y2, float* z1, float* z2) {
  return WithFramework(
      [&](auto& framework) { return framework.GetBCPScaling(x1, x2, y1, y2, z1, z2); });
}

int API_SetNickName(const char* name) {
  return WithFramework([&](auto& framework) { return framework.SetNickName(std::string(name)); });
}

int API_GetNickName(char* out) {
  return OneString(out, [](auto& framework, auto& text) { return framework.GetNickName(text); });
}

int API_SetLaserPower(int percent) {
  return WithFramework([&](auto& framework) {
    return framework.SetParameter(PrinterParameter::kLaserPower, percent);
  });
}

int API_GetLaserPower(int* percent) {
  return WithFramework([&](auto& framework) {
    return framework.GetParameter(PrinterParameter::kLaserPower, percent);
  });
}

int API_SetZCompensation(int micrometres) {
  return WithFramework([&](auto& framework) {
    return framework.SetParameter(PrinterParameter::kZCompensation, micrometres);
  });
}

int API_GetZCompensation(int* micrometres) {
  return WithFramework([&](auto& framework) {
    return framework.GetParameter(PrinterParameter::kZCompensation, micrometres);
  });
}

int API_SkipSLAWarmup(void) {
  return WithFramework([](auto& framework) { return framework.SkipSLAWarmup(); });
}

int API_GetApList(char** list, int* count, int entrySize) {
  return StringList(list, count, entrySize,
                    [](auto& framework, auto& names) { return framework.GetApList(names); });
}

int API_IsconnectedAp(int* connected) {
  return WithFramework([&](auto& framework) { return framework.IsconnectedAp(connected); });
}

int API_ConnectAp(const char* name, const char* key) {
  return WithFramework(
      [&](auto& framework) { return framework.ConnectAp(TextOrEmpty(name), TextOrEmpty(key)); });
}

int API_GetApAttribute(const char* name, int* signal, int* security) {
  return WithFramework([&](auto& framework) {
    return framework.GetApAttribute(TextOrEmpty(name), signal, security);
  });
}

int API_DisconnectAp(void) {
  return WithFramework([](auto& framework) { return framework.DisconnectAp(); });
}

int API_GetMacAddressWifi(char* out) {
  return OneString(out,
                   [](auto& framework, auto& text) { return framework.GetMacAddressWifi(text); });
}

int API_GetMacAddressLan(char* out) {
  return OneString(out,
                   [](auto& framework, auto& text) { return framework.GetMacAddressLan(text); });
}

int API_GetLSUFlashParameterFX150(int* c1, int* c2, int* c3, int* l1, int* l2, int* l3, int* t1,
                                  int* t2, int* t3, int* z1, int* z2) {
  return WithFramework([&](auto& framework) {
    return framework.GetLSUFlashParameterFX150(c1, c2, c3, l1, l2, l3, t1, t2, t3, z1, z2);
  });
}

int API_GetLSUFlashParameter(int* c, int* l, int* p, int* s, int* t, int* w, int* y) {
  return WithFramework(
      [&](auto& framework) { return framework.GetLSUFlashParameter(c, l, p, s, t, w, y); });
}

int API_GetLSULaserPWMvalues(int laser, int* lsu, int* p1, int* p2, int* p3, int* p4, int* p5) {
  return WithFramework([&](auto& framework) {
    return framework.GetLSULaserPWMvalues(laser, lsu, p1, p2, p3, p4, p5);
  });
}

int API_GetPDSensorData(int laser, int* minimum, int* maximum, int* average) {
  return WithFramework(
      [&](auto& framework) { return framework.GetPDSensorData(laser, minimum, maximum, average); });
}

int API_GetLedUseTime(char* out) {
  return OneString(out, [](auto& framework, auto& text) { return framework.GetLedUseTime(text); });
}

int API_GetSensorStatusFX120(int* ct, int* cb, int* zlt, int* zlb, int* vs, int* ls, int* wh,
                             int* yh, int* cli, int* cp, int* ps, int* yf, int* tt) {
  return WithFramework([&](auto& framework) {
    return framework.GetSensorStatusFX120(ct, cb, zlt, zlb, vs, ls, wh, yh, cli, cp, ps, yf, tt);
  });
}

int API_GetRepositionProcessing(int* processing) {
  return WithFramework(
      [&](auto& framework) { return framework.GetRepositionProcessing(processing); });
}

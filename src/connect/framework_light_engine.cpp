// Light engine and sensors.

#include <algorithm>
#include <array>

#include "command/reply_views.h"
#include "connect/connecting_framework.h"
#include "nuvconnect/ResultCodes.h"

namespace Nuv::Connect {

int ConnectingFramework::GetLSUFlashParameterFX150(int* c1, int* c2, int* c3, int* l1, int* l2,
                                                   int* l3, int* t1, int* t2, int* t3, int* z1,
                                                   int* z2) {
  return Commands().Read(327, {},
                         {{"C1", c1},
                          {"C2", c2},
                          {"C3", c3},
                          {"L1", l1},
                          {"L2", l2},
                          {"L3", l3},
                          {"T1", t1},
                          {"T2", t2},
                          {"T3", t3},
                          {"Z1", z1},
                          {"Z2", z2}});
}

int ConnectingFramework::GetLSUFlashParameter(int* c, int* l, int* p, int* s, int* t, int* w,
                                              int* y) {
  return Commands().Read(327, {},
                         {{"C", c}, {"L", l}, {"P", p}, {"S", s}, {"T", t}, {"W", w}, {"Y", y}});
}

int ConnectingFramework::GetLSULaserPWMvalues(int laser, int* lsu, int* p1, int* p2, int* p3,
                                              int* p4, int* p5) {
  return Commands().Read(
      303, {std::to_string(laser)},
      {{"LSU", lsu}, {"P1", p1}, {"P2", p2}, {"P3", p3}, {"P4", p4}, {"P5", p5}});
}

int ConnectingFramework::GetPDSensorData(int laser, int* minimum, int* maximum, int* average) {
  constexpr size_t kReadings = 3;
  *minimum = *maximum = *average = 0;
  const Outcome outcome = Commands().Run(186, {std::to_string(laser)});
  if (outcome.result != NUV_OK) return outcome.result;
  // By position: the reply's fields are pairs of a letter and a value, without keys to look up.
  std::array<int, kReadings> readings{};
  for (size_t i = 0; i < std::min(kReadings, outcome.values.size()); ++i) {
    readings[i] = Command::ParseDecimal(outcome.values[i], outcome.code);
  }
  *minimum = readings[0];
  *maximum = readings[1];
  *average = readings[2];
  return NUV_OK;
}

int ConnectingFramework::GetLedUseTime(std::string& hours) {
  return Commands().Read(708, {}, {{"H", &hours}});
}

int ConnectingFramework::GetSensorStatusFX120(int* ct, int* cb, int* zlt, int* zlb, int* vs,
                                              int* ls, int* wh, int* yh, int* cli, int* cp, int* ps,
                                              int* yf, int* tt) {
  return Commands().Read(301, {},
                         {{"C_T", ct},
                          {"C_B", cb},
                          {"ZLT", zlt},
                          {"ZLB", zlb},
                          {"V_S", vs},
                          {"L_S", ls},
                          {"W_H", wh},
                          {"Y_H", yh},
                          {"C_LI", cli},
                          {"C_P", cp},
                          {"P_S", ps},
                          {"Y_F", yf},
                          {"T_T", tt}});
}

int ConnectingFramework::GetTankType(int* type) {
  return Commands().Read(301, {}, {{"V_S", type}});
}

}  // namespace Nuv::Connect

// Light engine and sensors.

#include "api/marshalling.h"

using Nuv::Api::Forward;
using Nuv::Api::Framework;
using Nuv::Api::TextOut;
using Nuv::Api::Written;

int API_GetLSUFlashParameterFX150(int* c1, int* c2, int* c3, int* l1, int* l2, int* l3, int* t1,
                                  int* t2, int* t3, int* z1, int* z2) {
  return Forward(&Framework::GetLSUFlashParameterFX150, c1, c2, c3, l1, l2, l3, t1, t2, t3, z1, z2);
}

int API_GetLSUFlashParameter(int* c, int* l, int* p, int* s, int* t, int* w, int* y) {
  return Forward(&Framework::GetLSUFlashParameter, c, l, p, s, t, w, y);
}

int API_GetLSULaserPWMvalues(int laser, int* lsu, int* p1, int* p2, int* p3, int* p4, int* p5) {
  return Forward(&Framework::GetLSULaserPWMvalues, laser, lsu, p1, p2, p3, p4, p5);
}

int API_GetPDSensorData(int laser, int* minimum, int* maximum, int* average) {
  return Forward(&Framework::GetPDSensorData, laser, minimum, maximum, average);
}

int API_GetLedUseTime(char* out) {
  return Forward(&Framework::GetLedUseTime, TextOut{out, Written::kOnSuccess});
}

int API_GetSensorStatusFX120(int* ct, int* cb, int* zlt, int* zlb, int* vs, int* ls, int* wh,
                             int* yh, int* cli, int* cp, int* ps, int* yf, int* tt) {
  return Forward(&Framework::GetSensorStatusFX120, ct, cb, zlt, zlb, vs, ls, wh, yh, cli, cp, ps,
                 yf, tt);
}

int API_GetTankType(int* type) { return Forward(&Framework::GetTankType, type); }

// The fake library's queries, settings and orders: values that tell each output from the others,
// with the results that the test sets.
#include <cstring>
#include <initializer_list>

#include "fake_library.h"

namespace {

// An output of a query with its value; after a failure numbers are 0 and strings empty.
struct Output {
  template <typename Number>
  Output(Number* out, Number value) : fill([=](bool good) { *out = good ? value : 0; }) {}
  Output(char* out, const std::string& value)
      : fill([=](bool good) { std::strcpy(out, good ? value.c_str() : ""); }) {}
  std::function<void(bool good)> fill;
};

int Answer(int command, std::initializer_list<Output> outputs) {
  const int result = ResultOf(command);
  for (const Output& output : outputs) output.fill(result == 0);
  return result;
}

// For many numbers; `values` is as long as `outputs`.
int AnswerNumbers(int command, std::initializer_list<int*> outputs, const int* values) {
  const int result = ResultOf(command);
  for (int* const output : outputs) *output = result == 0 ? *values++ : 0;
  return result;
}

template <typename Value>
int Set(int command, Value& kept, const Value& wanted) {
  const int result = ResultOf(command);
  if (result == 0 && !g_fake.forgetful) kept = wanted;
  return result;
}

// Of commands 174 to 177.
int AnswerJob(int command, int index, std::initializer_list<Output> outputs) {
  g_fake.calls.push_back("job " + std::to_string(index));
  if (index < g_fake.oldestJob) g_fake.results[command] = NUV_PRINTER_REFUSED;
  return Answer(command, outputs);
}

}  // namespace

extern "C" {

int API_GetResinInfo2(int* state, int* remaining, char* code, int* volume, char* lot) {
  return Answer(105, {{state, 5}, {remaining, 350}, {code, "1001"}, {volume, 500}, {lot, "L1"}});
}
int API_GetResinInfo(int* state, int* remaining, char* date, char* type) {
  return Answer(120, {{state, 6}, {remaining, 250}, {date, "20270131"}, {type, "1002"}});
}
int API_GetResinInfo_BEGO(char* name, char* lot, char* expiry, char* volume) {
  return Answer(356, {{name, "Resin A"}, {lot, "L2"}, {expiry, "20280131"}, {volume, "150"}});
}
int API_IsOpenModeSupported(int* supported) { return Answer(335, {{supported, 1}}); }
int API_IsRegisteredCorrectTag(int* registered) { return Answer(219, {{registered, 1}}); }

int API_GetSensorStatusFX120(int* ct, int* cb, int* zlt, int* zlb, int* vs, int* ls, int* wh,
                             int* yh, int* cli, int* cp, int* ps, int* yf, int* tt) {
  constexpr int kValues[] = {28, 27, 0, 1, 2, 80, 0, 1, 0, 1, 0, 1, 30};
  return AnswerNumbers(301, {ct, cb, zlt, zlb, vs, ls, wh, yh, cli, cp, ps, yf, tt}, kValues);
}
int API_GetTankType(int* type) { return Answer(301, {{type, 2}}); }
int API_GetRepositionProcessing(int* processing) { return Answer(515, {{processing, 1}}); }
int API_GetPDSensorData(int laser, int* minimum, int* maximum, int* average) {
  return Answer(186, {{minimum, laser}, {maximum, 980}, {average, 512}});
}
int API_GetLSULaserPWMvalues(int laser, int* lsu, int* p1, int* p2, int* p3, int* p4, int* p5) {
  return Answer(303, {{lsu, laser}, {p1, 11}, {p2, 12}, {p3, 13}, {p4, 14}, {p5, 15}});
}
int API_GetLSUFlashParameter(int* c, int* l, int* p, int* s, int* t, int* w, int* y) {
  return Answer(327, {{c, 1}, {l, 2}, {p, 3}, {s, 4}, {t, 5}, {w, 6}, {y, 7}});
}
int API_GetLSUFlashParameterFX150(int* c1, int* c2, int* c3, int* l1, int* l2, int* l3, int* t1,
                                  int* t2, int* t3, int* z1, int* z2) {
  constexpr int kValues[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
  return AnswerNumbers(327, {c1, c2, c3, l1, l2, l3, t1, t2, t3, z1, z2}, kValues);
}
int API_GetLedUseTime(char* out) { return Answer(708, {{out, "1234"}}); }

int API_GetAndroidVersion(char* out) { return Answer(310, {{out, "2.1.0"}}); }
int API_GetLCMPanelVersion(char* out) { return Answer(504, {{out, "3.0.2"}}); }

int API_GetJobCounter(int kind, int* started, int* finished, int* cancelled, int* failed) {
  return Answer(169, {{started, 12 + kind}, {finished, 9}, {cancelled, 1}, {failed, 2}});
}
int API_GetLastUpdatedIndex(int* index) { return Answer(170, {{index, g_fake.lastUpdated}}); }
int API_SetLastUpdatedIndex(int index) { return Set(171, g_fake.lastUpdated, index); }
int API_GetJobInfo1(int job, char* name, char* code, char* start) {
  const std::string text = "Job" + std::to_string(job);
  return AnswerJob(174, job, {{name, text}, {code, "1001"}, {start, "20261121T103000"}});
}
int API_GetJobInfo2(int job, int* layers, int* minutes, int* resin, int* end) {
  return AnswerJob(175, job, {{layers, 300}, {minutes, 45}, {resin, 12}, {end, g_fake.jobResult}});
}
int API_GetJobInfo3(int job, int* layer, int* exposure, int* bottom, int* power) {
  return AnswerJob(176, job, {{layer, 50}, {exposure, 1500}, {bottom, 9000}, {power, 81}});
}
int API_GetJobInfo4(int job, char* end, char* lot) {
  return AnswerJob(177, job, {{end, g_fake.jobResult == 3 ? "-" : "20261121T111500"}, {lot, "L1"}});
}

int API_SetNickName(const char* name) { return Set(196, g_fake.nickname, std::string(name)); }
int API_GetNickName(char* out) { return Answer(197, {{out, g_fake.nickname}}); }
int API_SetLaserPower(int percent) { return Set(332, g_fake.laserPower, percent); }
int API_GetLaserPower(int* percent) { return Answer(159, {{percent, g_fake.laserPower}}); }
int API_SetZCompensation(int micrometres) { return Set(332, g_fake.zCompensation, micrometres); }
int API_GetZCompensation(int* micrometres) {
  return Answer(159, {{micrometres, g_fake.zCompensation}});
}
int API_SetBCPScaling(float x1, float x2, float y1, float y2, float z1, float z2) {
  return Set(370, g_fake.scaling, {x1, x2, y1, y2, z1, z2});
}
int API_GetBCPScaling(float* x1, float* x2, float* y1, float* y2, float* z1, float* z2) {
  const auto& f = g_fake.scaling;
  return Answer(369, {{x1, f[0]}, {x2, f[1]}, {y1, f[2]}, {y2, f[3]}, {z1, f[4]}, {z2, f[5]}});
}
int API_SkipSLAWarmup() { return ResultOf(112); }

int API_GetApList(char** list, int* count, int entrySize) {
  FillList(g_fake.accessPoints, list, count, entrySize);
  return ResultOf(198);
}
int API_GetApAttribute(const char* name, int* signal, int* security) {
  if (name == g_fake.outOfReach) return NUV_PRINTER_REFUSED;
  return Answer(190, {{signal, 80}, {security, 1}});
}
int API_IsconnectedAp(int* connected) { return Answer(190, {{connected, g_fake.joined.Take()}}); }
int API_ConnectAp(const char* name, const char* key) {
  return Order(191, std::string("join ") + name + " with " + key);
}
int API_DisconnectAp() { return Order(191, "leave"); }
int API_GetMacAddressWifi(char* out) { return Answer(192, {{out, "02:00:00:00:00:01"}}); }
int API_GetMacAddressLan(char* out) { return Answer(192, {{out, "02:00:00:00:00:02"}}); }

}  // extern "C"

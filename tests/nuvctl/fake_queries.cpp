// The fake library's queries, settings and orders: values that tell each output from the others,
// with the results that the test sets.
#include <algorithm>
#include <cstring>
#include <utility>

#include "fake_library.h"

namespace {

// Fills the outputs of `command` as the library does: after a failure numbers are 0, strings empty.
template <typename... Outputs>
int Answer(int command, Outputs... outputs) {
  const int result = ResultOf(command);
  const auto fill = [result](const auto& output) { output.Fill(result == 0); };
  (fill(outputs), ...);
  return result;
}

struct Number {
  int* out;
  int value;
  void Fill(bool good) const { *out = good ? value : 0; }
};
struct Text {
  char* out;
  std::string value;
  void Fill(bool good) const { std::strcpy(out, good ? value.c_str() : ""); }
};

template <typename Value>
int Set(int command, Value& kept, const Value& wanted) {
  const int result = ResultOf(command);
  if (result == 0 && !fake.forgetful) kept = wanted;
  return result;
}

// Of commands 174 to 177.
template <typename... Outputs>
int AnswerJob(int command, int index, Outputs... outputs) {
  fake.calls.push_back("job " + std::to_string(index));
  if (index < fake.oldest_job) fake.results[command] = NUV_PRINTER_REFUSED;
  return Answer(command, outputs...);
}

}  // namespace

extern "C" {

int API_GetResinInfo2(int* state, int* remaining, char* code, int* volume, char* lot) {
  return Answer(105, Number{state, 5}, Number{remaining, 350}, Text{code, "1001"},
                Number{volume, 500}, Text{lot, "L1"});
}
int API_GetResinInfo(int* state, int* remaining, char* date, char* type) {
  return Answer(120, Number{state, 6}, Number{remaining, 250}, Text{date, "20270131"},
                Text{type, "1002"});
}
int API_GetResinInfo_BEGO(char* name, char* lot, char* expiry, char* volume) {
  return Answer(356, Text{name, "Resin A"}, Text{lot, "L2"}, Text{expiry, "20280131"},
                Text{volume, "150"});
}
int API_IsOpenModeSupported(int* supported) { return Answer(335, Number{supported, 1}); }
int API_IsRegisteredCorrectTag(int* registered) {
  return Answer(219, Number{registered, fake.registered});
}

int API_GetSensorStatusFX120(int* ct, int* cb, int* zlt, int* zlb, int* vs, int* ls, int* wh,
                             int* yh, int* cli, int* cp, int* ps, int* yf, int* tt) {
  return Answer(301, Number{ct, 28}, Number{cb, 27}, Number{zlt, 0}, Number{zlb, 1}, Number{vs, 2},
                Number{ls, 80}, Number{wh, 0}, Number{yh, 1}, Number{cli, 0}, Number{cp, 1},
                Number{ps, 0}, Number{yf, 1}, Number{tt, 30});
}
int API_GetTankType(int* type) { return Answer(301, Number{type, 2}); }
int API_GetRepositionProcessing(int* processing) { return Answer(515, Number{processing, 1}); }
int API_GetPDSensorData(int laser, int* minimum, int* maximum, int* average) {
  return Answer(186, Number{minimum, laser}, Number{maximum, 980}, Number{average, 512});
}
int API_GetLSULaserPWMvalues(int laser, int* lsu, int* p1, int* p2, int* p3, int* p4, int* p5) {
  return Answer(303, Number{lsu, laser}, Number{p1, 11}, Number{p2, 12}, Number{p3, 13},
                Number{p4, 14}, Number{p5, 15});
}
int API_GetLSUFlashParameter(int* c, int* l, int* p, int* s, int* t, int* w, int* y) {
  return Answer(327, Number{c, 1}, Number{l, 2}, Number{p, 3}, Number{s, 4}, Number{t, 5},
                Number{w, 6}, Number{y, 7});
}
int API_GetLSUFlashParameterFX150(int* c1, int* c2, int* c3, int* l1, int* l2, int* l3, int* t1,
                                  int* t2, int* t3, int* z1, int* z2) {
  return Answer(327, Number{c1, 1}, Number{c2, 2}, Number{c3, 3}, Number{l1, 4}, Number{l2, 5},
                Number{l3, 6}, Number{t1, 7}, Number{t2, 8}, Number{t3, 9}, Number{z1, 10},
                Number{z2, 11});
}
int API_GetLedUseTime(char* out) { return Answer(708, Text{out, "1234"}); }

int API_GetAndroidVersion(char* out) { return Answer(310, Text{out, "2.1.0"}); }
int API_GetLCMPanelVersion(char* out) { return Answer(504, Text{out, "3.0.2"}); }

int API_GetJobCounter(int kind, int* started, int* finished, int* cancelled, int* failed) {
  return Answer(169, Number{started, 12 + kind}, Number{finished, 9}, Number{cancelled, 1},
                Number{failed, 2});
}
int API_GetLastUpdatedIndex(int* index) { return Answer(170, Number{index, fake.last_updated}); }
int API_SetLastUpdatedIndex(int index) { return Set(171, fake.last_updated, index); }
int API_GetJobInfo1(int jobIndex, char* jobName, char* resinCode, char* startTime) {
  return AnswerJob(174, jobIndex, Text{jobName, "Job" + std::to_string(jobIndex)},
                   Text{resinCode, "1001"}, Text{startTime, "20261121T103000"});
}
int API_GetJobInfo2(int jobIndex, int* layers, int* minutes, int* resinVolume, int* result) {
  return AnswerJob(175, jobIndex, Number{layers, 300}, Number{minutes, 45}, Number{resinVolume, 12},
                   Number{result, fake.job_result});
}
int API_GetJobInfo3(int jobIndex, int* layerThickness, int* exposureTime, int* bottomExposureTime,
                    int* laserPower) {
  return AnswerJob(176, jobIndex, Number{layerThickness, 50}, Number{exposureTime, 1500},
                   Number{bottomExposureTime, 9000}, Number{laserPower, 81});
}
int API_GetJobInfo4(int jobIndex, char* endTime, char* lot) {
  return AnswerJob(177, jobIndex, Text{endTime, fake.job_result == 3 ? "-" : "20261121T111500"},
                   Text{lot, "L1"});
}

int API_SetNickName(const char* name) { return Set(196, fake.nickname, std::string(name)); }
int API_GetNickName(char* out) { return Answer(197, Text{out, fake.nickname}); }
int API_SetLaserPower(int percent) { return Set(332, fake.laser_power, percent); }
int API_GetLaserPower(int* percent) { return Answer(159, Number{percent, fake.laser_power}); }
int API_SetZCompensation(int micrometres) { return Set(332, fake.z_compensation, micrometres); }
int API_GetZCompensation(int* micrometres) {
  return Answer(159, Number{micrometres, fake.z_compensation});
}
int API_SetBCPScaling(float x1, float x2, float y1, float y2, float z1, float z2) {
  return Set(370, fake.scaling, {x1, x2, y1, y2, z1, z2});
}
int API_GetBCPScaling(float* x1, float* x2, float* y1, float* y2, float* z1, float* z2) {
  const int result = ResultOf(369);
  float* const outputs[] = {x1, x2, y1, y2, z1, z2};
  for (size_t i = 0; i < fake.scaling.size(); ++i) *outputs[i] = result == 0 ? fake.scaling[i] : 0;
  return result;
}
int API_SkipSLAWarmup() { return ResultOf(112); }

int API_GetApList(char** list, int* count, int entrySize) {
  const int found = static_cast<int>(fake.access_points.size());
  for (int i = 0; i < std::min(*count, found); ++i) {
    std::memset(list[i], 0, static_cast<size_t>(entrySize) + 1);
    std::strcpy(list[i], fake.access_points[static_cast<size_t>(i)].c_str());
  }
  *count = found;
  return ResultOf(198);
}
int API_GetApAttribute(const char* name, int* signal, int* security) {
  const int earlier = std::exchange(
      fake.results[190], name == fake.out_of_reach ? NUV_PRINTER_REFUSED : fake.results[190]);
  const int result = Answer(190, Number{signal, 80}, Number{security, 1});
  fake.results[190] = earlier;
  return result;
}
int API_IsconnectedAp(int* connected) { return Answer(190, Number{connected, fake.joined.Take()}); }
int API_ConnectAp(const char* name, const char* key) {
  fake.calls.push_back(std::string("join ") + name + " with " + key);
  return ResultOf(191);
}
int API_DisconnectAp() {
  fake.calls.emplace_back("leave");
  return ResultOf(191);
}
int API_GetMacAddressWifi(char* out) { return Answer(192, Text{out, "02:00:00:00:00:01"}); }
int API_GetMacAddressLan(char* out) { return Answer(192, Text{out, "02:00:00:00:00:02"}); }

}  // extern "C"

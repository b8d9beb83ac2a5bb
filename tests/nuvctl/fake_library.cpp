#include "fake_library.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "api/marshalling.h"

FakeLibrary g_fake;

namespace {

// What the printer's command hands out, % for the first input. `noted`: the call is recorded so.
struct Row {
  int command;
  Strings outputs = {};
  const char* noted = nullptr;
};

const std::map<std::string, Row> kRows = {
    {"SetBroadCastPort", {0, {}, "port"}},
    {"GetTotalLayerAndTime", {107, {"340", "90"}}},
    {"SkipSLAWarmup", {112}},
    {"GetResinInfo2", {105, {"5", "350", "1001", "500", "L1"}}},
    {"GetResinInfo", {120, {"6", "250", "20270131", "1002"}}},
    {"GetResinInfo_BEGO", {356, {"Resin A", "L2", "20280131", "150"}}},
    {"IsOpenModeSupported", {335, {"1"}}},
    {"IsRegisteredCorrectTag", {219, {"1"}}},
    {"GetSensorStatusFX120",
     {301, {"28", "27", "0", "1", "2", "80", "0", "1", "0", "1", "0", "1", "30"}}},
    {"GetTankType", {301, {"2"}}},
    {"GetRepositionProcessing", {515, {"1"}}},
    {"GetPDSensorData", {186, {"%", "980", "512"}}},
    {"GetLSULaserPWMvalues", {303, {"%", "11", "12", "13", "14", "15"}}},
    {"GetLSUFlashParameter", {327, {"1", "2", "3", "4", "5", "6", "7"}}},
    {"GetLSUFlashParameterFX150", {327, {"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11"}}},
    {"GetLedUseTime", {708, {"1234"}}},
    {"GetAndroidVersion", {310, {"2.1.0"}}},
    {"GetLCMPanelVersion", {504, {"3.0.2"}}},
    {"GetJobCounter", {169, {"12%", "9", "1", "2"}}},
    {"GetJobInfo1", {174, {"Job%", "1001", "20261121T103000"}}},
    {"GetJobInfo2", {175, {"300", "45", "12"}}},
    {"GetJobInfo3", {176, {"50", "1500", "9000", "81"}}},
    {"GetJobInfo4", {177, {"20261121T111500", "L1"}}},
    {"GetApList", {198}},
    {"GetApAttribute", {190, {"80", "1"}}},
    {"IsconnectedAp", {190}},
    {"ConnectAp", {191, {}, "join"}},
    {"DisconnectAp", {191, {}, "leave"}},
    {"GetMacAddressWifi", {192, {"02:00:00:00:00:01"}}},
    {"GetMacAddressLan", {192, {"02:00:00:00:00:02"}}},
    {"SetNickName", {196}},
    {"GetNickName", {197}},
    {"SetParameter", {332}},
    {"GetParameter", {159}},
    {"SetBCPScaling", {370}},
    {"GetBCPScaling", {369}},
    {"SetLastUpdatedIndex", {171}},
    {"GetLastUpdatedIndex", {170}},
    {"SetFWUpdateFileInfo_Engine", {141, {}, "engine"}},
    {"SetFWUpdateFileInfo_Android", {506, {}, "android"}},
    {"StartFWUpdateFileInfo_LCM", {188, {}, "panel"}},
    {"FinishFWUpdateFileInfo_LCM", {189, {"Done"}, "finish"}},
    {"StartFWUpgradeProcess", {507, {}, "start"}},
};

// A failure is also told to the callback.
Reaction Tell(int result, int command, const Strings& outputs) {
  if (result == NUV_OK) return {result, outputs};
  if (g_fake.record.onError != nullptr) g_fake.record.onError(result, command);
  return {result, {}};
}

Reaction Answer(int command, const Strings& outputs) {
  const auto row = g_fake.results.find(command);
  return Tell(row == g_fake.results.end() ? NUV_OK : row->second, command, outputs);
}

Reaction Note(const std::string& call, int result) {
  g_fake.calls.push_back(call);
  return {result, {}};
}

std::string OnUsb(const std::string& kind) { return std::stoi(kind) == NUV_KIND_USB ? "usb " : ""; }

std::string Lines(const Strings& texts) {
  std::string lines;
  for (const std::string& text : texts) lines += text + "\n";
  return lines;
}

// Returns whether it was not cancelled.
bool Transfer(const char* what, int total, const std::vector<int>& steps) {
  g_fake.calls.emplace_back(what);
  g_fake.record.onStart();
  for (size_t i = 0; i < steps.size(); ++i) {
    g_fake.beforeStep(i);
    if (g_fake.record.onCancel()) return false;
    g_fake.record.onUpdate(total, steps[i]);
  }
  return true;
}

Reaction TransferFile(const Strings&) {
  if (Transfer("send", 1000, g_fake.sent)) g_fake.atEnd();
  return Tell(g_fake.sendResult, 103, {});
}

Reaction TransferImage(const Strings& in) {
  g_fake.image = in[0];
  const int length = static_cast<int>(in[0].size());
  return {Transfer("image", length, {length / 2, length}) ? NUV_OK : NUV_CANCELLED, {}};
}

Reaction List(const Strings& in) {
  g_fake.calls.push_back(OnUsb(in[0]) + "list " + in[1]);
  if (g_fake.missedSearches-- > 0) return {NUV_NOT_FOUND, {}};
  Strings serials;
  for (const auto& device : g_fake.devices) serials.push_back(device[NUV_DEVICE_SERIAL]);
  return {g_fake.listResult, {Lines(serials)}};
}

Reaction DeviceInfo(const Strings& in) {
  const size_t index = std::stoul(in[1]);
  const bool listed = g_fake.listResult == 0 && std::stoi(in[0]) == g_fake.kind;
  if (!listed || index >= g_fake.devices.size()) return {NUV_NOT_FOUND, {}};
  return {NUV_OK, {g_fake.devices[index][std::stoul(in[2])]}};
}

Reaction Info(int command, const char* serial) {
  return Answer(command, {"1.2", "\x1b[31mred", g_fake.devices[0][NUV_DEVICE_MODEL], serial, "C7",
                          "2024-05-06"});
}

Reaction State(const Strings&) {
  if (g_fake.malformed) throw std::invalid_argument("stoi");
  const StateAnswer answer = g_fake.states.Take();
  return Tell(answer.result, 102,
              {std::to_string(answer.state), std::to_string(answer.errorNumber)});
}

Reaction Progress(const Strings&) {
  const ProgressAnswer answer = g_fake.progress.Take();
  return Tell(g_fake.progressResult, 102,
              {std::to_string(answer.layer), std::to_string(answer.percent),
               std::to_string(answer.minutesLeft)});
}

Reaction Mark(const Strings&) {
  const MarkAnswer answer = g_fake.marks.Take();
  return Tell(answer.result, 157, {std::to_string(answer.index), std::to_string(answer.bytes)});
}

Reaction Reopen(const Strings&) {
  if (++g_fake.reopened == g_fake.answersWhenReopened) g_fake.results.erase(101);
  return {NUV_OK, {}};
}

const std::map<std::string, Reaction (*)(const Strings&)> kSpecial = {
    {"GetDeviceList", List},
    {"GetDeviceInfo", DeviceInfo},
    {"ChooseDevice",
     [](auto& in) { return Note("open " + OnUsb(in[0]) + in[1], g_fake.openResult); }},
    {"ConnectNetWorkDevice", [](auto& in) { return Note("open " + in[0], g_fake.openResult); }},
    {"GetPrinterInfo", [](auto&) { return Info(101, "SN1"); }},
    {"GetPrinterInfo_BEGO", [](auto&) { return Info(354, "BEGO-9"); }},
    {"GetPrinterStatusWithErrorCode", State},
    {"GetPrintingStatus", Progress},
    {"GetCurrJobIndexAndTotalSize", Mark},
    {"SendPrintFile", TransferFile},
    {"SendGCodeFile", TransferFile},
    {"SendFWData", TransferImage},
    {"SendFWDataAndroid", TransferImage},
    {"SendFWPanelData", TransferImage},
    {"OpenDevice", Reopen},
    {"ExecuteCommand",
     [](auto& in) {
       return Reaction{Note("raw " + in[0], NUV_OK).result, {g_fake.reply}};
     }},
};

// What a setting holds is what the host has set last.
void KeepOrFetch(const std::string& operation, const Strings& in, Strings& outputs) {
  const bool isParameter = operation.substr(3) == "Parameter";
  const auto kept = g_fake.settings.find(operation.substr(3) + (isParameter ? in[0] : ""));
  if (kept == g_fake.settings.end()) return;
  if (operation[0] == 'G') {
    outputs = kept->second;
  } else if (!g_fake.forgetful && g_fake.results.count(kRows.at(operation).command) == 0) {
    kept->second.assign(in.begin() + (isParameter ? 1 : 0), in.end());
  }
}

Reaction React(const std::string& operation, const Strings& in) {
  const auto special = kSpecial.find(operation);
  if (special != kSpecial.end()) return special->second(in);
  const auto found = kRows.find(operation);
  if (found == kRows.end()) {
    const bool hasNoAnswer =
        operation.rfind("Register", 0) == 0 || operation.rfind("Close", 0) == 0;
    EXPECT_TRUE(hasNoAnswer) << "the fake printer has no row of " << operation;
    return {NUV_OK, {}};
  }
  const Row& row = found->second;
  if (row.noted != nullptr) {
    g_fake.calls.emplace_back(row.noted);
    for (const std::string& input : in) g_fake.calls.back() += " " + input;
  }
  Strings outputs = row.outputs;
  for (std::string& output : outputs) {
    if (!output.empty() && output.back() == '%') output.replace(output.size() - 1, 1, in[0]);
  }
  KeepOrFetch(operation, in, outputs);
  if (operation == "GetApList") outputs = {Lines(g_fake.accessPoints)};
  if (operation == "IsconnectedAp") outputs = {std::to_string(g_fake.joined.Take())};
  if (operation == "GetJobInfo2") outputs.push_back(std::to_string(g_fake.jobResult));
  if (operation == "GetJobInfo4" && g_fake.jobResult == 3) outputs[0] = "-";
  const bool isUnknownJob =
      operation.rfind("GetJobInfo", 0) == 0 && std::stoi(in[0]) < g_fake.oldestJob;
  const bool isOutOfReach = operation == "GetApAttribute" && in[0] == g_fake.outOfReach;
  if (isUnknownJob || isOutOfReach) return Tell(NUV_PRINTER_REFUSED, row.command, {});
  return Answer(row.command, outputs);
}

}  // namespace

void UseFakeLibrary() {
  API_Close();
  g_fake.record.reacts = React;
  g_framework = new Nuv::Connect::FakeFramework(g_fake.record);
}

CommandRun::CommandRun(const std::vector<std::string>& arguments, FakeSystem& system) {
  std::ostringstream outStream, errStream;
  UseFakeLibrary();
  exit = NuvCtl::RunCommandLine(arguments, outStream, errStream, system);
  closed = g_framework == nullptr;
  out = outStream.str();
  err = errStream.str();
}

// Every export calls its one operation with its inputs in order, hands the outputs back in order,
// and ends as the header says when the operation fails or throws.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <new>
#include <set>
#include <tuple>

#include "api/marshalling.h"
#include "command/reply_views.h"
#include "nuvconnect/NuvConnect5.h"
#include "tests/api/fake_framework.h"
#include "tests/support/environment.h"

namespace {

using Nuv::Command::MalformedNumber;
using Nuv::Command::NoSerialNumber;
using Nuv::Connect::CallHost;
using Nuv::Connect::FakeFramework;
using Nuv::Connect::Record;
using Nuv::Connect::Strings;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

template <class Result, class... Parameters>
Result HostCallback(Parameters...) {
  return Result();
}

template <class Result, class... Parameters>
auto HostCallbackOf(Result (*)(Parameters...)) {
  return &HostCallback<Result, Parameters...>;
}

// What an export is called with at `place` (from 1) among its parameters: inputs that tell the
// place, and memory for outputs.
template <class P>
class Argument {
 public:
  void SetPlace(int place) {
    place_ = place;
    input_ = "s" + std::to_string(place);
  }

  P Get() {
    if constexpr (std::is_same_v<P, char*>) return texts_[0];
    if constexpr (std::is_same_v<P, char**>) {
      for (size_t i = 0; i < std::size(texts_); ++i) list_[i] = texts_[i];
      return list_;
    }
    if constexpr (std::is_same_v<P, int*>) return &number_;
    if constexpr (std::is_same_v<P, float*>) return &fraction_;
    if constexpr (std::is_same_v<P, const char*>) return input_.c_str();
    if constexpr (std::is_same_v<P, const wchar_t*>) {
      wide_.assign(input_.begin(), input_.end());
      return wide_.c_str();
    }
    if constexpr (std::is_same_v<P, const unsigned char*>) {
      return reinterpret_cast<const unsigned char*>("abcd");
    }
    if constexpr (std::is_arithmetic_v<P>) {
      return static_cast<P>(static_cast<float>(place_) + 0.25F);
    }
    if constexpr (IsCallback()) return HostCallbackOf(P());
  }

  // Nothing for an input.
  void AddOutput(std::ostream& outputs) const {
    if constexpr (std::is_same_v<P, char*>) outputs << ' ' << texts_[0];
    if constexpr (std::is_same_v<P, char**>) outputs << ' ' << texts_[0] << ',' << texts_[1];
    if constexpr (std::is_same_v<P, int*>) outputs << ' ' << number_;
    if constexpr (std::is_same_v<P, float*>) outputs << ' ' << fraction_;
  }

 private:
  static constexpr bool IsCallback() {
    return std::is_pointer_v<P> && std::is_function_v<std::remove_pointer_t<P>>;
  }

  int place_ = 0;
  std::string input_;
  std::wstring wide_;
  char texts_[3][8] = {"#", "#", "#"};
  char* list_[3] = {};
  int number_ = 99;  // also the room in a list: more than there is to copy
  float fraction_ = 99;
};

struct Outcome {
  int result;
  std::string outputs;
};

enum Kind {
  kPlain,
  kSingle,  // one string, which is written on success only
  kRaw      // the raw channel: a reply and always 0
};

struct Row {
  const char* name;
  std::function<Outcome()> call;
  const char* expected;  // the operation with its inputs, and the outputs
  std::string untouched;
  Kind kind;

  std::string Operation() const { return Part(0, Arrow()); }
  std::string Outputs() const { return Arrow() == std::string::npos ? "" : Part(Arrow() + 3, 99); }

 private:
  size_t Arrow() const { return std::string(expected).find(" ->"); }
  std::string Part(size_t from, size_t length) const {
    return std::string(expected).substr(from, length);
  }
};

template <class... P>
std::string Outputs(const std::tuple<Argument<P>...>& arguments) {
  std::ostringstream outputs;
  std::apply([&](const auto&... each) { (each.AddOutput(outputs), ...); }, arguments);
  return outputs.str();
}

template <class... P>
Row Of(const char* name, int (*function)(P...), const char* expected, Kind kind = kPlain) {
  using Arguments = std::tuple<Argument<P>...>;
  const auto call = [=]() -> Outcome {
    Arguments arguments;
    [[maybe_unused]] int place = 0;
    std::apply([&](auto&... each) { (each.SetPlace(++place), ...); }, arguments);
    const int result =
        std::apply([&](auto&... each) { return function(each.Get()...); }, arguments);
    return {result, Outputs(arguments)};
  };
  return {name, call, expected, Outputs(Arguments()), kind};
}
#define NUV_ROW(function, ...) Of(#function, function, __VA_ARGS__)

// All that return int and need a framework.
const Row kRows[] = {
    NUV_ROW(API_SetUpdPort, "SetUpdPort 1"),
    NUV_ROW(API_SetBroadCastPort, "SetBroadCastPort 1"),
    NUV_ROW(API_SearchNetworkDevice, "SearchNetworkDevice s4 s5 6 -> t1,u1 2"),
    NUV_ROW(API_GetDeviceList, "GetDeviceList 1 5 -> t1,u1 2"),
    NUV_ROW(API_SearchUSBDevice, "SearchUSBDevice -> 1"),
    NUV_ROW(API_GetDeviceInfo, "GetDeviceInfo 2 3 4 -> t1"),
    NUV_ROW(API_ChooseDevice, "ChooseDevice 1 2"),
    NUV_ROW(API_ConnectDeviceBySN, "ConnectDeviceBySN 1 s2"),
    NUV_ROW(API_ConnectNetWorkDevice, "ConnectNetWorkDevice s1"),
    NUV_ROW(API_GetBroadCastResult, "GetBroadCastResult s4 -> t1,u1 2"),
    NUV_ROW(API_GetPrinterInfo, "GetPrinterInfo -> t1 t2 t3 t4 t5"),
    NUV_ROW(API_GetPrinterInfo_BEGO, "GetPrinterInfo_BEGO -> t1 t2 t3 t4 t5 t6"),
    NUV_ROW(API_GetPrinterStatus, "GetPrinterStatus -> 1"),
    NUV_ROW(API_GetPrinterStatusWithErrorCode, "GetPrinterStatusWithErrorCode -> 1 2"),
    NUV_ROW(API_GetPrintingStatus, "GetPrintingStatus -> 1 2 3"),
    NUV_ROW(API_GetTotalLayerAndTime, "GetTotalLayerAndTime -> 1 2"),
    NUV_ROW(API_GetResinInfo2, "GetResinInfo2 -> 1 2 t3 4 t5"),
    NUV_ROW(API_GetResinInfo, "GetResinInfo -> 1 2 t3 t4"),
    NUV_ROW(API_GetResinInfo_BEGO, "GetResinInfo_BEGO -> t1 t2 t3 t4"),
    NUV_ROW(API_SendPrintFile, "SendPrintFile s1 callback"),
    NUV_ROW(API_SendGCodeFile, "SendGCodeFile s1 callback"),
    NUV_ROW(API_RegisterPrintingInfoCallback, "RegisterPrintingInfoCallback callback 2"),
    NUV_ROW(API_RegisterErrorCodeCallback, "RegisterErrorCodeCallback callback"),
    NUV_ROW(API_RegisterSendDataStartCallback, "RegisterSendDataStartCallback callback"),
    NUV_ROW(API_RegisterSendDataUpdateCallback, "RegisterSendDataUpdateCallback callback"),
    NUV_ROW(API_RegisterSendDataCancelCallback, "RegisterSendDataCancelCallback callback"),
    NUV_ROW(API_NUVCONNECT_ExecutiveCommand, "ExecuteCommand s1 -> t1", kRaw),
    NUV_ROW(API_NUVCONNECT_ReceiveCommand, "ReceiveReply -> t1", kRaw),
    NUV_ROW(API_SetBCPScaling, "SetBCPScaling 1.25 2.25 3.25 4.25 5.25 6.25"),
    NUV_ROW(API_GetBCPScaling, "GetBCPScaling -> 1.5 2.5 3.5 4.5 5.5 6.5"),
    NUV_ROW(API_SetNickName, "SetNickName s1"),
    NUV_ROW(API_GetNickName, "GetNickName -> t1", kSingle),
    NUV_ROW(API_SetLaserPower, "SetParameter 0 1"),
    NUV_ROW(API_GetLaserPower, "GetParameter 0 -> 1"),
    NUV_ROW(API_SetZCompensation, "SetParameter 1 1"),
    NUV_ROW(API_GetZCompensation, "GetParameter 1 -> 1"),
    NUV_ROW(API_SkipSLAWarmup, "SkipSLAWarmup"),
    NUV_ROW(API_GetApList, "GetApList -> t1,u1 2"),
    NUV_ROW(API_IsconnectedAp, "IsconnectedAp -> 1"),
    NUV_ROW(API_ConnectAp, "ConnectAp s1 s2"),
    NUV_ROW(API_GetApAttribute, "GetApAttribute s1 -> 1 2"),
    NUV_ROW(API_DisconnectAp, "DisconnectAp"),
    NUV_ROW(API_GetMacAddressWifi, "GetMacAddressWifi -> t1", kSingle),
    NUV_ROW(API_GetMacAddressLan, "GetMacAddressLan -> t1", kSingle),
    NUV_ROW(API_GetAndroidVersion, "GetAndroidVersion -> t1", kSingle),
    NUV_ROW(API_GetLCMPanelVersion, "GetLCMPanelVersion -> t1", kSingle),
    NUV_ROW(API_IsOpenModeSupported, "IsOpenModeSupported -> 1"),
    NUV_ROW(API_IsRegisteredCorrectTag, "IsRegisteredCorrectTag -> 1"),
    NUV_ROW(API_GetTankType, "GetTankType -> 1"),
    NUV_ROW(API_GetLastUpdatedIndex, "GetLastUpdatedIndex -> 1"),
    NUV_ROW(API_SetLastUpdatedIndex, "SetLastUpdatedIndex 1"),
    NUV_ROW(API_GetCurrJobIndexAndTotalSize, "GetCurrJobIndexAndTotalSize -> 1 2"),
    NUV_ROW(API_GetJobInfo1, "GetJobInfo1 1 -> t1 t2 t3"),
    NUV_ROW(API_GetJobInfo2, "GetJobInfo2 1 -> 1 2 3 4"),
    NUV_ROW(API_GetJobInfo3, "GetJobInfo3 1 -> 1 2 3 4"),
    NUV_ROW(API_GetJobInfo4, "GetJobInfo4 1 -> t1 t2"),
    NUV_ROW(API_GetJobCounter, "GetJobCounter 1 -> 1 2 3 4"),
    NUV_ROW(API_GetLSUFlashParameterFX150, "GetLSUFlashParameterFX150 -> 1 2 3 4 5 6 7 8 9 10 11"),
    NUV_ROW(API_GetLSUFlashParameter, "GetLSUFlashParameter -> 1 2 3 4 5 6 7"),
    NUV_ROW(API_GetLSULaserPWMvalues, "GetLSULaserPWMvalues 1 -> 1 2 3 4 5 6"),
    NUV_ROW(API_GetPDSensorData, "GetPDSensorData 1 -> 1 2 3"),
    NUV_ROW(API_GetLedUseTime, "GetLedUseTime -> t1", kSingle),
    NUV_ROW(API_GetSensorStatusFX120, "GetSensorStatusFX120 -> 1 2 3 4 5 6 7 8 9 10 11 12 13"),
    NUV_ROW(API_GetRepositionProcessing, "GetRepositionProcessing -> 1"),
    NUV_ROW(API_SetFWUpdateFileInfo_Engine, "SetFWUpdateFileInfo_Engine 1 s2"),
    NUV_ROW(API_SetFWUpdateFileInfo_Android, "SetFWUpdateFileInfo_Android 1 2 s3"),
    NUV_ROW(API_StartFWUpdateFileInfo_LCM, "StartFWUpdateFileInfo_LCM s1"),
    NUV_ROW(API_SendFWData, "SendFWData ab"),
    NUV_ROW(API_SendFWDataAndroid, "SendFWDataAndroid ab"),
    NUV_ROW(API_SendFWPanelData, "SendFWPanelData ab"),
    NUV_ROW(API_FinishFWUpdateFileInfo_LCM, "FinishFWUpdateFileInfo_LCM -> t1", kSingle),
    NUV_ROW(API_StartFWUpgradeProcess, "StartFWUpgradeProcess"),
};

Strings g_told;  // what the host's error-code callback was called with

class ExportsTest : public ::testing::Test {
 protected:
  ~ExportsTest() override {
    record = Record();
    API_Close();
  }

  void Start(bool noExceptions) {
    record = Record();
    API_Close();
    SetEnvironment("NUVCONNECT_NO_EXCEPTIONS", noExceptions ? "1" : "");
    API_Initial();
    SetEnvironment("NUVCONNECT_NO_EXCEPTIONS", "");  // read once
    delete g_framework;
    g_framework = new FakeFramework(record);
  }

  // The next operation notes itself, writes its outputs, and does this.
  void Next(const std::function<void()>& trouble) {
    record = Record();
    API_RegisterErrorCodeCallback([](int result, int code) {
      g_told.push_back(std::to_string(result) + " F" + std::to_string(code));
    });
    record = Record();
    record.trouble = trouble;
    g_told.clear();
  }

  // What a failed operation leaves in the outputs.
  static std::string AfterFailure(const Row& row) {
    return row.kind == kSingle ? row.untouched : row.Outputs();
  }

  Record record;
};

TEST_F(ExportsTest, WithoutInstanceEveryExportSaysSoAndTouchesNothing) {
  API_Close();
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    const Outcome outcome = row.call();
    EXPECT_EQ(outcome.result, NUV_NO_INSTANCE);
    EXPECT_EQ(outcome.outputs, row.untouched);
  }
  EXPECT_FALSE(API_NUVCONNECT_OpenDevice());
  EXPECT_FALSE(API_NUVCONNECT_CloseDevice());
}

TEST_F(ExportsTest, HasARowForEachExport) {
  std::set<std::string> names{"API_Initial", "API_Close", "GetConnectingInstance",
                              "API_NUVCONNECT_OpenDevice", "API_NUVCONNECT_CloseDevice"};
  for (const Row& row : kRows) names.insert(row.name);
  std::ifstream list(NUV_EXPORTS);
  for (std::string name; list >> name;) EXPECT_EQ(names.erase(name), 1U) << "no row of " << name;
  EXPECT_THAT(names, IsEmpty()) << "not in exports.txt";
}

TEST_F(ExportsTest, EachCallsItsOperationInputsAndOutputsInOrder) {
  Start(false);
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    for (const int result : {int{NUV_OK}, int{NUV_PRINTER_REFUSED}}) {
      record = Record();
      record.result = result;
      const Outcome outcome = row.call();
      EXPECT_THAT(record.calls, ElementsAre(row.Operation()));
      EXPECT_EQ(outcome.result, row.kind == kRaw ? NUV_OK : result);
      EXPECT_EQ(outcome.outputs, result == NUV_OK ? row.Outputs() : AfterFailure(row));
    }
  }
  for (const bool answer : {true, false}) {
    record = Record();
    record.result = answer ? NUV_OK : NUV_FAILED;
    EXPECT_EQ(API_NUVCONNECT_OpenDevice(), answer);
    EXPECT_EQ(API_NUVCONNECT_CloseDevice(), answer);
    EXPECT_THAT(record.calls, ElementsAre("OpenDevice", "CloseDevice"));
  }
  record = Record();
  API_Close();
  EXPECT_THAT(record.calls, ElementsAre("Close", "destroyed"));
  EXPECT_EQ(g_framework, nullptr);
}

void HostThrows() {
  CallHost([] { throw std::out_of_range("the host's"); });
}
void PrinterGarbles() { throw MalformedNumber("invalid stoi argument", 102); }

TEST_F(ExportsTest, ExceptionsBecomeResultsForHostsThatCannotCatch) {
  const struct {
    std::function<void()> trouble;
    const char* told;
  } kTroubles[] = {
      {PrinterGarbles, "1 F102"},
      {[] { throw std::bad_alloc(); }, "1 F0"},
      // The mark of a callback that threw does not outlive the next one.
      {[] {
         EXPECT_THROW(HostThrows(), std::out_of_range);
         CallHost([] {});
         PrinterGarbles();
       },
       "1 F102"},
  };
  Start(true);
  for (const auto& [trouble, told] : kTroubles) {
    for (const Row& row : kRows) {
      SCOPED_TRACE(row.name);
      Next(trouble);
      const Outcome outcome = row.call();
      EXPECT_EQ(outcome.result, NUV_FAILED);
      EXPECT_EQ(outcome.outputs, row.kind == kRaw ? " " : AfterFailure(row));
      if (row.Operation() != "RegisterErrorCodeCallback callback") {
        EXPECT_THAT(g_told, ElementsAre(told));
      }
    }
    for (const auto function : {API_NUVCONNECT_OpenDevice, API_NUVCONNECT_CloseDevice}) {
      Next(trouble);
      EXPECT_FALSE(function());
      EXPECT_THAT(g_told, ElementsAre(told));
    }
  }
}

TEST_F(ExportsTest, OtherExceptionsLeaveUnchanged) {
  const struct {
    bool noExceptions;
    void (*trouble)();
    const char* text;
  } kTroubles[] = {
      {false, PrinterGarbles, "invalid stoi argument"},
      {false, HostThrows, "the host's"},
      {true, HostThrows, "the host's"},
  };
  for (const auto& [noExceptions, trouble, text] : kTroubles) {
    Start(noExceptions);
    for (const Row& row : kRows) {
      SCOPED_TRACE(row.name);
      Next(trouble);
      EXPECT_THAT(row.call, ::testing::ThrowsMessage<std::logic_error>(text));
      EXPECT_THAT(g_told, IsEmpty());
    }
    EXPECT_THROW(API_NUVCONNECT_OpenDevice(), std::logic_error);
    EXPECT_THROW(API_NUVCONNECT_CloseDevice(), std::logic_error);
  }
}

// Without a callback of the exports, and after one that was taken away with its framework, none is
// called; a listing that finds no serial number needs no variable.
TEST_F(ExportsTest, MissingSerialNumberIsAResultForEveryHost) {
  Start(false);
  Next([] { throw NoSerialNumber(140); });
  int count = 0;
  EXPECT_EQ(API_SearchUSBDevice(&count), NUV_FAILED);
  EXPECT_EQ(API_GetDeviceList(0, nullptr, &(count = 0), 0, 0), NUV_FAILED);
  EXPECT_EQ(count, 2) << "copied as after any failure";
  EXPECT_EQ(API_ConnectDeviceBySN(0, ""), NUV_FAILED);
  EXPECT_THAT(g_told, ElementsAre("1 F140", "1 F140", "1 F140"));
  Start(false);
  record.trouble = [] { throw NoSerialNumber(140); };
  EXPECT_EQ(API_SearchUSBDevice(&count), NUV_FAILED);
  EXPECT_EQ(g_told.size(), 3U);
}

}  // namespace

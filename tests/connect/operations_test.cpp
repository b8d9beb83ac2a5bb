// Every one-command operation: its request on the wire, its reply, what it hands out. Each row is
// run again with a refusal, an unusable reply, fields that are missing and fields that are no
// numbers.

#include <gmock/gmock.h>

#include <array>
#include <deque>
#include <map>
#include <regex>
#include <set>
#include <stdexcept>
#include <tuple>
#include <type_traits>

#include "command/reply_views.h"
#include "connect/connecting_framework.h"
#include "nuvconnect/ResultCodes.h"
#include "tests/connect/scripted_connector.h"
#include "tests/support/protocol_page.h"
#include "tests/support/told.h"

namespace Nuv::Connect {
namespace {

using ErrorList = std::vector<std::pair<int, int>>;
using Strings = std::vector<std::string>;

// What an operation hands out; marked before, so that what it left alone shows.
constexpr int kMark = 77;
using Numbers = std::deque<int>;
using Texts = std::deque<std::string>;
struct Out {
  // One more output of the kind that an operation takes.
  template <typename Output>
  Output Next() {
    if constexpr (std::is_same_v<Output, int*>) {
      return &numbers.emplace_back(kMark);
    } else {
      return texts.emplace_back("-");
    }
  }

  Numbers numbers;
  Texts texts;
};

using F = ConnectingFramework;
using Run = std::function<int(F&, Out&)>;

// Calls an operation with as many outputs as it takes, behind its one input if it has any.
template <typename... Outputs>
Run Calls(int (F::*operation)(Outputs...)) {
  return [operation](F& f, [[maybe_unused]] Out& out) {
    return std::apply([&](Outputs... outputs) { return (f.*operation)(outputs...); },
                      std::tuple<Outputs...>{out.Next<Outputs>()...});
  };
}
template <typename Input, typename... Outputs>
Run Calls(int (F::*operation)(Input, Outputs...), std::decay_t<Input> input) {
  return [operation, input](F& f, [[maybe_unused]] Out& out) {
    return std::apply([&](Outputs... outputs) { return (f.*operation)(input, outputs...); },
                      std::tuple<Outputs...>{out.Next<Outputs>()...});
  };
}

struct Row {
  int code;
  const char* request;
  const char* reply;  // behind "F<code> "
  Run run;
  Numbers numbers;  // handed out
  Texts texts;
  // Outputs of these kinds before anything was read; -1 for the state alone.
  int numberAtFailure = 0;
};

// clang-format off
const std::vector<Row>& Rows() {
  static const std::vector<Row> kRows = {
    {101, "F101", "OK V:1.2 N:Lab one M:Zafel 1.0 S:SN1 C:7", Calls(&F::GetPrinterInfo),
     {}, {"1.2", "Lab one", "Zafel 1.0", "SN1", "7"}},
    {354, "F354", "OK V:1.2 N:Lab one M:BEGO VARSEO XS S:SN1 C:7 D:20240131", Calls(&F::GetPrinterInfo_BEGO),
     {}, {"1.2", "Lab one", "BEGO VARSEO XS", "SN1", "7", "20240131"}},
    {102, "F102", "OK S:2", Calls(&F::GetPrinterStatus), {2}, {}, -1},
    {107, "F107", "OK L:300 T:45 R:Job1", Calls(&F::GetTotalLayerAndTime), {300, 45}, {}},
    {112, "F112", "OK", Calls(&F::SkipSLAWarmup), {}, {}},
    {515, "F515", "OK R:1", Calls(&F::GetRepositionProcessing), {1}, {}},
    {105, "F105", "OK C:1001 S1 R350 V500 QL0001", Calls(&F::GetResinInfo2),
     {1, 350, 500}, {"1001", "L0001"}},
    {120, "F120", "OK S1 R350 D20270131 T1001", Calls(&F::GetResinInfo), {1, 350}, {"20270131", "1001"}},
    {219, "F219", "OK", Calls(&F::IsRegisteredCorrectTag), {1}, {}},
    {335, "F335", "OK S:1", Calls(&F::IsOpenModeSupported), {1}, {}},
    {356, "F356", "OK N:Resin A L:L1 D:20270131 V:350", Calls(&F::GetResinInfo_BEGO),
     {}, {"Resin A", "L1", "20270131", "350"}},
    {159, "F159 S0", "OK S0 V80", Calls(&F::GetParameter, PrinterParameter::kLaserPower), {80}, {}},
    {159, "F159 S1", "OK S1 V-20", Calls(&F::GetParameter, PrinterParameter::kZCompensation), {-20}, {}},
    {332, "F332 S0 V85", "OK",
     [](F& f, Out&) { return f.SetParameter(PrinterParameter::kLaserPower, 85); }, {}, {}},
    {332, "F332 S1 V-20", "OK",
     [](F& f, Out&) { return f.SetParameter(PrinterParameter::kZCompensation, -20); }, {}, {}},
    {196, "F196 B\xC3\xBCro <2>: x = 1", "OK", Calls(&F::SetNickName, "B\xC3\xBCro <2>: x = 1"), {}, {}},
    {196, "F196 ", "OK", Calls(&F::SetNickName, ""), {}, {}},
    {197, "F197", "OK N:B\xC3\xBCro <2>: x = 1", Calls(&F::GetNickName), {}, {"B\xC3\xBCro <2>: x = 1"}},
    {370, "F370 X1.500000,0.250000 Y1.000000,2.000000 Z-1.000000,0.000000", "OK",
     [](F& f, Out&) { return f.SetBCPScaling(1.5F, 0.25F, 1, 2, -1, 0); }, {}, {}},
    {190, "F190", "OK S:1 C:6 M:1 R:80 SSID=<Lab net>", Calls(&F::IsconnectedAp), {1}, {}},
    {190, "F190 SMy Room", "OK SSID=<My Room> S:0 C:6 M:1 R:80", Calls(&F::GetApAttribute, "My Room"), {80, 1}, {}},
    {191, "F191 S1 C1 D1 SSID=<Lab net> KEY=<k <e> y>", "OK",
     [](F& f, Out&) { return f.ConnectAp("Lab net", "k <e> y"); }, {}, {}},
    {191, "F191 S1 C0 D1 SSID=<Open> KEY=<>", "OK", [](F& f, Out&) { return f.ConnectAp("Open", ""); }, {}, {}},
    {191, "F191 S2", "OK", Calls(&F::DisconnectAp), {}, {}},
    {192, "F192 S1", "OK IP=10.0.0.5 MAC=02:00:00:00:00:01 S:1 SSID=<Mac x>", Calls(&F::GetMacAddressWifi),
     {}, {"02:00:00:00:00:01"}},
    {192, "F192 S0", "OK IP=10.0.0.5 MAC=02:00:00:00:00:02", Calls(&F::GetMacAddressLan), {}, {"02:00:00:00:00:02"}},
    {310, "F310", "OK V:2.1.0 L:1.4", Calls(&F::GetAndroidVersion), {}, {"2.1.0"}},
    {504, "F504 A0", "OK V:3.0.2", Calls(&F::GetLCMPanelVersion), {}, {"3.0.2"}},
    {157, "F157", "OK I3 S2147483647", Calls(&F::GetCurrJobIndexAndTotalSize), {3, 2147483647}, {}},
    {169, "F169 S1", "OK S12 F10 C1 E2", Calls(&F::GetJobCounter, 1), {12, 10, 1, 2}, {}},
    {170, "F170", "OK I5", Calls(&F::GetLastUpdatedIndex), {5}, {}},
    {171, "F171 S5", "OK", Calls(&F::SetLastUpdatedIndex, 5), {}, {}},
    {174, "F174 S3", "OK NJob3 C1001 T20261121T103000", Calls(&F::GetJobInfo1, 3),
     {}, {"Job3", "1001", "20261121T103000"}},
    {175, "F175 S3", "OK L300 T45 V12 R1", Calls(&F::GetJobInfo2, 3), {300, 45, 12, 1}, {}},
    {176, "F176 S3", "OK T50 E1500 B9000 P80", Calls(&F::GetJobInfo3, 3), {50, 1500, 9000, 80}, {}},
    {177, "F177 S3", "OK T20261121T111500 QL1", Calls(&F::GetJobInfo4, 3), {}, {"20261121T111500", "L1"}},
    {186, "F186 L2", "OK L12 H980 A512 X7 Y8 Z9 W10", Calls(&F::GetPDSensorData, 2), {12, 980, 512}, {}},
    {301, "F301", "BUSY OK C_T:1 C_B:2 ZLT:3 ZLB:4 V_S:5 L_S:6 W_H:7 Y_H:8 C_LI:9 C_P:10 P_S:11 Y_F:12 T_T:13",
     Calls(&F::GetSensorStatusFX120), {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13}, {}},
    {301, "F301", "OK V_S:2", Calls(&F::GetTankType), {2}, {}},
    {303, "F303 S1", "OK LSU:1 P1:110 P2:220 P3:330 P4:440 P5:550", Calls(&F::GetLSULaserPWMvalues, 1),
     {1, 110, 220, 330, 440, 550}, {}},
    {327, "F327", "OK C:1 L:2 P:3 S:4 T:5 W:6 Y:7", Calls(&F::GetLSUFlashParameter), {1, 2, 3, 4, 5, 6, 7}, {}},
    {327, "F327", "OK C1:1 C2:2 C3:3 L1:4 L2:5 L3:6 T1:7 T2:8 T3:9 Z1:10 Z2:11",
     Calls(&F::GetLSUFlashParameterFX150), {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}, {}},
    {708, "F708", "OK H:1234", Calls(&F::GetLedUseTime), {}, {"1234"}},
  };
  return kRows;
}
// clang-format on

ErrorList g_errors;

class OperationsTest : public UsbHost {
 protected:
  OperationsTest() {
    port.printers = {{"A1"}};
    EXPECT_EQ(framework.GetDeviceList(NUV_KIND_USB, names, 0), NUV_OK);
    EXPECT_EQ(framework.ChooseDevice(NUV_KIND_USB, 0), NUV_OK);
    port.written.clear();
    framework.RegisterErrorCodeCallback(
        [](int result, int code) { g_errors.emplace_back(result, code); });
  }

  // The printer answers every request with this.
  void Answers(const std::string& reply) {
    port.onWrite = [this, reply](const std::string&) { port.blocks = {reply + "\r\n"}; };
    g_errors.clear();
  }

  int Run(const Row& row) {
    out = Out();
    return row.run(framework, out);
  }

  // The operation lets an exception of this class out, with the command's code.
  template <typename Exception>
  void ExpectThrows(const Row& row) {
    EXPECT_THAT([&] { Run(row); },
                ::testing::Throws<Exception>(::testing::Property(&Exception::Code, row.code)));
  }

  void ExpectFailed(const Row& row, int expected) {
    EXPECT_EQ(Run(row), expected);
    EXPECT_EQ(out.numbers, Numbers(row.numbers.size(), row.numberAtFailure));
    EXPECT_EQ(out.texts, Texts(row.texts.size()));
    EXPECT_EQ(g_errors, (ErrorList{{expected, row.code}}));
  }

  Out out;
  Strings names;
};

// But for the two with a test of their own below, and what belongs to jobs and firmware.
TEST(OperationRowsTest, EachQueryOfThePageHasOne) {
  std::set<int> tested{198, 369};
  for (const Row& row : Rows()) tested.insert(row.code);
  for (const ProtocolPage::Row& query : ProtocolPage::Rows("Code")) {
    if (ProtocolPage::Find(query["Export"], "API_(?!Send|\\w*FW)").empty()) continue;
    const int code = ProtocolPage::Codes(query["Code"]).at(0);
    EXPECT_EQ(tested.count(code), 1U) << query.Where() << code << " has no row in " << __FILE__;
  }
}

std::string Head(const Row& row) { return "F" + std::to_string(row.code) + " "; }

// Every number of the reply replaced; texts come along, which does not matter.
std::string WithNumbers(const std::string& reply, const std::string& number) {
  // "$01" because a digit may follow.
  return std::regex_replace(reply, std::regex("([:A-Z])-?\\d+(?= |$)"), "$01" + number);
}

TEST_F(OperationsTest, RequestReplyAndOutputs) {
  for (const Row& row : Rows()) {
    SCOPED_TRACE(row.request);
    Answers(Head(row) + row.reply);
    EXPECT_EQ(Run(row), NUV_OK);
    EXPECT_EQ(port.written.back(), std::string(row.request) + "\r\n");
    EXPECT_EQ(out.numbers, row.numbers);
    EXPECT_EQ(out.texts, row.texts);
    EXPECT_EQ(g_errors, ErrorList{});
    if (row.code == 219) continue;  // accepted is all that it says
    Answers(Head(row) + "OK");
    EXPECT_EQ(Run(row), NUV_OK);
    EXPECT_EQ(out.numbers, Numbers(row.numbers.size(), 0)) << "fields that are missing";
    EXPECT_EQ(out.texts, Texts(row.texts.size()));
  }
}

TEST_F(OperationsTest, FailuresClearTheOutputsAndTellTheHostOnce) {
  for (const Row& row : Rows()) {
    SCOPED_TRACE(row.request);
    Answers(Head(row) + "NG");
    ExpectFailed(row, NUV_PRINTER_REFUSED);
    Answers("");  // a line without a token
    ExpectFailed(row, NUV_FAILED);
    if (row.numbers.empty() || row.code == 219) continue;
    Answers(Head(row) + WithNumbers(row.reply, "abc"));
    ExpectThrows<Command::MalformedNumber>(row);
    EXPECT_EQ(out.numbers, Numbers(row.numbers.size(), row.numberAtFailure));
    Answers(Head(row) + WithNumbers(row.reply, "2147483648"));
    ExpectThrows<Command::NumberOutOfRange>(row);
    EXPECT_EQ(out.texts, Texts(row.texts.size()));
  }
}

TEST_F(OperationsTest, ScalingFactors) {
  using Factors = std::array<float, 6>;
  Factors f{};
  const auto read = [&] {
    f.fill(7);
    return framework.GetBCPScaling(&f[0], &f[1], &f[2], &f[3], &f[4], &f[5]);
  };
  Answers("F369 BUSY OK X:1.500000,0.250000 Y:1.0,2 Z:-3,4e0");
  EXPECT_EQ(read(), NUV_OK);
  EXPECT_EQ(f, (Factors{1.5F, 0.25F, 1, 2, -3, 4}));
  Answers("F369 OK X:1.5 Z:,2");
  EXPECT_THROW(read(), Command::MalformedNumber);
  Answers("F369 OK X:1.5 Y:1e99,1");
  EXPECT_THROW(read(), Command::NumberOutOfRange);
  Answers("F369 OK X:1.5");
  EXPECT_EQ(read(), NUV_OK);
  EXPECT_EQ(f, (Factors{1.5F, 0, 0, 0, 0, 0}));
  Answers("F369 NG");
  EXPECT_EQ(read(), NUV_PRINTER_REFUSED);
  EXPECT_EQ(f, Factors{});
  EXPECT_EQ(g_errors, (ErrorList{{29, 369}}));
}

TEST_F(OperationsTest, AccessPointNames) {
  Answers("F198 OK SSID=<Lab net> SSID=<a > b> SSID=<B\xC3\xBCro>");
  EXPECT_EQ(framework.GetApList(names), NUV_OK);
  EXPECT_EQ(names, (Strings{"Lab net", "a > b", "B\xC3\xBCro"}));
  Answers("F198 NG");
  EXPECT_EQ(framework.GetApList(names), NUV_PRINTER_REFUSED);
  EXPECT_EQ(names, Strings{});
}

TEST_F(OperationsTest, ParametersThatWouldBreakTheLineAreNotSent) {
  Answers("");
  EXPECT_EQ(ToldBy([&] { EXPECT_EQ(framework.SetNickName("a\r\nF104 S2"), NUV_FAILED); }),
            "[NKG]F196 not sent: a parameter holds a line end\n");
  EXPECT_EQ(framework.ConnectAp("a", "b\n"), NUV_FAILED);
  EXPECT_EQ(framework.ConnectAp(std::string("a\0b", 3), "k"), NUV_FAILED);
  EXPECT_EQ(framework.GetApAttribute("\r", out.Next<int*>(), out.Next<int*>()), NUV_FAILED);
  EXPECT_EQ(port.written, Strings{});
  EXPECT_EQ(g_errors, (ErrorList{{1, 196}, {1, 191}, {1, 191}, {1, 190}}));
}

TEST_F(OperationsTest, AnswerForAnotherSettingIsNone) {
  Answers("F159 OK S0 V80");
  int value = kMark;
  EXPECT_EQ(ToldBy([&] {
              EXPECT_EQ(framework.GetParameter(PrinterParameter::kZCompensation, &value),
                        NUV_FAILED);
            }),
            "[NKG]Failed to get command: F159\n"
            "[NKG]F159: asked for setting 1, the answer is of setting 0\n");
  EXPECT_EQ(value, 0);
  EXPECT_EQ(g_errors, (ErrorList{{1, 159}}));
}

TEST_F(OperationsTest, ResinRefusalsOfBothQueries) {
  const int results[] = {12, 13, 11, 14, 10, 1};  // by the printer's state
  for (const Row& row : Rows()) {
    if (row.code != 105 && row.code != 120) continue;
    for (size_t state = 0; state < std::size(results); ++state) {
      Answers(Head(row) + (row.code == 105 ? "NG S:" : "NG S") + std::to_string(state));
      ExpectFailed(row, results[state]);
    }
  }
}

TEST_F(OperationsTest, ProgressOfAPrint) {
  int layer = 7, progress = 7, minutes = 7;
  const auto read = [&] { return framework.GetPrintingStatus(&layer, &progress, &minutes); };
  const auto outputs = [&] { return std::vector{layer, progress, minutes}; };
  Answers("F102 OK S:0 L:9 T:8 C:45%");
  EXPECT_EQ(read(), NUV_NOT_PRINTING);
  Answers("F102 NG S:1");
  EXPECT_EQ(read(), NUV_PRINTER_REFUSED);
  EXPECT_EQ(g_errors, (ErrorList{{29, 102}}));
  for (const char* malformed : {"F102 OK S:1 L:9 T:8", "F102 OK S:1 L:9 T:8 C:%"}) {
    Answers(malformed);
    EXPECT_THROW(read(), std::invalid_argument);
  }
  EXPECT_EQ(outputs(), (std::vector{7, 7, 7})) << "left alone";
  for (const char* percent : {"45%", "45", "45%60"}) {
    Answers(std::string("F102 OK S:1 L:9 T:8 C:") + percent);
    EXPECT_EQ(read(), NUV_OK);
    EXPECT_EQ(outputs(), (std::vector{9, 45, 8}));
  }
}

TEST_F(OperationsTest, ErrorNumberIsReadInTheErrorStateOnly) {
  int status = 0, error = 7;
  Answers("F102 OK S:2 E:5");
  EXPECT_EQ(framework.GetPrinterStatusWithErrorCode(&status, &error), NUV_OK);
  EXPECT_EQ(std::pair(status, error), std::pair(int{NUV_PRINTER_RECEIVING}, 7));
  Answers("F102 OK S:3 E:42");
  EXPECT_EQ(framework.GetPrinterStatusWithErrorCode(&status, &error), NUV_OK);
  EXPECT_EQ(std::pair(status, error), std::pair(int{NUV_PRINTER_ERROR}, 42));
  Answers("F102 NG S:3 E:7");
  EXPECT_EQ(framework.GetPrinterStatusWithErrorCode(&status, &error), NUV_PRINTER_REFUSED);
  EXPECT_EQ(std::pair(status, error), std::pair(-1, 42));
}

TEST_F(OperationsTest, OperationWithoutExportRunsAnyCommand) {
  std::map<std::string, std::string> reply{{"old", "x"}};
  Answers("F157 OK I3 S0");
  EXPECT_EQ(framework.ExecuteCommand(157, {}, reply), NUV_OK);
  EXPECT_EQ(reply, (std::map<std::string, std::string>{{"I", "3"}, {"S", "0"}}));
  Answers("Fx OK");
  EXPECT_THROW(framework.ExecuteCommand(157, {}, reply), std::invalid_argument);
  EXPECT_TRUE(reply.empty());
  Answers("F104 NG");
  EXPECT_EQ(framework.ExecuteCommand(104, {"9"}, reply), NUV_PRINTER_REFUSED);
  EXPECT_EQ(framework.ExecuteCommand(140, {}, reply), NUV_FAILED) << "not the factory's";
  EXPECT_EQ(framework.ExecuteCommand(104, {"2\r\nF104 S2"}, reply), NUV_FAILED);
  EXPECT_TRUE(reply.empty());
  EXPECT_EQ(g_errors, (ErrorList{{29, 104}, {1, 140}, {1, 104}}));
}

}  // namespace
}  // namespace Nuv::Connect

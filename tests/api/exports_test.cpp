// Every export calls its one operation with its inputs in order, hands the outputs back in order,
// and ends as the header says when the operation fails or throws.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <new>
#include <tuple>

#include "api/marshalling.h"
#include "command/reply_views.h"
#include "nuvconnect/NuvConnect5.h"
#include "tests/support/environment.h"
#include "tests/support/fake_framework.h"

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
auto HostCallbackOf(Result (*)(Parameters...)) {
  return +[](Parameters...) { return Result(); };
}

// What an export is called with at `place` (from 1) among its parameters: inputs that tell the
// place, and memory for outputs.
template <class P>
class Argument {
  using Target = std::remove_pointer_t<P>;

 public:
  static constexpr bool kIsCallback = std::is_function_v<Target>;
  static constexpr bool kIsOutput =
      std::is_pointer_v<P> && !std::is_const_v<Target> && !kIsCallback;

  void SetPlace(int place) {
    place_ = place;
    input_ = "s" + std::to_string(place);
  }

  P Get() {
    if constexpr (std::is_same_v<P, char*>) return text_;
    if constexpr (std::is_same_v<P, char**>) return &(list_ = text_);
    if constexpr (std::is_same_v<P, int*> || std::is_same_v<P, float*>) return &number_;
    if constexpr (std::is_same_v<P, const char*>) return input_.c_str();
    if constexpr (std::is_same_v<P, const wchar_t*>) {
      wide_.assign(input_.begin(), input_.end());
      return wide_.c_str();
    }
    if constexpr (std::is_same_v<P, const unsigned char*>) {
      return reinterpret_cast<const unsigned char*>("abcd");
    }
    if constexpr (std::is_arithmetic_v<P>) return AtPlace();
    if constexpr (kIsCallback) return HostCallbackOf(P());
  }

  // How the fake notes an input.
  std::string Noted() const {
    std::ostringstream noted;
    if constexpr (std::is_arithmetic_v<P>) {
      noted << AtPlace();
    } else {
      noted << (kIsCallback ? "callback" : input_);
    }
    return noted.str();
  }

  std::string Output() const {
    if constexpr (std::is_same_v<P, char*> || std::is_same_v<P, char**>) return text_;
    return std::to_string(static_cast<int>(number_));
  }

 private:
  P AtPlace() const { return static_cast<P>(static_cast<float>(place_) + 0.25F); }

  int place_ = 0;
  std::string input_;
  std::wstring wide_;
  char text_[8] = "#";
  char* list_ = nullptr;
  // Also the room in a list: more than there is to copy.
  std::conditional_t<std::is_same_v<P, float*>, float, int> number_ = 99;
};

struct Outcome {
  int result;
  std::string outputs;
};

struct Row {
  std::string name;
  std::function<Outcome()> call;
  std::string operation;  // with its inputs
  std::string outputs, untouched;
  bool isYesNo = false;   // true on success
  bool isSingle = false;  // one string, which is written on success only
  bool isRaw = false;     // the raw channel: a reply and always 0

  // What a failed operation leaves in the outputs.
  std::string AfterFailure() const { return isSingle ? untouched : outputs; }
  int Returns(int result) const { return isYesNo ? int{result == NUV_OK} : result; }
};

template <class... P>
std::string Outputs(const std::tuple<Argument<P>...>& arguments) {
  std::string outputs;
  [[maybe_unused]] const auto add = [&](const auto& each) {
    outputs += each.kIsOutput ? " " + each.Output() : "";
  };
  std::apply([&](const auto&... each) { (add(each), ...); }, arguments);
  return outputs;
}

// Without an `operation` that of the export's name, with all inputs and outputs in order.
template <class Result, class... P>
Row Of(const std::string& name, Result (*function)(P...), std::string operation = "",
       std::string outputs = "") {
  std::tuple<Argument<P>...> arguments;
  [[maybe_unused]] int place = 0, number = 0;
  std::apply([&](auto&... each) { (each.SetPlace(++place), ...); }, arguments);
  if (operation.empty()) {
    operation = name.substr(4);
    [[maybe_unused]] const auto add = [&](const auto& each) {
      if (each.kIsOutput) {
        outputs += " " + std::to_string(++number);
      } else {
        operation += " " + each.Noted();
      }
    };
    std::apply([&](const auto&... each) { (add(each), ...); }, arguments);
  }
  const auto call = [=]() -> Outcome {
    auto own = arguments;
    const Result result = std::apply([&](auto&... each) { return function(each.Get()...); }, own);
    return {result, Outputs(own)};
  };
  Row row{name, call, operation, outputs, Outputs(arguments)};
  row.isYesNo = std::is_same_v<Result, bool>;
  row.isSingle = std::is_same_v<std::tuple<P...>, std::tuple<char*>>;
  row.isRaw = !row.isYesNo && name.rfind("API_NUVCONNECT_", 0) == 0;
  return row;
}
#define NUV_ROW(function, ...) Of(#function, function, __VA_ARGS__)
#define NUV_PLAIN(function) Of(#function, function)

// All that need a framework, by their names. The list makes a plain row of each export.
const std::map<std::string, Row> kRows = [] {
  std::map<std::string, Row> rows;
  // Under another name, or with lengths and rooms that are no inputs of their own.
  for (const Row& row :
       {NUV_ROW(API_SearchNetworkDevice, "SearchNetworkDevice s4 s5 6", " 1 1"),
        NUV_ROW(API_GetDeviceList, "GetDeviceList 1 5", " 1 1"),
        NUV_ROW(API_GetBroadCastResult, "GetBroadCastResult s4", " 1 1"),
        NUV_ROW(API_NUVCONNECT_ExecutiveCommand, "ExecuteCommand s1", " 1"),
        NUV_ROW(API_NUVCONNECT_ReceiveCommand, "ReceiveReply", " 1"),
        NUV_ROW(API_SetLaserPower, "SetParameter 0 1"),
        NUV_ROW(API_GetLaserPower, "GetParameter 0", " 1"),
        NUV_ROW(API_SetZCompensation, "SetParameter 1 1"),
        NUV_ROW(API_GetZCompensation, "GetParameter 1", " 1"),
        NUV_ROW(API_GetApList, "GetApList", " 1 1"), NUV_ROW(API_SendFWData, "SendFWData ab"),
        NUV_ROW(API_SendFWDataAndroid, "SendFWDataAndroid ab"),
        NUV_ROW(API_SendFWPanelData, "SendFWPanelData ab"),
        NUV_ROW(API_NUVCONNECT_OpenDevice, "OpenDevice"),
        NUV_ROW(API_NUVCONNECT_CloseDevice, "CloseDevice")}) {
    rows.emplace(row.name, row);
  }
  for (const Row& row : {
#include "exports.inc"
       }) {
    rows.emplace(row.name, row);
  }
  return rows;
}();

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

  Record record;
};

TEST_F(ExportsTest, WithoutInstanceEveryExportSaysSoAndTouchesNothing) {
  API_Close();
  for (const auto& [name, row] : kRows) {
    SCOPED_TRACE(name);
    const Outcome outcome = row.call();
    EXPECT_EQ(outcome.result, row.Returns(NUV_NO_INSTANCE));
    EXPECT_EQ(outcome.outputs, row.untouched);
  }
}

TEST_F(ExportsTest, EachCallsItsOperationInputsAndOutputsInOrder) {
  Start(false);
  for (const auto& [name, row] : kRows) {
    SCOPED_TRACE(name);
    for (const int result : {int{NUV_OK}, int{NUV_PRINTER_REFUSED}}) {
      record = Record();
      record.result = result;
      const Outcome outcome = row.call();
      EXPECT_THAT(record.calls, ElementsAre(row.operation));
      EXPECT_EQ(outcome.result, row.isRaw ? NUV_OK : row.Returns(result));
      EXPECT_EQ(outcome.outputs, result == NUV_OK ? row.outputs : row.AfterFailure());
    }
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
    for (const auto& [name, row] : kRows) {
      SCOPED_TRACE(name);
      Next(trouble);
      const Outcome outcome = row.call();
      EXPECT_EQ(outcome.result, row.Returns(NUV_FAILED));
      EXPECT_EQ(outcome.outputs, row.isRaw ? " " : row.AfterFailure());
      if (name != "API_RegisterErrorCodeCallback") {
        EXPECT_THAT(g_told, ElementsAre(told));
      }
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
    for (const auto& [name, row] : kRows) {
      SCOPED_TRACE(name);
      Next(trouble);
      EXPECT_THAT(row.call, ::testing::ThrowsMessage<std::logic_error>(text));
      EXPECT_THAT(g_told, IsEmpty());
    }
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
  EXPECT_EQ(count, 1) << "copied as after any failure";
  EXPECT_EQ(API_ConnectDeviceBySN(0, ""), NUV_FAILED);
  EXPECT_THAT(g_told, ElementsAre("1 F140", "1 F140", "1 F140"));
  Start(false);
  record.trouble = [] { throw NoSerialNumber(140); };
  EXPECT_EQ(API_SearchUSBDevice(&count), NUV_FAILED);
  EXPECT_EQ(g_told.size(), 3U);
}

}  // namespace

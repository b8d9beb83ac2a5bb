// Every export calls its one operation with its inputs in order, hands the outputs back in order,
// and ends as the header says when the operation fails or throws.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>
#include <vector>

#include "api/marshalling.h"
#include "command/reply_views.h"
#include "tests/api/export_rows.h"
#include "tests/support/environment.h"
#include "tests/support/fake_framework.h"
#include "tests/support/told.h"

namespace {

using Nuv::Command::MalformedNumber;
using Nuv::Command::NoSerialNumber;
using Nuv::Connect::CallHost;
using Nuv::Connect::FakeFramework;
using Nuv::Connect::Record;
using Nuv::Connect::Strings;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

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
    const Outcome outcome = row.Call();
    EXPECT_EQ(outcome.result, row.Returns(NUV_NO_INSTANCE));
    EXPECT_EQ(outcome.outputs, row.untouched);
  }
}

TEST_F(ExportsTest, AnImageOfThePanelIsReadNoFurther) {
  Start(false);
  const std::vector<unsigned char> image(NUV_PANEL_IMAGE_BYTES + 1, 'x');
  EXPECT_EQ(API_SendFWPanelData(image.data(), NUV_PANEL_IMAGE_BYTES + 1), NUV_OK);
  EXPECT_THAT(record.calls,
              ElementsAre("SendFWPanelData " + std::string(NUV_PANEL_IMAGE_BYTES, 'x')));
}

TEST_F(ExportsTest, EachCallsItsOperationInputsAndOutputsInOrder) {
  Start(false);
  for (const auto& [name, row] : kRows) {
    SCOPED_TRACE(name);
    for (const int result : {int{NUV_OK}, int{NUV_PRINTER_REFUSED}}) {
      record = Record();
      record.result = result;
      const Outcome outcome = row.Call();
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
      const Outcome outcome = row.Call();
      EXPECT_EQ(outcome.result, row.Returns(NUV_FAILED));
      EXPECT_EQ(outcome.outputs, row.isRaw ? " " : row.AfterFailure());
      if (name != "API_RegisterErrorCodeCallback") {
        EXPECT_THAT(g_told, ElementsAre(told));
      }
    }
  }
  Next(PrinterGarbles);
  EXPECT_THAT(ToldBy([] { kRows.begin()->second.Call(); }), ::testing::StartsWith("[NKG]F102: "));
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
      EXPECT_THAT([&each = row] { each.Call(); }, ::testing::ThrowsMessage<std::logic_error>(text));
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

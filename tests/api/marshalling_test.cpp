// What the exports do around the framework: no instance, strings, lists, life cycle.

#include "api/marshalling.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <type_traits>

#include "nuvconnect/IConnectingFramework.h"
#include "nuvconnect/NuvConnect5.h"

namespace {

using Strings = std::vector<std::string>;

// Buffers filled with a mark, so that every byte written, and none besides, can be seen.
constexpr char kMark = '#';

class NoInstanceTest : public ::testing::Test {
 protected:
  void SetUp() override {
    API_Close();
    std::memset(text, kMark, sizeof text);
  }

  // What the exports return: their outputs are the marked ones, all else is empty or zero.
  template <typename... Exports>
  std::vector<int> CallAll(Exports... exports) {
    return {Call(exports)...};
  }
  template <typename... P>
  int Call(int (*function)(P...)) {
    return function(Argument<P>()...);
  }
  template <typename P>
  P Argument() {
    if constexpr (std::is_same_v<P, char*>) return text;
    if constexpr (std::is_same_v<P, char**>) return list;
    if constexpr (std::is_same_v<P, int*>) return &n;
    if constexpr (std::is_same_v<P, float*>) return &f;
    if constexpr (std::is_same_v<P, const char*>) return "";
    if constexpr (std::is_same_v<P, const wchar_t*>) return L"";
    return P{};
  }

  char text[64];
  char* list[1] = {text};
  int n = 77;
  float f = 7.5F;
};

TEST_F(NoInstanceTest, EveryExportSaysSoAndTouchesNothing) {
  const std::vector<int> results = CallAll(
      API_SetUpdPort, API_SetBroadCastPort, API_SearchNetworkDevice, API_GetDeviceList,
      API_SearchUSBDevice, API_GetDeviceInfo, API_ChooseDevice, API_ConnectDeviceBySN,
      API_ConnectNetWorkDevice, API_GetBroadCastResult, API_GetPrinterInfo, API_GetPrinterInfo_BEGO,
      API_GetPrinterStatus, API_GetPrinterStatusWithErrorCode, API_GetPrintingStatus,
      API_GetTotalLayerAndTime, API_GetResinInfo, API_GetResinInfo2, API_GetResinInfo_BEGO,
      API_SendPrintFile, API_SendGCodeFile, API_RegisterPrintingInfoCallback,
      API_RegisterErrorCodeCallback, API_RegisterSendDataStartCallback,
      API_RegisterSendDataUpdateCallback, API_RegisterSendDataCancelCallback,
      API_NUVCONNECT_ExecutiveCommand, API_NUVCONNECT_ReceiveCommand, API_SetBCPScaling,
      API_GetBCPScaling, API_SetNickName, API_GetNickName, API_SetLaserPower, API_GetLaserPower,
      API_SetZCompensation, API_GetZCompensation, API_SkipSLAWarmup, API_GetApList,
      API_IsconnectedAp, API_ConnectAp, API_GetApAttribute, API_DisconnectAp, API_GetMacAddressWifi,
      API_GetMacAddressLan, API_GetAndroidVersion, API_GetLCMPanelVersion, API_IsOpenModeSupported,
      API_IsRegisteredCorrectTag, API_GetTankType, API_GetLastUpdatedIndex, API_SetLastUpdatedIndex,
      API_GetCurrJobIndexAndTotalSize, API_GetJobInfo1, API_GetJobInfo2, API_GetJobInfo3,
      API_GetJobInfo4, API_GetJobCounter, API_GetLSUFlashParameterFX150, API_GetLSUFlashParameter,
      API_GetLSULaserPWMvalues, API_GetPDSensorData, API_GetLedUseTime, API_GetSensorStatusFX120,
      API_GetRepositionProcessing, API_SetFWUpdateFileInfo_Engine, API_SetFWUpdateFileInfo_Android,
      API_StartFWUpdateFileInfo_LCM, API_SendFWData, API_SendFWDataAndroid, API_SendFWPanelData,
      API_FinishFWUpdateFileInfo_LCM, API_StartFWUpgradeProcess);
  // The other five: API_Initial, API_Close, GetConnectingInstance and the two below.
  EXPECT_EQ(results.size(), 77U - 5U);
  EXPECT_THAT(results, ::testing::Each(NUV_NO_INSTANCE));
  EXPECT_FALSE(API_NUVCONNECT_OpenDevice());
  EXPECT_FALSE(API_NUVCONNECT_CloseDevice());
  EXPECT_EQ(n, 77);
  EXPECT_EQ(f, 7.5F);
  EXPECT_EQ(std::string(text, sizeof text), std::string(sizeof text, kMark));
}

TEST(LifeCycleTest, OneInstanceUntilClosed) {
  API_Close();
  EXPECT_EQ(API_Initial(), NUV_OK);
  const auto* const first = g_framework;
  EXPECT_EQ(API_Initial(), NUV_OK);
  EXPECT_EQ(g_framework, first);
  const std::unique_ptr<Nuv::Connect::IConnectingFramework> own(GetConnectingInstance());
  const std::unique_ptr<Nuv::Connect::IConnectingFramework> other(GetConnectingInstance());
  EXPECT_NE(own.get(), other.get());
  EXPECT_NE(own.get(), first);
  EXPECT_EQ(API_ConnectNetWorkDevice(nullptr), NUV_CONNECTION_REFUSED);
  API_Close();
  API_Close();
  EXPECT_EQ(API_ChooseDevice(1, 0), NUV_NO_INSTANCE);
  EXPECT_EQ(own->ChooseDevice(1, 0), NUV_CONNECTION_REFUSED) << "of its own, still alive";
}

// Which outputs a failing query writes.
TEST(LifeCycleTest, FailureWritesSeveralStringsButNotASingleOne) {
  API_Initial();
  char one[4] = {kMark};
  char many[5][4] = {{kMark}, {kMark}, {kMark}, {kMark}, {kMark}};
  // Nothing is chosen, so the transaction fails; its two pauses are part of it.
  EXPECT_EQ(API_GetNickName(one), NUV_FAILED);
  EXPECT_EQ(one[0], kMark);
  EXPECT_EQ(API_GetPrinterInfo(many[0], many[1], many[2], many[3], many[4]), NUV_FAILED);
  for (const char* text : many) EXPECT_STREQ(text, "");
  char info[4] = {kMark};
  EXPECT_EQ(API_GetDeviceInfo(info, 1, 0, 1), NUV_NOT_FOUND);
  EXPECT_STREQ(info, "");
  char reply[4] = {kMark};
  EXPECT_EQ(API_NUVCONNECT_ExecutiveCommand(nullptr, reply, 3), NUV_OK);
  EXPECT_STREQ(reply, "");
  API_Close();
}

TEST(CopyListTest, CutsToTheEntrySizeAndTellsTheFullCount) {
  constexpr int kEntry = 4;
  char buffers[5][kEntry + 3];
  char* list[5];
  struct Row {
    Strings strings;
    int room;
    int entrySize;
    Strings copied;
  };
  const Row rows[] = {
      {{"a", "b", "c", "d", "e"}, 3, kEntry, {"a", "b", "c"}},
      {{"abc", "abcd", "abcde", ""}, 5, kEntry, {"abc", "abcd", "abcd", ""}},
      {{"a"}, 0, kEntry, {}},
      {{"a"}, -1, kEntry, {}},
      {{"a"}, 1, 0, {""}},
      {{}, 5, kEntry, {}},
  };
  for (const Row& row : rows) {
    std::memset(buffers, kMark, sizeof buffers);
    for (int i = 0; i < 5; ++i) list[i] = buffers[i];
    int count = row.room;
    Nuv::Api::CopyList(row.strings, list, &count, row.entrySize);
    EXPECT_EQ(count, static_cast<int>(row.strings.size()));
    for (size_t i = 0; i < 5; ++i) {
      if (i < row.copied.size()) {
        EXPECT_STREQ(buffers[i], row.copied[i].c_str());
        EXPECT_EQ(buffers[i][row.copied[i].size() + 1], kMark);
      } else {
        EXPECT_EQ(buffers[i][0], kMark);
      }
    }
  }
}

TEST(CopyTextTest, ReplyIsCutAtMaxLen) {
  char reply[8];
  for (const auto& [text, maxLen, expected] :
       {std::tuple("abcdef", 3, "abc"), {"abc", 3, "abc"}, {"ab", 3, "ab"}, {"ab", 0, ""}}) {
    std::memset(reply, kMark, sizeof reply);
    Nuv::Api::CopyTextCut(text, reply, maxLen);
    EXPECT_STREQ(reply, expected);
    EXPECT_EQ(reply[std::strlen(expected) + 1], kMark);
  }
  EXPECT_EQ(Nuv::Api::Bytes(nullptr, 0).size(), 0U);
  EXPECT_EQ(Nuv::Api::Bytes(nullptr, -1).size(), 0U);
}

TEST(CopyTextTest, BrokenPrinterDoesNotWriteBehindAPromisedBuffer) {
  std::vector<char> out(NUV_TEXT_BYTES + 1, kMark);
  Nuv::Api::CopyText(std::string(300, 'x'), out.data());
  EXPECT_EQ(std::strlen(out.data()), 300U);
  Nuv::Api::CopyText(std::string(NUV_TEXT_BYTES * 2, 'x'), out.data());
  EXPECT_EQ(std::strlen(out.data()), NUV_TEXT_BYTES - 1U);
  EXPECT_EQ(out.back(), kMark);
}

}  // namespace

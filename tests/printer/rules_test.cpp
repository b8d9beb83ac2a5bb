// The rules that hold for every function: structures, handles, results, the log.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <stdexcept>

#include "nuvprinter/nuvprinter.hpp"
#include "tests/support/environment.h"

namespace {

// Searches nobody: what is asked listens nowhere, and the time is short.
nuv_result SearchNobody(nuv_list** out, nuv_error* error = nullptr,
                        nuv_search_options options = NUV_INIT(nuv_search_options)) {
  options.links = NUV_LINK_NETWORK;
  options.addresses = options.addresses != nullptr ? options.addresses : "127.0.0.1:9";
  nuv_call call = NUV_INIT(nuv_call);
  call.time_limit_ms = 1;
  return nuv_search_printers(out, &options, &call, error);
}

TEST(RulesTest, StructuresGrowAtTheirEnd) {
  struct {
    nuv_error error;
    char later[16];
  } longer;
  std::memset(&longer, 0x55, sizeof longer);
  longer.error.size = sizeof longer;
  nuv_list* list = nullptr;
  EXPECT_EQ(SearchNobody(&list, &longer.error), NUV_RESULT_OK);
  EXPECT_EQ(longer.error.size, sizeof longer);
  EXPECT_EQ(longer.error.message.flags, 0U) << "zeroed when there is none";
  EXPECT_EQ(longer.later[0] + longer.later[15], 0) << "what only the caller knows is zeroed";
  nuv_list_free(list);

  nuv_error error = NUV_INIT(nuv_error);
  error.size -= 1;
  EXPECT_EQ(SearchNobody(&list, &error), NUV_RESULT_INVALID_ARGUMENT);
  nuv_search_options options = NUV_INIT(nuv_search_options);
  options.size -= 1;
  EXPECT_EQ(SearchNobody(&list, nullptr, options), NUV_RESULT_INVALID_ARGUMENT);
  EXPECT_EQ(list, nullptr);
  nuv_outcome outcome = NUV_INIT(nuv_outcome);
  outcome.size -= 1;
  EXPECT_EQ(nuv_printer_send(&outcome, nullptr, "none", nullptr, nullptr, nullptr),
            NUV_RESULT_INVALID_ARGUMENT);
}

TEST(RulesTest, ArgumentsThatNobodyCanMean) {
  nuv_error error = NUV_INIT(nuv_error);
  EXPECT_EQ(SearchNobody(nullptr, &error), NUV_RESULT_INVALID_ARGUMENT);
  EXPECT_STREQ(error.message.text, "no place for the list");
  nuv_list* list = nullptr;
  nuv_search_options options = NUV_INIT(nuv_search_options);
  for (const int port : {-1, 65536}) {
    options.udp_port = port;
    EXPECT_EQ(SearchNobody(&list, &error, options), NUV_RESULT_INVALID_ARGUMENT);
  }
  options = NUV_INIT(nuv_search_options);
  options.links = 4;
  EXPECT_EQ(nuv_search_printers(&list, &options, nullptr, &error), NUV_RESULT_INVALID_ARGUMENT);
  nuv_call call = NUV_INIT(nuv_call);
  call.time_limit_ms = -1;
  EXPECT_EQ(nuv_search_printers(&list, nullptr, &call, &error), NUV_RESULT_INVALID_ARGUMENT);
  EXPECT_EQ(error.result, NUV_RESULT_INVALID_ARGUMENT);
}

TEST(RulesTest, HandlesThatAreGoneLeadNowhere) {
  nuv_list* list = nullptr;
  ASSERT_EQ(SearchNobody(&list), NUV_RESULT_OK);
  nuv_identity item = NUV_INIT(nuv_identity);
  EXPECT_EQ(nuv_list_count(list), 0);
  EXPECT_EQ(nuv_list_get_identity(&item, list, 0), NUV_RESULT_INVALID_ARGUMENT);
  nuv_list_free(list);
  nuv_list_free(list);
  EXPECT_EQ(nuv_list_get_identity(&item, list, 0), NUV_RESULT_BAD_HANDLE);
  nuv_list* next = nullptr;
  ASSERT_EQ(SearchNobody(&next), NUV_RESULT_OK);
  EXPECT_NE(next, list) << "no number is used again";
  nuv_list_free(next);
  nuv_list_free(nullptr);
  EXPECT_EQ(nuv_list_count(nullptr), 0);
  EXPECT_EQ(nuv_list_get_identity(nullptr, nullptr, 0), NUV_RESULT_INVALID_ARGUMENT);
}

TEST(RulesTest, EveryResultHasItsWords) {
  for (nuv_result result = NUV_RESULT_OK; result <= NUV_RESULT_SYSTEM; ++result) {
    EXPECT_STRNE(nuv_result_text(result), nuv_result_text(NUV_RESULT_SYSTEM + 1)) << result;
  }
  EXPECT_EQ(nuv::Error(nuv::Result::kBusy, "text").code(), nuv::Result::kBusy);
  EXPECT_EQ(nuv_version(), uint32_t{NUV_PRINTER_VERSION});
}

TEST(RulesTest, LogIsToldAndReleased) {
  auto token = std::make_shared<int>(1);
  std::vector<std::string> lines;
  nuv::SetLog(nuv::LogLevel::kError,
              [token, &lines](nuv::LogLevel, const std::string&, const std::string& text) {
                lines.push_back(text);
                throw std::runtime_error("lost");
              });
  SearchNobody(nullptr);
  nuv::SetLog(nuv::LogLevel::kError, nullptr);
  SearchNobody(nullptr);
  EXPECT_THAT(lines, ::testing::ElementsAre("no place for the list"));
  EXPECT_EQ(token.use_count(), 1);

  // Of what only a person who looks for a cause wants to know.
  for (const auto level : {nuv::LogLevel::kError, nuv::LogLevel::kWarning}) {
    lines.clear();
    nuv::SetLog(level, [&](nuv::LogLevel its, const std::string&, const std::string& text) {
      EXPECT_EQ(its, nuv::LogLevel::kWarning);
      lines.push_back(text);
    });
    nuv_list* list = nullptr;
    SetEnvironment("NUVCONNECT_SEARCH", "127.0.0.1:9 nowhere");
    nuv_search_options options = NUV_INIT(nuv_search_options);
    options.links = NUV_LINK_NETWORK;
    nuv_call call = NUV_INIT(nuv_call);
    call.time_limit_ms = 1;
    EXPECT_EQ(nuv_search_printers(&list, &options, &call, nullptr), NUV_RESULT_OK);
    SetEnvironment("NUVCONNECT_SEARCH", "");
    EXPECT_EQ(lines.size(), level == nuv::LogLevel::kWarning ? 1U : 0U);
  }
  nuv::SetLog(nuv::LogLevel::kError, nullptr);

  static int told, released;
  const auto release = [](void*) { ++released; };
  nuv_log_to(
      NUV_LOG_ERROR, [](const nuv_log_line*, void*) -> int32_t { return told++ * 0; }, nullptr,
      release);
  for (int i = 0; i < 2; ++i) SearchNobody(nullptr);
  EXPECT_EQ(told, 1) << "0 ends it";
  EXPECT_EQ(released, 1);
}

}  // namespace

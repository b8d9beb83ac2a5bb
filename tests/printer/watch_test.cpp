// Printers that are looked at regularly.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <future>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "nuvfile/print_file_writer.h"
#include "tests/printer/printer_lab.h"
#include "tests/support/environment.h"

namespace {

using nuv::Event;
using nuv::EventKind;
using nuv::Printer;
using nuv::PrinterState;
using nuv::Result;
using std::chrono::seconds;

constexpr char kHere[] = "127.0.0.1";

// What a watch has told.
class Told {
 public:
  nuv::Watch On(const Printer& printer) {
    return printer.Watch(seconds(1), [this](const Event& event) {
      const std::lock_guard<std::mutex> lock(mutex_);
      events_.push_back(event);
      changed_.notify_all();
      return true;
    });
  }
  // The first event from now on, or one still unread, of which it holds.
  template <class Condition>
  Event Until(Condition condition) {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
      const bool more =
          changed_.wait_for(lock, seconds(30), [this] { return read_ < events_.size(); });
      if (!more) throw std::runtime_error("never told");
      const Event event = events_[read_++];
      if (condition(event)) return event;
    }
  }
  Event Until(EventKind kind) {
    return Until([kind](const Event& event) { return event.kind == kind; });
  }
  size_t Count() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return events_.size();
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Event> events_;
  size_t read_ = 0;
};

class WatchTest : public PrinterLab {
 protected:
  void Open(seconds layerTime = {}) {
    auto config = Config("SIM1", kHere);
    config.layerTime = layerTime;
    Start({config});
    printer = Printer::OpenAddress(kHere);
  }
  Printer printer;
};

TEST_F(WatchTest, APrintIsToldFromItsBeginningToHowItEnded) {
  Open(seconds(1));
  SetEnvironment("NUVFILE_LIBRARY", NUVFILE_LIBRARY_FILE);
  NuvFile::PrintFileContents contents;
  contents.machineId = "3DPSNKG53WTW00001";
  const std::string path = ::testing::TempDir() + "watched.nuv";
  const std::vector<std::string> lines{"G1 X1", "G1 X2", "G1 X3"};
  ASSERT_TRUE(NuvFile::WritePrintFile(path, contents, NuvFile::LinesOf(lines)).Ok());
  Told told;
  const nuv::Watch watch = told.On(printer);
  Event event = told.Until(EventKind::kState);
  EXPECT_TRUE(event.changed);
  EXPECT_EQ(event.state->state, PrinterState::kIdle);
  EXPECT_FALSE(event.job);
  EXPECT_TRUE(event.lastAnswer);
  EXPECT_FALSE(told.Until(EventKind::kState).changed);
  ASSERT_TRUE(printer.Send(path));
  event = told.Until([](const Event& one) { return one.state->state == PrinterState::kPrinting; });
  EXPECT_EQ(event.kind, EventKind::kState);
  EXPECT_TRUE(event.changed);
  EXPECT_EQ(event.job->index, 1);
  EXPECT_EQ(event.job->layers, 3);
  event = told.Until(EventKind::kPrintEnded);
  EXPECT_EQ(event.state->state, PrinterState::kIdle);
  EXPECT_EQ(event.job->index, 1);
  EXPECT_EQ(event.jobResult, nuv::JobResult::kFinished);
  event = told.Until(EventKind::kState);
  EXPECT_FALSE(event.job);
  EXPECT_FALSE(event.jobResult);

  // One that is cancelled, having waited for somebody to help meanwhile.
  ASSERT_TRUE(printer.Send(path));
  simulator->SetError(0, 4);
  event = told.Until([](const Event& one) { return one.state->state == PrinterState::kError; });
  EXPECT_EQ(event.kind, EventKind::kState);
  EXPECT_EQ(event.state->errorNumber, 4);
}

TEST_F(WatchTest, WhatIsToldAnewIsMarked) {
  Open();
  const std::pair<const char*, bool> rows[] = {
      {"S:0", true},
      {"S:0", false},
      {"S:1 L:1 T:9 C:10% R:a", true},
      {"S:1 L:1 T:9 C:10% R:a", false},
      {"S:1 L:2 T:9 C:10% R:a", true},
      {"S:1 L:2 T:8 C:10% R:a", true},
      {"S:1 L:2 T:8 C:20% R:a", true},
      {"S:1 L:2 T:8 C:20% R:b", true},
      {"S:1 L:2 T:0 C:20% R:b", true},
      {"S:3 E:4", true},
      {"S:3 E:5", true},
  };
  for (const auto& [answer, changed] : rows) {
    Commits(std::string("answer,code=102,text=F102 OK ") + answer);
  }
  Told told;
  const nuv::Watch watch = told.On(printer);
  for (const auto& [answer, changed] : rows) {
    EXPECT_EQ(told.Until(EventKind::kState).changed, changed) << answer;
  }
}

TEST_F(WatchTest, SilentAndGoneAreToldApartAndTheReturnToo) {
  Open();
  Told told;
  const nuv::Watch watch = told.On(printer);
  const auto answer = [&] {
    return told.Until(
        [](const Event& one) { return one.kind == EventKind::kState && one.changed; });
  };
  answer();
  Commits("silent,code=102,count=2");
  Commits("refuse,code=102");
  Event event = told.Until(EventKind::kSilent);
  EXPECT_TRUE(event.changed);
  EXPECT_EQ(event.reason, Result::kNoAnswer);
  EXPECT_EQ(event.state->state, PrinterState::kIdle) << "the last that is known";
  EXPECT_FALSE(told.Until(EventKind::kSilent).changed);
  event = told.Until([](const Event& one) { return one.changed; });
  EXPECT_EQ(event.kind, EventKind::kSilent) << "for another reason";
  EXPECT_EQ(event.reason, Result::kRefused);
  EXPECT_EQ(answer().reason, Result::kOk);

  for (const char* fault : {"answer,code=102,text=F102 OK,count=-1", "refuse,code=102,count=-1",
                            "bad-number,code=102,field=S,count=-1"}) {
    SCOPED_TRACE(fault);
    Commits(fault);
    EXPECT_EQ(told.Until(EventKind::kSilent).reason,
              std::string(fault).find("refuse") == 0 ? Result::kRefused : Result::kUnreadable);
    simulator->ClearFaults(0);
    answer();
  }

  simulator->Unplug(0);
  event = told.Until(EventKind::kGone);
  EXPECT_EQ(event.reason, Result::kUnreachable);
  EXPECT_TRUE(event.state);
  simulator->Replug(0);
  answer();

  // A connection that is lost is made anew within the same look.
  simulator->SetError(0, 17);
  EXPECT_EQ(answer().state->state, PrinterState::kError);
  Commits("drop,code=102");
  event = told.Until([&](const Event&) { return simulator->Totals().faultsApplied > 0; });
  EXPECT_EQ(event.kind, EventKind::kState);
  EXPECT_EQ(event.state->state, PrinterState::kError);
}

TEST_F(WatchTest, EndsAsItsHostWants) {
  Open();
  const auto token = std::make_shared<int>();
  nuv::Watch ended = printer.Watch(seconds(1), [token](const Event&) { return false; });
  EXPECT_TRUE(ended.Wait());
  EXPECT_EQ(token.use_count(), 1) << "what it captured ends with it";
  nuv::Watch thrown =
      printer.Watch(seconds(1), [](const Event&) -> bool { throw std::domain_error("mine"); });
  EXPECT_THROW(thrown.Wait(), std::domain_error);

  // Freed while its function runs, which it waits for.
  std::promise<void> inside;
  ended = printer.Watch(seconds(1), [token, &inside](const Event&) {
    inside.set_value();
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    return true;
  });
  inside.get_future().wait();
  ended = {};
  EXPECT_EQ(token.use_count(), 1);

  nuv::Watch goesOn = printer.Watch(seconds(1), [token](const Event&) { return true; });
  nuv::Call call;
  call.timeLimit = std::chrono::milliseconds(10);
  EXPECT_FALSE(goesOn.Wait(call));
  printer.Cancel();
  EXPECT_FALSE(goesOn.Wait(call)) << "calls end, watches go on";
  Told told;
  nuv::Watch looking = told.On(printer);
  told.Until(EventKind::kState);
  Commits("silent,code=102,count=2");
  const uint64_t before = simulator->Totals().requests;
  EXPECT_TRUE(Becomes([&] { return simulator->Totals().requests > before; }));
  printer.Cancel();
  told.Until(EventKind::kState);
  looking = {};
  printer = {};
  EXPECT_EQ(token.use_count(), 1) << "it ends with its printer";
  EXPECT_TRUE(goesOn.Wait());
}

// By the C functions, whose handles go inside callbacks.
struct Looks {
  nuv_watch* watch = nullptr;
  nuv_printer* printer = nullptr;
  std::promise<nuv_result> waited;
  std::promise<void> released;

  static int32_t FreeBoth(const nuv_event*, void* user) {
    auto& self = *static_cast<Looks*>(user);
    self.waited.set_value(nuv_watch_wait(self.watch, nullptr));
    nuv_printer_free(self.printer);
    nuv_watch_free(self.watch);
    return 1;
  }
  static void Release(void* user) { static_cast<Looks*>(user)->released.set_value(); }
};

TEST_F(WatchTest, FreeingInsideItsFunctionDoesNotWait) {
  Open();
  Looks looks;
  nuv_identity where = NUV_INIT(nuv_identity);
  EXPECT_EQ(nuv_printer_get_identity(&where, printer.Handle(), nullptr, nullptr), NUV_RESULT_OK);
  printer = {};
  ASSERT_EQ(nuv_printer_open(&looks.printer, &where, nullptr, nullptr), NUV_RESULT_OK);
  ASSERT_EQ(
      nuv_printer_watch(&looks.watch, looks.printer, 1000, Looks::FreeBoth, &looks, Looks::Release),
      NUV_RESULT_OK);
  EXPECT_EQ(looks.waited.get_future().get(), NUV_RESULT_BUSY);
  looks.released.get_future().get();
  EXPECT_EQ(nuv_watch_wait(looks.watch, nullptr), NUV_RESULT_BAD_HANDLE);
  nuv_watch_free(looks.watch);

  Looks none;
  EXPECT_EQ(nuv_printer_watch(nullptr, printer.Handle(), 1000, Looks::FreeBoth, &none, nullptr),
            NUV_RESULT_INVALID_ARGUMENT);
  none.watch = reinterpret_cast<nuv_watch*>(&none);
  EXPECT_EQ(nuv_printer_watch(&none.watch, printer.Handle(), 1000, nullptr, &none, nullptr),
            NUV_RESULT_INVALID_ARGUMENT);
  EXPECT_EQ(none.watch, nullptr);
  for (const int interval : {999, 1000}) {
    Looks refused;
    EXPECT_EQ(nuv_printer_watch(&refused.watch, looks.printer, interval, Looks::FreeBoth, &refused,
                                Looks::Release),
              interval < 1000 ? NUV_RESULT_INVALID_ARGUMENT : NUV_RESULT_BAD_HANDLE);
    refused.released.get_future().get();
    EXPECT_EQ(refused.watch, nullptr);
  }
}

// More silent printers than there are threads while all answer.
TEST_F(WatchTest, SilentPrintersDelayNoOther) {
  constexpr int kSilent = 12;
  std::vector<NuvSim::PrinterConfig> configs{Config("W0", kHere)};
  for (int i = 1; i <= kSilent; ++i) {
    configs.push_back(Config("W" + std::to_string(i), "127.0.1." + std::to_string(i)));
  }
  Start(configs);
  std::vector<Printer> printers;
  std::vector<Told> told(kSilent + 1);
  std::vector<nuv::Watch> watches;
  for (int i = kSilent; i >= 0; --i) {
    const auto at = static_cast<size_t>(i);
    if (i > 0) simulator->InjectFault(at, NuvSim::ParseFault("silent,code=102,count=-1"));
    nuv::Identity where;
    where.address = configs[at].address;
    where.tcpPort = simulator->TcpPort(at);
    printers.push_back(Printer::Open(where));
    watches.push_back(told[at].On(printers.back()));
  }
  for (size_t i = 1; i <= kSilent; ++i) {
    for (int looks = 0; looks < 3; ++looks) told[i].Until(EventKind::kSilent);
  }
  // Each of their looks lasts two seconds.
  EXPECT_GE(told[0].Count(), 5U);
}

// A printer serves one client: others get in between.
TEST_F(WatchTest, LetsGoOfThePrinterAtTimes) {
  Open();
  Told told;
  const nuv::Watch watch = told.On(printer);
  EXPECT_TRUE(Becomes([&] { return simulator->Totals().connections >= 2; }));
  EXPECT_GE(told.Count(), 5U) << "but not behind each look";
}

}  // namespace

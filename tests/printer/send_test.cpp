// Files to a printer through the C++ layer: what is found before, how a transfer ends, and what is
// known of it then.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <stdexcept>

#include "nuvfile/print_file_writer.h"
#include "platform/process_claim.h"
#include "tests/printer/printer_lab.h"
#include "tests/support/environment.h"

namespace {

using nuv::Finding;
using nuv::Findings;
using nuv::Outcome;
using nuv::OutcomeKind;
using nuv::Result;
using nuv::Stage;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr char kHere[] = "127.0.0.1";
constexpr char kZafelId[] = "3DPSNKG53WTW00001";

class SendTest : public PrinterLab {
 protected:
  void SetUp() override {
    PrinterLab::SetUp();
    SetEnvironment("NUVFILE_LIBRARY", NUVFILE_LIBRARY_FILE);
    std::filesystem::create_directories(folder);
  }
  void Open(const std::string& model = "Zafel Superfine", uint64_t bufferBytes = 65536) {
    printer = {};
    auto config = Config("SIM1", kHere, model);
    config.bufferBytes = bufferBytes;
    config.drainRate = bufferBytes;
    config.layerTime = std::chrono::seconds(1);
    Start({config});
    printer = nuv::Printer::OpenAddress(kHere);
    options = {};
    stages.clear();
    told = 0;
    options.progress = [this](const nuv::Progress& progress) {
      if (progress.stage == Stage::kWaiting) ++told;
      if (progress.stage > Stage::kChecking) total = progress.total;
      if (stages.empty() || stages.back() != progress.stage) stages.push_back(progress.stage);
      return !endsAt || progress.sent < *endsAt || progress.stage != Stage::kSending;
    };
  }
  std::filesystem::path PrintFile(const std::string& machineId = kZafelId,
                                  const std::string& resinMl = "5") {
    NuvFile::PrintFileContents contents;
    contents.machineId = machineId;
    contents.arguments = {{"resin_ml", resinMl}, {"print_minutes", "7"}};
    const auto path = folder / ("crown" + std::to_string(files++) + ".nuv");
    const NuvFile::Status written =
        NuvFile::WritePrintFile(path.string(), contents, NuvFile::LinesOf(lines));
    EXPECT_TRUE(written.Ok()) << written.Message();
    return path;
  }
  std::filesystem::path File(const std::string& bytes) {
    const auto path = folder / ("file" + std::to_string(files++));
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
  }
  std::string Wire() const {
    std::string wire;
    for (const std::string& line : lines) wire += line + "\r\n";
    return wire;
  }
  void ExpectJobArrived() {
    EXPECT_TRUE(Becomes([&] { return simulator->JobBytes().size() >= Wire().size(); }));
    EXPECT_EQ(simulator->JobBytes(), Wire());
  }
  bool WasAsked(const std::string& request) const {
    for (const std::string& line : simulator->Requests()) {
      if (line == request) return true;
    }
    return false;
  }

  // Of each test, since they may run at the same time. On Windows the print-file library takes the
  // system's narrow characters, which may lack others.
#ifdef _WIN32
  static constexpr char kInItsName[] = " x";
#else
  static constexpr char kInItsName[] = " \xC3\xA4";
#endif
  const std::filesystem::path folder =
      std::filesystem::path(::testing::TempDir()) /
      (::testing::UnitTest::GetInstance()->current_test_info()->name() + std::string(kInItsName));
  std::vector<std::string> lines{"G1 X1", "", "G1 X2 Y3", "G1 X4"};
  nuv::Printer printer;
  nuv::SendOptions options;
  std::vector<Stage> stages;
  int told = 0;                   // of waiting
  int64_t total = 0;              // bytes, as told last
  std::optional<int64_t> endsAt;  // bytes sent, from which on progress ends the transfer
  int files = 0;
};

TEST_F(SendTest, AJobOfEachFamilyIsAccepted) {
  const struct {
    const char* model;
    const char* machineId;
    bool counts;  // its jobs
  } rows[] = {{"Zafel Superfine", kZafelId, true},
              {"Zafel Superfine", kZafelId, false},
              {"BEGO VARSEO XS", "3DPSNKGB3WTW00001", true},
              {"Fabrix150 xP", "3DPSNKGC3WTW00001", true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.model);
    Open(row.model);
    if (!row.counts) Commits("refuse,code=157,count=-1");
    for (int job = 1; job <= (row.counts ? 2 : 1); ++job) {
      const Outcome outcome = printer.Send(PrintFile(row.machineId), options);
      EXPECT_TRUE(outcome) << outcome.message;
      EXPECT_EQ(outcome.kind, OutcomeKind::kAccepted);
      EXPECT_EQ(outcome.jobIndex.value_or(0), row.counts ? job : 0);
      EXPECT_EQ(outcome.bytesSent, 18);
      EXPECT_FALSE(outcome.mayHoldJob);
      EXPECT_EQ(total, 18);
      ExpectJobArrived();
      simulator->SetIdle(0);
    }
    stages.resize(4);
    EXPECT_THAT(stages, ElementsAre(Stage::kChecking, Stage::kOpening, Stage::kSending,
                                    Stage::kConfirming));
  }
}

TEST_F(SendTest, WhatSpeaksAgainstAFileIsToldAndMayBeAccepted) {
  Open();
  const auto damaged = PrintFile();
  std::fstream(damaged, std::ios::binary | std::ios::in | std::ios::out).seekp(200) << "xxxx";
  const struct {
    std::string words;
    Finding finding;
    std::filesystem::path file;
    std::function<void()> make;
    bool acceptable = true;
  } rows[] = {
      {"is damaged: ", Finding::kFileDamaged, damaged, [] {}, false},
      {"for BEGO printers, this one is a Zafel Superfine", Finding::kOtherModel,
       PrintFile("3DPSNKGB3WTW00001"), [] {}},
      {"past its use-by date", Finding::kResinForbids, PrintFile(),
       [this] { simulator->SetResinRefusal(0, 2); }},
      {"needs 100000 ml of resin", Finding::kResinTooLittle, PrintFile(kZafelId, "99999.5"), [] {}},
      {"in error 17", Finding::kPrinterNotIdle, PrintFile(), [this] { simulator->SetError(0, 17); },
       false},
      {"is printing", Finding::kPrinterNotIdle, PrintFile(),
       [this] { Commits("answer,code=102,text=F102 OK S:1,count=-1"); }, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.words);
    Open();
    row.make();
    const nuv::CheckReport report = printer.Check(row.file);
    EXPECT_EQ(report.findings.bits, static_cast<int32_t>(row.finding));
    EXPECT_THAT(report.message, HasSubstr(row.words));
    EXPECT_THAT(report.message, StartsWith(row.file.filename().string()));
    Outcome outcome = printer.Send(row.file);
    EXPECT_EQ(outcome.kind, OutcomeKind::kNotFit);
    EXPECT_EQ(outcome.reason, Result::kNotFit);
    EXPECT_EQ(outcome.message, report.message);
    options.accept = outcome.findings;
    if (row.finding == Finding::kOtherModel) continue;  // the printer would take the wrong opening
    outcome = printer.Send(row.file, options);
    EXPECT_EQ(outcome.kind, row.acceptable ? OutcomeKind::kAccepted : OutcomeKind::kNotFit);
    EXPECT_EQ(outcome.findings.bits, report.findings.bits);
    EXPECT_EQ(simulator->Jobs().empty(), !row.acceptable);
  }
  // Two at once; and a resin of which the printer tells nothing is no finding.
  Open();
  simulator->SetError(0, 17);
  EXPECT_THAT(printer.Check(PrintFile("3DPSNKGB3WTW00001")).message, HasSubstr("in error 17; the"));
  Open();
  for (const char* code : {"105", "120", "356"}) {
    Commits("answer,code=" + std::string(code) + ",text=F" + code + " NG");
  }
  EXPECT_FALSE(printer.Check(PrintFile(kZafelId, "99999")).findings);
  Open();
  const nuv::CheckReport fit = printer.Check(PrintFile());
  EXPECT_FALSE(fit.findings);
  EXPECT_EQ(fit.machineId, kZafelId);
  EXPECT_EQ(fit.machineFamily, "Zafel Superfine");
  EXPECT_EQ(fit.printerModel, "Zafel Superfine");
  EXPECT_EQ(fit.resinNeededMl, 5);
  EXPECT_EQ(fit.layers, 4);
  EXPECT_EQ(fit.minutes, 7);
  EXPECT_EQ(fit.bytes, 18);
  EXPECT_TRUE(fit.resinLeftMl);
}

// No printer is asked for what the file says alone.
TEST_F(SendTest, AFileAloneIsCheckedWithoutAPrinter) {
  EXPECT_EQ(nuv::CheckFile(PrintFile()).layers, 4);
  EXPECT_TRUE(nuv::CheckFile(File("no print file")).findings.Has(Finding::kFileDamaged));
  EXPECT_EQ(Reason([&] { nuv::CheckFile(folder / "missing"); }), Result::kBadFile);
  EXPECT_EQ(Reason([&] { nuv::CheckFile(folder); }), Result::kBadFile);
  EXPECT_EQ(Reason([&] { nuv::CheckFile(PrintFile("3DPSNKGA3WTW00001")); }), Result::kBadFile);
  EXPECT_THAT(text, HasSubstr("3DPSNKGA3WTW00001"));
  EXPECT_EQ(nuv_printer_check(nullptr, nullptr, "x", nullptr, nullptr),
            NUV_RESULT_INVALID_ARGUMENT);
  nuv_check check = NUV_INIT(nuv_check);
  for (const char* path : {static_cast<const char*>(nullptr), "", "\xFF"}) {
    EXPECT_EQ(nuv_printer_check(&check, nullptr, path, nullptr, nullptr),
              NUV_RESULT_INVALID_ARGUMENT);
  }
  SetEnvironment("NUVFILE_LIBRARY", (folder / "none").string().c_str());
  EXPECT_EQ(Reason([&] { nuv::CheckFile(PrintFile()); }), Result::kSystem);
}

// The claim is the process's: another library, with its own copy of all that is static, has it.
TEST_F(SendTest, OnePrintFileIsOpenInTheProcess) {
  Open();
  const auto file = PrintFile();
  {
    const Nuv::Platform::ProcessClaim elsewhere("print-file");
    ASSERT_TRUE(elsewhere.Held());
    EXPECT_FALSE(Nuv::Platform::ProcessClaim("print-file").Held());
    EXPECT_TRUE(Nuv::Platform::ProcessClaim("another").Held());
    EXPECT_EQ(Reason([&] { printer.Send(file); }), Result::kBusy);
    EXPECT_EQ(Reason([&] { printer.Check(file); }), Result::kBusy);
  }
  EXPECT_FALSE(WasAsked("F102"));
  Result inside = Result::kOk;
  Result onIt = Result::kOk;
  options.progress = [&](const nuv::Progress& progress) {
    if (progress.stage != Stage::kSending) return true;
    inside = Reason([&] { nuv::CheckFile(file); });
    onIt = Reason([&] { printer.GetState(); });
    return true;
  };
  EXPECT_TRUE(printer.Send(file, options));
  EXPECT_EQ(inside, Result::kBusy);
  EXPECT_EQ(onIt, Result::kBusy);
  EXPECT_EQ(printer.GetState().state, nuv::PrinterState::kPrinting);
}

TEST_F(SendTest, ACancelAbandonsTheJobOnTheSameConnection) {
  enum class By { kProgress, kAnotherThread, kTimeLimit, kThrow };
  for (const By by : {By::kProgress, By::kAnotherThread, By::kTimeLimit, By::kThrow}) {
    SCOPED_TRACE(static_cast<int>(by));
    Open();
    lines.assign(200, "G1 X1");
    nuv::Call call;
    if (by == By::kTimeLimit) call.timeLimit = std::chrono::milliseconds(1500);
    std::future<void> other;
    options.progress = [&](const nuv::Progress& progress) {
      if (progress.stage != Stage::kSending || progress.sent < 10) return true;
      if (by == By::kThrow) throw std::domain_error("mine");
      if (by == By::kAnotherThread && !other.valid()) {
        other = std::async(std::launch::async, [&] { printer.Cancel(); });
      }
      return by != By::kProgress;
    };
    const auto send = [&] { return printer.Send(PrintFile(), options, call); };
    if (by == By::kThrow) {
      EXPECT_THROW(send(), std::domain_error);
    } else {
      const Outcome outcome = send();
      EXPECT_EQ(outcome.kind, OutcomeKind::kCancelled);
      EXPECT_EQ(outcome.reason, by == By::kTimeLimit ? Result::kTimeLimit : Result::kCancelled);
      EXPECT_FALSE(outcome.mayHoldJob) << outcome.message;
      EXPECT_GE(outcome.bytesSent, 10);
      EXPECT_LT(outcome.bytesSent, 1000);
    }
    EXPECT_TRUE(WasAsked("F104 S2"));
    EXPECT_EQ(simulator->Totals().connections, 1U);
    EXPECT_EQ(printer.GetState().state, nuv::PrinterState::kIdle);
  }
}

// Where the order to abandon the job does not get through, the printer may wait for the rest.
TEST_F(SendTest, ACancelThatThePrinterDoesNotAnswerIsTold) {
  lines.assign(50, "G1 X1");
  const struct {
    const char* fault;
    bool mayHold;
  } rows[] = {{"silent,code=104", true},
              {"silent,code=103", false},
              {"late,code=117,skip=1,ms=60000", true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.fault);
    Open();
    Commits(row.fault);
    endsAt = 20;
    nuv::Call call;
    call.timeLimit = std::chrono::seconds(2);
    const Outcome outcome = printer.Send(PrintFile(), options, call);
    EXPECT_EQ(outcome.kind, OutcomeKind::kCancelled) << outcome.message;
    EXPECT_TRUE(Becomes([&] { return WasAsked("F104 S2"); }));
    EXPECT_EQ(outcome.mayHoldJob, row.mayHold);
    simulator->ClearFaults(0);
    printer.AbandonJob();
    EXPECT_EQ(printer.GetState().state, nuv::PrinterState::kIdle);
  }
  Open("Zafel Superfine", uint64_t{1} << 30);
  endsAt.reset();
  lines.assign(3, std::string(size_t{4} << 20, 'x'));
  Commits("stall,code=103,bytes=100000");
  nuv::Call call;
  call.timeLimit = std::chrono::seconds(2);
  const Outcome outcome = printer.Send(PrintFile(), options, call);
  EXPECT_EQ(outcome.kind, OutcomeKind::kCancelled) << outcome.message;
  EXPECT_TRUE(outcome.mayHoldJob) << "in the middle of a line nothing can be said";
}

// Often enough to be seen, and not with each question.
TEST_F(SendTest, WaitingForThePrinterIsTold) {
  Open("Zafel Superfine", 30);
  lines.assign(4, std::string(26, 'x'));
  Commits("buffer-full,code=117,skip=2,count=15");
  EXPECT_TRUE(printer.Send(PrintFile(), options));
  EXPECT_GE(told, 2);
  EXPECT_LE(told, 6);
  EXPECT_THAT(stages, ::testing::IsSupersetOf({Stage::kSending, Stage::kWaiting}));
}

TEST_F(SendTest, APrinterThatDoesNotConfirmIsNotBelieved) {
  Open();
  Commits("silent,code=157,skip=1,count=-1");
  nuv::Call call;
  call.timeLimit = std::chrono::seconds(2);
  Outcome outcome = printer.Send(PrintFile(), options, call);
  EXPECT_EQ(outcome.kind, OutcomeKind::kUnconfirmed) << outcome.message;
  EXPECT_EQ(outcome.reason, Result::kUnconfirmed);
  EXPECT_TRUE(outcome.mayHoldJob);
  Open();
  Commits("bad-number,code=157,field=I,skip=1,count=-1");
  outcome = printer.Send(PrintFile(), options);
  EXPECT_EQ(outcome.kind, OutcomeKind::kUnconfirmed) << outcome.message;
  EXPECT_TRUE(outcome.mayHoldJob);
  // One that keeps no count of jobs, and does not print.
  Open();
  Commits("refuse,code=157,count=-1");
  Commits("answer,code=102,skip=2,count=-1,text=F102 OK S:0");
  outcome = printer.Send(PrintFile(), options, call);
  EXPECT_EQ(outcome.kind, OutcomeKind::kUnconfirmed) << "it is still asked now and then";
  Open();
  Commits("refuse,code=157,count=-1");
  Commits("answer,code=102,skip=2,count=-1,text=F102 OK S:0");
  outcome = printer.Send(PrintFile(), options);
  EXPECT_EQ(outcome.kind, OutcomeKind::kRefused);
  EXPECT_THAT(outcome.message, HasSubstr("it does not print"));
}

TEST_F(SendTest, WhatThePrinterHasOfALostJobIsAsked) {
  lines.assign(8, "G1 X1");
  const struct {
    const char* fault;
    OutcomeKind kind;
    Result reason;
    bool mayHold;
    const char* words;
  } rows[] = {
      {"drop-after,code=103,bytes=70", OutcomeKind::kAccepted, Result::kOk, false, "as job 1"},
      {"drop-after,code=103,bytes=30", OutcomeKind::kUnconfirmed, Result::kLost, true,
       "of 40 bytes"},
      {"gone-after,code=103,bytes=30", OutcomeKind::kUnconfirmed, Result::kUnconfirmed, true,
       "not known"},
      {"refuse,code=103", OutcomeKind::kRefused, Result::kRefused, false, "refused to open"},
      {"buffer-full,code=117", OutcomeKind::kRefused, Result::kRefused, true, "no memory free"},
      {"drop,code=103,count=-1", OutcomeKind::kUnconfirmed, Result::kLost, true, "0 of 40 bytes"},
      {"drop-after,code=102,skip=1,bytes=3", OutcomeKind::kUnconfirmed, Result::kLost, false,
       "last job is still number 0"},
      {"bad-number,code=117,field=S,count=-1", OutcomeKind::kUnconfirmed, Result::kUnreadable, true,
       "117"},
      {"answer,code=157,text=F157 OK I0 S40,count=-1", OutcomeKind::kRefused, Result::kRefused,
       false, "did not take the job: its last job is still number 0"},
      {"answer,code=157,text=F157 OK I7 S5,skip=1,count=-1", OutcomeKind::kRefused,
       Result::kRefused, true, "its job 7 has 5 of 40 bytes"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.fault);
    Open();
    Commits(row.fault);
    const Outcome outcome = printer.Send(PrintFile(), options);
    EXPECT_EQ(outcome.kind, row.kind) << outcome.message;
    EXPECT_EQ(outcome.reason, row.reason);
    EXPECT_EQ(outcome.mayHoldJob, row.mayHold);
    EXPECT_THAT(outcome.message, HasSubstr(row.words));
    if (outcome) {
      EXPECT_EQ(outcome.bytesSent, 40);
    }
  }
  Open();
  Commits("drop,code=102");
  EXPECT_EQ(Reason([&] { printer.Send(PrintFile()); }), Result::kLost) << "nothing was sent";
}

TEST_F(SendTest, CommandTextIsSentButNeverConfirmed) {
  for (const char* model : {"Zafel Superfine", "Fabrix150 xP"}) {
    Open(model);
    const Outcome outcome = printer.SendText(File("G28\n\nG1 X1\r\n"), options);
    EXPECT_EQ(outcome.kind, OutcomeKind::kSent) << outcome.message;
    EXPECT_EQ(outcome.bytesSent, 8);
    EXPECT_TRUE(Becomes([&] { return simulator->CommandText() == "G28\r\nG1 X1\r\n"; }));
    EXPECT_EQ(WasAsked("F503"), std::string(model) == "Fabrix150 xP");
    EXPECT_THAT(outcome.message, HasSubstr("do not confirm"));
    EXPECT_THAT(stages, ElementsAre(Stage::kChecking, Stage::kOpening, Stage::kSending));
  }
  endsAt = 3;
  Open();
  Outcome outcome = printer.SendText(File("G28\nG29\n"), options);
  EXPECT_EQ(outcome.kind, OutcomeKind::kCancelled);
  EXPECT_EQ(outcome.bytesSent, 3);
  EXPECT_FALSE(WasAsked("F104 S2")) << "no job is open that could be abandoned";
  simulator->SetError(0, 3);
  outcome = printer.SendText(File("G28\n"));
  EXPECT_EQ(outcome.kind, OutcomeKind::kNotFit);
  simulator->ClearError(0);
  EXPECT_EQ(Reason([&] { printer.SendText(folder / "missing"); }), Result::kBadFile);
  Commits("drop-after,code=117,bytes=4");
  endsAt.reset();
  outcome = printer.SendText(File("G28\nG29\nG30\nG31\n"), options);
  EXPECT_EQ(outcome.kind, OutcomeKind::kUnconfirmed);
  EXPECT_EQ(outcome.reason, Result::kUnconfirmed) << "the printer may have all of it";
  EXPECT_FALSE(outcome.mayHoldJob);
}

TEST_F(SendTest, FirmwareOfEachPart) {
  const std::string image(21504, '\0');
  const struct {
    nuv::Part part;
    const char* item;
    OutcomeKind kind;
    const char* words;
    const char* refusing;
  } rows[] = {
      {nuv::Part::kEngine, "engine", OutcomeKind::kSent, "do not confirm", "refuse,code=141"},
      {nuv::Part::kAndroidBoard, "android", OutcomeKind::kAccepted, "upgrades", "refuse,code=507"},
      {nuv::Part::kLcmPanel, "panel", OutcomeKind::kAccepted, "", "refuse,code=189"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.item);
    Open("Fabrix150 xP");
    Outcome outcome = printer.Update(row.part, File(image), options);
    EXPECT_EQ(outcome.kind, row.kind) << outcome.message;
    EXPECT_EQ(outcome.bytesSent, 21504);
    EXPECT_THAT(outcome.message, HasSubstr(row.words));
    EXPECT_TRUE(Becomes([&] { return simulator->ReceivedBytes(row.item) == image; }));
    std::vector<Stage> all{Stage::kChecking, Stage::kOpening, Stage::kSending, Stage::kConfirming};
    if (row.part == nuv::Part::kEngine) all.pop_back();
    EXPECT_EQ(stages, all);
    EXPECT_EQ(total, 21504);
    if (row.part == nuv::Part::kAndroidBoard) {
      EXPECT_THAT(simulator->Requests(), Contains(StartsWith("F506 S1 ")));
      options.androidKind = 3;
      EXPECT_TRUE(printer.Update(row.part, File(image), options));
      EXPECT_THAT(simulator->Requests(), Contains(StartsWith("F506 S3 ")));
    }
    Commits(row.refusing);
    outcome = printer.Update(row.part, File(image), options);
    EXPECT_EQ(outcome.kind, OutcomeKind::kRefused) << outcome.message;
    if (row.part != nuv::Part::kEngine) {
      Commits(std::string(row.refusing).replace(0, 6, "answer") + ",text=Fx OK");
      outcome = printer.Update(row.part, File(image), options);
      EXPECT_EQ(outcome.kind, OutcomeKind::kUnconfirmed) << outcome.message;
    }
    endsAt = 10232;
    outcome = printer.Update(row.part, File(image), options);
    EXPECT_EQ(outcome.kind, OutcomeKind::kCancelled) << outcome.message;
    EXPECT_EQ(printer.GetState().state, nuv::PrinterState::kIdle);
    endsAt.reset();
  }
  Open();
  Commits("reset-after,code=141,bytes=9000");
  const std::string large(size_t{2} << 20, '\0');
  const Outcome outcome = printer.Update(nuv::Part::kEngine, File(large), options);
  EXPECT_EQ(outcome.kind, OutcomeKind::kUnconfirmed);
  EXPECT_EQ(outcome.reason, Result::kLost);
  EXPECT_LT(outcome.bytesSent, 2 << 20) << "ends at the first block on a lost connection";
  EXPECT_EQ(Reason([&] { printer.Update(nuv::Part::kEngine, folder); }), Result::kBadFile);
  simulator->SetError(0, 5);
  EXPECT_EQ(printer.Update(nuv::Part::kEngine, File(image)).kind, OutcomeKind::kNotFit);
  EXPECT_EQ(Reason([&] { printer.Update(static_cast<nuv::Part>(4), File(image)); }),
            Result::kInvalidArgument);
}

TEST_F(SendTest, WhatIsNoImageIsAFinding) {
  Open("Fabrix150 xP");
  const auto bytes = [](const char* head, size_t size) {
    std::string image(size, '\0');
    return image.replace(0, std::strlen(head), head);
  };
  const struct {
    std::string image;
    nuv::Part part;
    int32_t findings;
  } rows[] = {
      {"", nuv::Part::kEngine, NUV_FINDING_NO_IMAGE},
      {"hello\n", nuv::Part::kAndroidBoard, NUV_FINDING_NO_IMAGE},
      {"\x89PNG", nuv::Part::kEngine, NUV_FINDING_NO_IMAGE},
      {"%PDF-1.7\n\xE4", nuv::Part::kAndroidBoard, NUV_FINDING_NO_IMAGE},
      {"Sx\n", nuv::Part::kEngine, NUV_FINDING_NO_IMAGE},
      {"S:\n", nuv::Part::kEngine, NUV_FINDING_NO_IMAGE},
      {"S \n", nuv::Part::kEngine, NUV_FINDING_NO_IMAGE},
      {"S", nuv::Part::kEngine, NUV_FINDING_NO_IMAGE},
      {"T0\n", nuv::Part::kEngine, NUV_FINDING_NO_IMAGE},
      {std::string("\0\0\0", 3), nuv::Part::kLcmPanel, NUV_FINDING_IMAGE_WRONG_SIZE},
      {bytes("\xFF\xD8\xFF", 21505), nuv::Part::kLcmPanel,
       NUV_FINDING_NO_IMAGE | NUV_FINDING_IMAGE_WRONG_SIZE},
      {":10010000214601360121470136007EFE09D2190140\n", nuv::Part::kEngine, 0},
      {"S00600004844521B\n", nuv::Part::kEngine, 0},
      {std::string(64, '\xFF'), nuv::Part::kEngine, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.image.substr(0, 8));
    const Outcome outcome = printer.Update(row.part, File(row.image));
    EXPECT_EQ(outcome.findings.bits, row.findings) << outcome.message;
    EXPECT_EQ(outcome.kind == OutcomeKind::kNotFit, row.findings != 0);
    options.accept = Findings(0x7FFFFFFF);
    if (row.part == nuv::Part::kLcmPanel) {
      EXPECT_EQ(printer.Update(row.part, File(row.image), options).kind, OutcomeKind::kNotFit);
    }
  }
  // Firmware of the Android board is an archive itself.
  for (const std::string& archive : {std::string("PK\x03\x04"), std::string("\x1F\x8B"),
                                     std::string("\xFD"
                                                 "7zXZ"),
                                     std::string("BZh"), std::string("7z\xBC\xAF"),
                                     std::string("Rar!"), bytes("", 257) + "ustar"}) {
    const auto file = File(archive + std::string(16, '\0'));
    EXPECT_EQ(printer.Update(nuv::Part::kEngine, file).findings.bits, NUV_FINDING_NO_IMAGE);
    EXPECT_TRUE(printer.Update(nuv::Part::kAndroidBoard, file));
  }
  EXPECT_TRUE(printer.Update(nuv::Part::kEngine, File("hello\n"), options));
  auto file = PrintFile();
  EXPECT_TRUE(printer.Update(nuv::Part::kEngine, file).findings.Has(Finding::kNoImage));
}

}  // namespace

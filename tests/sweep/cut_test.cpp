// Print files of every family and command text, the connection cut behind every byte of the stream:
// nobody says that a job was sent unless the printer has all of it, and the next one arrives.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "job/nuv_file_library.h"
#include "printer/fitness.h"
#include "printer/sending.h"
#include "tests/connect/job_lab.h"
#include "tests/connect/scripted_connector.h"
#include "tests/nuvsim/usbip_client.h"

namespace Nuv::Connect {
namespace {

using ::testing::AnyOf;
using ::testing::StartsWith;

struct Family {
  const char* name;
  const char* model;
  const char* machineId;  // empty: command text
  Strings header;         // what the printer takes besides lines, in order
};

const Family kZafel = {"Zafel", "Zafel Superfine", "3DPSNKG53WTW00001", {}};
const Family kBego = {"Bego", "BEGO VARSEO XS", "3DPSNKGB3WTW00001", {"key", "L102", "L103"}};
const Family kAndroid = {
    "Android", "Fabrix150 xP", "3DPSNKGC3WTW00001", {"thumbnail", "L101", "L102", "L103"}};
const Family kCommands = {"Commands", "Zafel Superfine", "", {}};

// How often the connection is cut; ForEver: and none is accepted any more.
enum class Cuts { kOnce, kForEver, kEachTime };
enum class Host { kOverTcp, kOverUsb, kPrinterOverUsb };
using Case = std::tuple<const Family*, int, Cuts, Host>;  // the number: bytes of buffer

std::string NameOf(const ::testing::TestParamInfo<Case>& info) {
  constexpr const char* kCuts[] = {"Once", "ForEver", "EachTime"};
  constexpr const char* kHosts[] = {"Tcp", "Usb", "Printer"};
  const auto& [family, buffer, cuts, host] = info.param;
  return std::string(family->name) + std::to_string(buffer) + kCuts[static_cast<int>(cuts)] +
         kHosts[static_cast<int>(host)];
}

std::string Payload(const std::string& part) {
  return part == "key" ? std::string(32, '\x80') : "of " + part;
}
std::vector<uint8_t> BytesOf(const std::string& part) {
  const std::string payload = Payload(part);
  return {payload.begin(), payload.end()};
}

struct Job {
  Strings lines;
  std::filesystem::path path;
  std::string data;  // the lines as they go over the wire

  size_t BytesOf(size_t count) const {
    size_t end = 0;
    for (; count > 0; --count) end = data.find('\n', end) + 1;
    return end;
  }
};

// The callbacks of the library carry no argument of the host's.
struct Transfer {
  std::function<void()> onStart;
  size_t lines = 0;  // sent
  int asked = 0;     // whether to cancel
};
Transfer g_transfer;
constexpr int kMostPasses = 50;
constexpr std::chrono::milliseconds kUnderWay(10);

class CutTest : public JobLab, public ::testing::WithParamInterface<Case> {
 protected:
  void SetUp() override {
    JobLab::SetUp();
    if (IsSkipped()) return;
    contents.machineId = family.machineId;
    contents.aesKey = BytesOf("key");
    contents.preview = BytesOf("thumbnail");
    contents.l101 = NuvFile::FrameRecord("L101", BytesOf("L101"));
    contents.l102 = NuvFile::FrameRecord("L102", BytesOf("L102"));
    contents.l103 = NuvFile::FrameRecord("L103", BytesOf("L103"));
    Write(job, "a");
    Write(next, "b");
    // The simulator drains its buffer in the pauses of the transfer.
    NuvSim::SimulatorConfig config;
    config.clock = [this] { return std::chrono::steady_clock::time_point(clock.Now()); };
    config.usbipPort = 0;
    auto printer = Printer("A1", family.model);
    printer.bufferBytes = static_cast<uint64_t>(std::get<1>(GetParam()));
    printer.drainRate = 200;
    Start({printer}, config);
    AttachUsb();
    RegisterCallbacks();
    clock.meanwhile = [this] { Settle(); };
    clock.waitsPass = true;
    // Its idle connections are let go by the system's clock, which must not get there.
    clock.Advance(std::chrono::hours(1000000));
    ListAll(host);
    EXPECT_EQ(host.GetDeviceList(NUV_KIND_USB, serials, 0), NUV_OK);
  }
  void TearDown() override {
    clock.meanwhile = nullptr;
    g_transfer = Transfer();
  }

  void Write(Job& each, const char* name) {
    const auto folder =
        std::filesystem::path(::testing::TempDir()) / ("cut" + NameOf({GetParam(), 0}));
    std::filesystem::create_directories(folder);
    each.path = folder / name;
    for (const std::string& line : each.lines) {
      if (!line.empty() || !IsCommands()) each.data += line + "\r\n";
    }
    if (IsCommands()) {
      std::ofstream(each.path, std::ios::binary) << each.data;
    } else {
      const auto text = NuvFile::LinesOf(each.lines);
      ASSERT_TRUE(NuvFile::WritePrintFile(each.path.string(), contents, text).Ok());
    }
  }

  // The printer on its USB, as the system's connector shows it.
  void AttachUsb() {
    port.printers = {{"A1"}};
    port.onOpen = [this] {
      usb.reset();
      Becomes([this] { return !simulator->Status().attached; });
      usb = std::make_unique<NuvSim::UsbipClient>(simulator->UsbipPort());
      EXPECT_EQ(usb->Import(simulator->UsbBusId()), 0U);
      port.writeStatus = 0;
    };
    port.onWrite = [this](const std::string& bytes) {
      if (bytes == "F101\r\n") return;  // the script answers it
      // The transfer that was cut counts as written, as the system's driver has it.
      port.writeStatus = port.look == LinkState::kEnded ? kNotOpen : 0;
      if (port.writeStatus != 0) return;
      usb->Write(bytes);
      usb->Next();
      // The answer to a whole command comes before the end.
      if (bytes[0] != 'F') Settle();
    };
    port.onRead = [this] {
      if (!port.blocks.empty() || port.look == LinkState::kEnded) return;
      usb->Read(kReadBytes);
      const NuvSim::UsbipReply reply = usb->Next();
      if (reply.command == 3) port.blocks.push_back(reply.data);
      Settle();
    };
  }

  void RegisterCallbacks() {
    host.RegisterSendDataStartCallback([] {
      if (g_transfer.onStart) g_transfer.onStart();
    });
    host.RegisterSendDataUpdateCallback([](int, int) { ++g_transfer.lines; });
    host.RegisterSendDataCancelCallback([] { return ++g_transfer.asked > kMostPasses; });
  }

  bool IsCommands() const { return family.machineId[0] == '\0'; }
  NuvSim::Counters Totals() const { return simulator->Totals(); }
  bool WasCut() const { return Totals().faultsApplied > before.faultsApplied; }
  bool WasAccepted() const { return IsCommands() || Totals().jobsAccepted > before.jobsAccepted; }

  // Lasts until the printer has taken what was sent, or has ended the connection.
  void Settle() {
    const auto taken = [this] {
      return DataOnPrinter().size() >= current->BytesOf(g_transfer.lines);
    };
    NuvSim::Counters now;  // the cuts and the ends of one moment
    EXPECT_TRUE(Becomes([&] {
      const bool all = taken();  // before the cuts: one may come with the last byte
      now = Totals();
      const uint64_t cut = now.faultsApplied - before.faultsApplied;
      return now.connectionsEnded - before.connectionsEnded >= cut && (all || cut > 0);
    }));
    if (cuts == Cuts::kEachTime && WasCut()) {
      // What went out behind a cut ends in another cut, is taken, or was lost before: of the last
      // nothing tells, so there is nothing to wait for but a moment.
      const auto ended = [&] { return Totals().connectionsEnded > now.connectionsEnded; };
      simulator->WaitUntil([&] { return ended() || taken(); }, kUnderWay);
    }
    const NuvSim::PrinterStatus status = simulator->Status();
    port.look = status.attached ? LinkState::kAlive : LinkState::kEnded;
    port.printers[0].opens = status.plugged;
  }

  std::string DataOnPrinter() const {
    if (IsCommands()) return simulator->CommandText().substr(textBefore);
    return WasAccepted() ? simulator->JobBytes() : std::string();
  }
  bool HasAll() const {
    std::vector<std::string> parts;
    const std::vector<NuvSim::ReceivedItem> items = simulator->Received();
    for (size_t i = itemsBefore; i < items.size(); ++i) {
      if (items[i].complete && simulator->ReceivedBytes(items[i].kind) == Payload(items[i].kind)) {
        parts.push_back(items[i].kind);
      }
    }
    return parts == family.header && Counted(DataOnPrinter()) == Counted(current->data);
  }
  // The second library goes by the printer's count, which leaves line ends out: that of the last
  // line may lack.
  std::string Counted(std::string data) const {
    if (way == Host::kPrinterOverUsb) data.erase(data.find_last_not_of("\r\n") + 1);
    return data;
  }

  int Send(const Job& each) {
    clock.Advance(std::chrono::seconds(1));
    current = &each;
    before = Totals();
    itemsBefore = simulator->Received().size();
    textBefore = simulator->CommandText().size();
    g_transfer.lines = 0;
    g_transfer.asked = 0;
    const int result = way == Host::kPrinterOverUsb ? SendByPrinter() : SendByLibrary();
    Settle();
    return result;
  }
  int SendByLibrary() {
    const NuvDeviceKind kind = way == Host::kOverTcp ? NUV_KIND_NETWORK : NUV_KIND_USB;
    EXPECT_EQ(host.ChooseDevice(kind, 0), NUV_OK);
    const std::wstring file = current->path.wstring();
    return IsCommands() ? host.SendGCodeFile(file, nullptr) : host.SendPrintFile(file, nullptr);
  }
  // As the second library does it, which tells afterwards what the printer has. 0: accepted.
  int SendByPrinter() {
    outcome = NUV_INIT(nuv_outcome);
    OnPrinter([&](Nuv::Printer::Session& session, Nuv::Printer::CallLimits& limits) {
      NuvFileLibrary library;
      OpenPrintFile open(library);
      nuv_check check = NUV_INIT(nuv_check);
      Nuv::Printer::Findings findings;
      Nuv::Printer::LookAtFile({current->path.wstring(), "job"}, open, library, check, findings);
      Nuv::Printer::Transfer transfer(nullptr, limits, clock);
      Nuv::Printer::SendPrintFile(session, open, library, transfer, outcome);
    });
    return outcome.outcome == NUV_OUTCOME_ACCEPTED ? NUV_OK : NUV_FAILED;
  }
  template <class Call>
  void OnPrinter(Call call) {
    nuv_identity where = NUV_INIT(nuv_identity);
    where.link = NUV_LINK_USB;
    where.address = Nuv::Printer::Text("/dev/usb/lp0\\1");
    const auto device = std::make_shared<Nuv::Printer::Device>(
        where, clock, [this] { return std::make_unique<ScriptedConnector>(port); });
    Nuv::Printer::CallLimits limits(nullptr, 0, clock);
    try {
      Nuv::Printer::Session session(device, limits);
      call(session, limits);
    } catch (const Nuv::Printer::Failure& failure) {
      why = failure.message;
    }
    device->End();
  }

  void Arm(size_t bytes) {
    static constexpr const char* kFaults[] = {"drop-after", "gone-after", "drop-after,count=-1"};
    const auto arm = [this, bytes] {
      Commits(kFaults[static_cast<int>(cuts)] + (",bytes=" + std::to_string(bytes)));
    };
    // A printer that cuts each time must first let the job begin.
    g_transfer.onStart = cuts == Cuts::kEachTime ? std::function<void()>(arm) : nullptr;
    if (!g_transfer.onStart) arm();
  }
  void Disarm() {
    g_transfer.onStart = nullptr;
    simulator->ClearFaults(0);
    simulator->Replug(0);
    port.printers[0].opens = true;
  }

  void JudgeCut(int result) {
    EXPECT_THAT(current->data, StartsWith(DataOnPrinter()));
    if (result == NUV_OK) {
      // The second library may have asked, and been answered, before the cut.
      EXPECT_TRUE(cuts != Cuts::kForEver || way == Host::kPrinterOverUsb);
      const bool cancelled = g_transfer.asked > kMostPasses;
      cancels += cancelled ? 1 : 0;
      // Its answer comes behind all that was sent; the second library has asked by itself.
      int status = 0;
      if (way != Host::kPrinterOverUsb) host.GetPrinterStatus(&status);
      EXPECT_TRUE(cancelled || HasAll());
      if (way == Host::kPrinterOverUsb) {
        EXPECT_TRUE(WasAccepted());
        EXPECT_EQ(outcome.job_index.value, simulator->Jobs().back().index);
      }
    } else if (way != Host::kPrinterOverUsb && (WasAccepted() || result != NUV_FAILED)) {
      EXPECT_THAT(result, AnyOf(NUV_NO_BUFFER_SPACE, NUV_WRITE_FAILED));
    }
  }

  // A job that is left open keeps the next one out until it is abandoned.
  void SendNext() {
    if (simulator->Status().state == NuvSim::State::kReceiving) {
      const std::string left = simulator->JobBytes();
      const int result = Send(next);
      EXPECT_TRUE(way == Host::kPrinterOverUsb ? result != 0 : result == NUV_PRINTER_REFUSED);
      EXPECT_EQ(simulator->JobBytes(), left);
      if (way == Host::kPrinterOverUsb) {
        bool abandoned = false;
        OnPrinter([&](Nuv::Printer::Session& session, Nuv::Printer::CallLimits&) {
          session.Run(104, {"2"});
          abandoned = true;
        });
        EXPECT_TRUE(abandoned);
      } else {
        EXPECT_EQ(host.GetConnect()->ExecuteCommand("F104 S2\r\n"), "F104 OK\r");
      }
    }
    EXPECT_EQ(Send(next), NUV_OK);
    EXPECT_TRUE(HasAll());
  }

  const Family& family = *std::get<0>(GetParam());
  const Cuts cuts = std::get<2>(GetParam());
  const Host way = std::get<3>(GetParam());
  Job job{{"G1 X1", "", "G1 X2 Y3", "G28"}, {}, {}};
  Job next{{"G2 A4", "G2 A5 B6"}, {}, {}};
  Port port;
  ConnectingFramework host{clock, kReplyTimeoutMs, std::make_unique<ScriptedConnector>(port)};
  std::unique_ptr<NuvSim::UsbipClient> usb;
  nuv_outcome outcome = NUV_INIT(nuv_outcome);  // of the second library
  std::string why;                              // that failed last
  int cancels = 0;
  // Of the job under way: what was on the printer before.
  const Job* current = &job;
  NuvSim::Counters before;
  size_t itemsBefore = 0;
  size_t textBefore = 0;
};

TEST_P(CutTest, NobodySaysSentUnlessThePrinterHasAll) {
  // The first requests behind the start are the ones that a job is cancelled in.
  size_t cut = cuts == Cuts::kEachTime ? 1 : 1 + static_cast<size_t>(family.name[0]) % NUV_CUT_STEP;
  for (;; cut += NUV_CUT_STEP) {
    SCOPED_TRACE("cut after " + std::to_string(cut));
    Arm(cut);
    const int result = Send(job);
    const bool wasCut = WasCut();
    if (wasCut) {
      JudgeCut(result);
    } else {
      EXPECT_EQ(result, NUV_OK) << why;
      EXPECT_TRUE(HasAll());
    }
    Disarm();
    SendNext();
    ASSERT_FALSE(HasFailure());
    if (!wasCut) break;
  }
  EXPECT_GT(cut, job.data.size());
  // An Android job has bytes on the connection then, which a cut loses.
  EXPECT_EQ(cancels > 0, cuts == Cuts::kEachTime && &family != &kAndroid);
  RecordProperty("bytes", static_cast<int>(cut));
}

constexpr int kAmple = 65536;
constexpr int kSmall = 12;

INSTANTIATE_TEST_SUITE_P(Library, CutTest,
                         ::testing::Combine(::testing::Values(&kZafel, &kBego, &kAndroid,
                                                              &kCommands),
                                            ::testing::Values(kAmple, kSmall),
                                            ::testing::Values(Cuts::kOnce, Cuts::kForEver),
                                            ::testing::Values(Host::kOverTcp, Host::kOverUsb)),
                         NameOf);
INSTANTIATE_TEST_SUITE_P(
    AgainAndAgain, CutTest,
    ::testing::Combine(::testing::Values(&kZafel, &kBego, &kAndroid, &kCommands),
                       ::testing::Values(kAmple, kSmall), ::testing::Values(Cuts::kEachTime),
                       ::testing::Values(Host::kOverTcp)),
    NameOf);
INSTANTIATE_TEST_SUITE_P(Printer, CutTest,
                         ::testing::Combine(::testing::Values(&kZafel, &kBego, &kAndroid),
                                            ::testing::Values(kAmple),
                                            ::testing::Values(Cuts::kOnce, Cuts::kForEver),
                                            ::testing::Values(Host::kPrinterOverUsb)),
                         NameOf);

}  // namespace
}  // namespace Nuv::Connect

#include <QDir>
#include <QFileInfo>
#include <QHostInfo>
#include <QNetworkInterface>
#include <QTemporaryFile>
#include <QUdpSocket>
#include <algorithm>

#include "commands/commands.h"
#include "error.h"
#include "utf8.h"

namespace NuvCtl {
namespace {

constexpr quint16 kSearchPort = 6013;

enum class Verdict { kOk, kNote, kProblem };

// What was looked at, what was seen, and what to do.
class Findings {
 public:
  void Add(Verdict verdict, const std::string& what, const std::string& seen,
           const std::string& advice = "") {
    constexpr const char* kWords[] = {"ok", "note", "problem"};
    const char* const word = kWords[static_cast<int>(verdict)];
    problems_ += verdict == Verdict::kProblem ? 1 : 0;
    text_ += word + std::string(9 - std::string(word).size(), ' ') + what + ": " + Printable(seen);
    text_ += advice.empty() ? "\n" : "\n         " + advice + '\n';
    json_.push_back({{"verdict", word}, {"what", what}, {"seen", seen}, {"advice", advice}});
  }
  int Problems() const { return problems_; }
  Report Finish() const { return {text_, {{"findings", json_}}}; }

 private:
  std::string text_;
  nlohmann::ordered_json json_ = nlohmann::ordered_json::array();
  int problems_ = 0;
};

void LookAtNetworks(Findings& findings) {
  std::string networks;
  for (const QNetworkInterface& interface : QNetworkInterface::allInterfaces()) {
    if (!interface.flags().testFlag(QNetworkInterface::IsRunning)) continue;
    for (const QNetworkAddressEntry& entry : interface.addressEntries()) {
      if (entry.ip().protocol() != QAbstractSocket::IPv4Protocol || entry.ip().isLoopback())
        continue;
      networks += (networks.empty() ? "" : "; ") + entry.ip().toString().toStdString() + " on " +
                  interface.name().toStdString() + ", broadcast " +
                  entry.broadcast().toString().toStdString();
    }
  }
  if (!networks.empty()) return findings.Add(Verdict::kOk, "networks", networks);
  findings.Add(Verdict::kProblem, "networks", "none",
               "Connect this computer to the printers' network; printers on USB need none.");
}

// The networks that a search asks are those of the addresses that the host's name stands for.
void LookAtHostName(Findings& findings) {
  const QString name = QHostInfo::localHostName();
  std::string addresses;
  bool outside = false;
  for (const QHostAddress& address : QHostInfo::fromName(name).addresses()) {
    if (address.protocol() != QAbstractSocket::IPv4Protocol) continue;
    addresses += ' ' + address.toString().toStdString();
    outside = outside || !address.isLoopback();
  }
  const std::string seen =
      name.toStdString() + (addresses.empty() ? " is unknown" : " is" + addresses);
  if (outside || !addresses.empty()) {
    return findings.Add(outside ? Verdict::kOk : Verdict::kNote, "host name", seen,
                        outside ? ""
                                : "It means this computer alone; searches then ask all "
                                  "networks that it has.");
  }
  findings.Add(Verdict::kNote, "host name", seen,
               "Put it into the hosts file, when searches fail.");
}

void LookAtSearchPort(const Choice& choice, Findings& findings) {
  const auto port = static_cast<quint16>(choice.port.value_or(kSearchPort));
  QUdpSocket socket;
  const bool free = socket.bind(QHostAddress::AnyIPv4, port,
                                QUdpSocket::ShareAddress | QUdpSocket::ReuseAddressHint);
  const std::string seen = "UDP port " + std::to_string(port) + (free ? " is free" : " is taken");
  if (free) return findings.Add(Verdict::kOk, "search", seen);
  findings.Add(Verdict::kProblem, "search", seen, "End the program that has it; searches need it.");
}

void LookForPrinters(const Context& context, Findings& findings) {
  constexpr std::chrono::milliseconds kLimit(3000);
  nuv::SearchOptions options;
  options.addressesOnly = true;
  options.udpPort = context.choice.port.value_or(0);
  nuv::Call call = context.Endless();
  call.timeLimit = std::min(kLimit, std::chrono::milliseconds(context.choice.timeoutMs));
  const size_t found = Asked("Searching", [&] { return nuv::Find(options, call); }).size();
  const std::string seen =
      std::to_string(found) + (found == 1 ? " printer" : " printers") + " found";
  if (found > 0) return findings.Add(Verdict::kOk, "printers", seen);
  findings.Add(Verdict::kProblem, "printers", seen,
               "Check that one is on and in a network above. A firewall must let UDP port " +
                   std::to_string(context.choice.port.value_or(kSearchPort)) +
                   " in and out; a printer behind a router is found by --address only.");
}

#ifdef Q_OS_LINUX
bool HasRule() {
  for (const char* folder : {"/etc/udev/rules.d", "/usr/lib/udev/rules.d", "/lib/udev/rules.d"}) {
    if (!QDir(folder).entryList({"*nuvconnect5*"}, QDir::Files).isEmpty()) return true;
  }
  return false;
}

void LookAtUsb(Findings& findings) {
  const bool driver = QFileInfo::exists("/sys/module/usblp");
  findings.Add(driver ? Verdict::kOk : Verdict::kNote, "USB driver",
               driver ? "usblp is loaded" : "usblp is not loaded",
               driver ? "" : "For printers on USB: sudo modprobe usblp");
  const bool rule = HasRule();
  findings.Add(rule ? Verdict::kOk : Verdict::kNote, "udev rule",
               rule ? "installed" : "not installed",
               rule ? "" : "For printers on USB: see the README, under \"Printers on USB\".");
  const QDir nodes("/dev/usb");
  for (const QString& node : nodes.entryList({"lp*"}, QDir::System)) {
    const QFileInfo file(nodes.filePath(node));
    const bool usable = file.isReadable() && file.isWritable();
    findings.Add(usable ? Verdict::kOk : Verdict::kProblem, "USB port",
                 file.filePath().toStdString() + (usable ? " can be opened" : " cannot be opened"),
                 usable ? "" : "Install the udev rule, or join the group lp.");
  }
}
#else
void LookAtUsb(Findings&) {}
#endif

void LookAtLibraries(Findings& findings) {
  const uint32_t version = nuv_version();
  findings.Add(Verdict::kOk, "libnuvprinter",
               std::to_string(version / 10000) + '.' + std::to_string(version / 100 % 100) + '.' +
                   std::to_string(version % 100));
  bool there = true;
  try {
    QTemporaryFile file;  // no print file, which only the library can say
    file.open();
    nuv::CheckFile(std::filesystem::u8path(file.fileName().toStdString()));
  } catch (const nuv::Error& error) {
    there = error.Reason() != nuv::Result::kSystem;
  }
  findings.Add(there ? Verdict::kOk : Verdict::kProblem, "NuvFile",
               there ? "found" : "the print-file library cannot be loaded",
               there ? ""
                     : "Install it beside nuvctl, or name it in NUVFILE_LIBRARY; without it no "
                       "print file can be sent.");
}

Report RunDoctor(const Context& context) {
  Findings findings;
  LookAtLibraries(findings);
  LookAtNetworks(findings);
  LookAtHostName(findings);
  LookAtSearchPort(context.choice, findings);
  LookAtUsb(findings);
  LookForPrinters(context, findings);
  if (findings.Problems() == 0) return findings.Finish();
  CommandError error("problems", kLocalProblem,
                     std::to_string(findings.Problems()) +
                         (findings.Problems() == 1 ? " problem was found" : " problems were found"),
                     "", findings.Finish());
  error.shownIsResult = true;
  throw error;
}

}  // namespace

Subcommands DoctorCommands() {
  return {{"doctor", "Look for what keeps printers from being found", "nuvctl doctor",
           Plain<RunDoctor>}};
}

}  // namespace NuvCtl

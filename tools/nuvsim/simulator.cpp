#include "nuvsim/simulator.h"

#include <fstream>
#include <iterator>
#include <utility>

#include "nuvsim/simulator_impl.h"

namespace NuvSim {
namespace {

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace

Simulator::Simulator(SimulatorConfig config) : impl_(std::make_unique<Impl>(std::move(config))) {}
Simulator::~Simulator() = default;

void Simulator::Start() { impl_->Start(); }
void Simulator::Stop() { impl_->Stop(); }

size_t Simulator::PrinterCount() const { return impl_->printers.size(); }

const PrinterConfig& Simulator::Config(size_t printer) const {
  return impl_->commons.config.printers.at(printer);
}

uint16_t Simulator::TcpPort(size_t printer) const {
  return impl_->Observe(printer, [](const ServedPrinter& each) { return each.port; });
}

uint16_t Simulator::UsbipPort() const {
  return impl_->commons.Locked([this] { return impl_->usbipPort; });
}

std::string Simulator::UsbBusId(size_t printer) const {
  return impl_->printers.at(printer)->usbDevice.Announced().busId;
}

PrinterStatus Simulator::Status(size_t printer) const {
  return impl_->Observe(printer, [](ServedPrinter& each) {
    PrinterStatus status = each.dialogue.Status();
    status.plugged = each.plugged;
    return status;
  });
}

Counters Simulator::Totals(size_t printer) const {
  return impl_->Observe(printer, [](ServedPrinter& each) { return each.dialogue.Totals(); });
}

std::vector<std::string> Simulator::Requests(size_t printer) const {
  return impl_->Observe(printer, [](ServedPrinter& each) { return each.dialogue.Requests(); });
}

std::vector<JobRecord> Simulator::Jobs(size_t printer) const {
  return impl_->Observe(
      printer, [](ServedPrinter& each) { return each.dialogue.GetMachine().Jobs().Jobs(); });
}

std::filesystem::path Simulator::JobFile(size_t printer, int index) const {
  const std::vector<JobRecord> jobs = Jobs(printer);
  const size_t place = index == 0 ? jobs.size() : static_cast<size_t>(index);
  return jobs.at(place - 1).file;
}

std::string Simulator::JobBytes(size_t printer, int index) const {
  return ReadFile(JobFile(printer, index));
}

std::vector<ReceivedItem> Simulator::Received(size_t printer) const {
  return impl_->Observe(printer, [](ServedPrinter& each) { return each.dialogue.Received(); });
}

std::string Simulator::ReceivedBytes(const std::string& kind, size_t printer) const {
  return impl_->Observe(printer, [&kind](ServedPrinter& each) {
    const ReceivedItem* item = each.dialogue.GetMachine().GetIntake().Last(kind);
    return item == nullptr ? std::string() : ReadFile(item->file);
  });
}

std::filesystem::path Simulator::CommandFile(size_t printer) const {
  return impl_->Observe(
      printer, [](ServedPrinter& each) { return each.dialogue.GetMachine().Jobs().CommandFile(); });
}

std::string Simulator::CommandText(size_t printer) const { return ReadFile(CommandFile(printer)); }

bool Simulator::WaitUntil(const std::function<bool()>& predicate,
                          std::chrono::milliseconds timeout) const {
  return impl_->commons.events.WaitUntil(predicate, timeout);
}

void Simulator::InjectFault(size_t printer, const Fault& fault) {
  impl_->Change(printer, [&fault](Dialogue& each) { each.Faults().Add(fault); });
}

void Simulator::ClearFaults(size_t printer) { impl_->ClearFaults(printer); }

void Simulator::SetError(size_t printer, int number) {
  impl_->Change(printer, [number](Dialogue& each) { each.GetMachine().SetError(number); });
}

void Simulator::ClearError(size_t printer) {
  impl_->Change(printer, [](Dialogue& each) { each.GetMachine().ClearError(); });
}

void Simulator::SetIdle(size_t printer) {
  impl_->Change(printer, [](Dialogue& each) { each.GetMachine().SetIdle(); });
}

void Simulator::SetResinRefusal(size_t printer, std::optional<int> state) {
  impl_->Change(printer, [state](Dialogue& each) { each.GetMachine().SetResinRefusal(state); });
}

void Simulator::SetTagRegistered(size_t printer, bool isRegistered) {
  impl_->Change(printer, [=](Dialogue& each) { each.GetMachine().SetTagRegistered(isRegistered); });
}

void Simulator::SetRepositioning(size_t printer, bool isRepositioning) {
  impl_->Change(printer,
                [=](Dialogue& each) { each.GetMachine().SetRepositioning(isRepositioning); });
}

void Simulator::Unplug(size_t printer) { impl_->Unplug(printer); }
void Simulator::Replug(size_t printer) { impl_->Replug(printer); }
void Simulator::ClockChanged() { impl_->ClockChanged(); }

}  // namespace NuvSim

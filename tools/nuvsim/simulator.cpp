#include "nuvsim/simulator.h"

#include <fstream>
#include <iterator>
#include <utility>

#include "nuvsim/simulator_impl.h"

namespace nuvsim {
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

std::size_t Simulator::PrinterCount() const { return impl_->printers.size(); }

const PrinterConfig& Simulator::Config(std::size_t printer) const {
  return impl_->commons.config.printers.at(printer);
}

std::uint16_t Simulator::TcpPort(std::size_t printer) const {
  return impl_->Observe(printer, [](const ServedPrinter& each) { return each.port; });
}

std::uint16_t Simulator::UsbipPort() const {
  return impl_->commons.Locked([this] { return impl_->usbipPort; });
}

std::string Simulator::UsbBusId(std::size_t printer) const {
  return impl_->printers.at(printer)->usbDevice.Announced().busId;
}

PrinterStatus Simulator::Status(std::size_t printer) const {
  return impl_->Observe(printer, [](ServedPrinter& each) {
    PrinterStatus status = each.dialogue.Status();
    status.plugged = each.plugged;
    return status;
  });
}

Counters Simulator::Totals(std::size_t printer) const {
  return impl_->Observe(printer, [](ServedPrinter& each) { return each.dialogue.Totals(); });
}

std::vector<std::string> Simulator::Requests(std::size_t printer) const {
  return impl_->Observe(printer, [](ServedPrinter& each) { return each.dialogue.Requests(); });
}

std::vector<JobRecord> Simulator::Jobs(std::size_t printer) const {
  return impl_->Observe(
      printer, [](ServedPrinter& each) { return each.dialogue.GetMachine().Jobs().Jobs(); });
}

std::filesystem::path Simulator::JobFile(std::size_t printer, int index) const {
  const std::vector<JobRecord> jobs = Jobs(printer);
  const std::size_t place = index == 0 ? jobs.size() : static_cast<std::size_t>(index);
  return jobs.at(place - 1).file;
}

std::string Simulator::JobBytes(std::size_t printer, int index) const {
  return ReadFile(JobFile(printer, index));
}

std::vector<ReceivedItem> Simulator::Received(std::size_t printer) const {
  return impl_->Observe(printer, [](ServedPrinter& each) { return each.dialogue.Received(); });
}

std::string Simulator::ReceivedBytes(const std::string& kind, std::size_t printer) const {
  return impl_->Observe(printer, [&kind](ServedPrinter& each) {
    const ReceivedItem* item = each.dialogue.GetMachine().GetIntake().Last(kind);
    return item == nullptr ? std::string() : ReadFile(item->file);
  });
}

std::filesystem::path Simulator::CommandFile(std::size_t printer) const {
  return impl_->Observe(
      printer, [](ServedPrinter& each) { return each.dialogue.GetMachine().Jobs().CommandFile(); });
}

std::string Simulator::CommandText(std::size_t printer) const {
  return ReadFile(CommandFile(printer));
}

bool Simulator::WaitUntil(const std::function<bool()>& predicate,
                          std::chrono::milliseconds timeout) const {
  return impl_->commons.events.WaitUntil(predicate, timeout);
}

void Simulator::InjectFault(std::size_t printer, const Fault& fault) {
  impl_->Change(printer, [&fault](Dialogue& each) { each.Faults().Add(fault); });
}

void Simulator::ClearFaults(std::size_t printer) { impl_->ClearFaults(printer); }

void Simulator::SetError(std::size_t printer, int number) {
  impl_->Change(printer, [number](Dialogue& each) { each.GetMachine().SetError(number); });
}

void Simulator::ClearError(std::size_t printer) {
  impl_->Change(printer, [](Dialogue& each) { each.GetMachine().ClearError(); });
}

void Simulator::SetIdle(std::size_t printer) {
  impl_->Change(printer, [](Dialogue& each) { each.GetMachine().SetIdle(); });
}

void Simulator::SetResinRefusal(std::size_t printer, std::optional<int> state) {
  impl_->Change(printer, [state](Dialogue& each) { each.GetMachine().SetResinRefusal(state); });
}

void Simulator::SetTagRegistered(std::size_t printer, bool isRegistered) {
  impl_->Change(printer, [=](Dialogue& each) { each.GetMachine().SetTagRegistered(isRegistered); });
}

void Simulator::SetRepositioning(std::size_t printer, bool isRepositioning) {
  impl_->Change(printer,
                [=](Dialogue& each) { each.GetMachine().SetRepositioning(isRepositioning); });
}

void Simulator::Unplug(std::size_t printer) { impl_->Unplug(printer); }
void Simulator::Replug(std::size_t printer) { impl_->Replug(printer); }
void Simulator::ClockChanged() { impl_->ClockChanged(); }

}  // namespace nuvsim

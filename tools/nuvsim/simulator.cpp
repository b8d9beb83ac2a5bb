#include "nuvsim/simulator.h"

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "nuvsim/simulator_impl.h"

namespace nuvsim {
namespace {

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace

PrinterConfig LoopbackPrinter() {
  PrinterConfig config;
  config.address = "127.0.0.1";
  return config;
}

Simulator::Simulator(SimulatorConfig config) : impl_(std::make_unique<Impl>(std::move(config))) {}
Simulator::~Simulator() = default;

void Simulator::Start() { impl_->Start(); }
void Simulator::Stop() { impl_->Stop(); }

std::size_t Simulator::PrinterCount() const { return impl_->devices.size(); }

const PrinterConfig& Simulator::Config(std::size_t printer) const {
  return impl_->config.printers.at(printer);
}

std::uint16_t Simulator::TcpPort(std::size_t printer) const {
  const std::lock_guard<std::mutex> lock(impl_->stateMutex);
  return impl_->devices.at(printer)->port;
}

std::uint16_t Simulator::UsbipPort() const {
  const std::lock_guard<std::mutex> lock(impl_->stateMutex);
  return impl_->usbipPort;
}

std::string Simulator::UsbBusId(std::size_t printer) const {
  return impl_->devices.at(printer)->usbDevice.Announced().busId;
}

PrinterStatus Simulator::Status(std::size_t printer) const {
  const std::lock_guard<std::mutex> lock(impl_->stateMutex);
  Impl::Device& device = *impl_->devices.at(printer);
  PrinterStatus status = device.printer.Status();
  status.plugged = device.plugged;
  return status;
}

Counters Simulator::Totals(std::size_t printer) const {
  const std::lock_guard<std::mutex> lock(impl_->stateMutex);
  return impl_->devices.at(printer)->printer.Totals();
}

std::vector<std::string> Simulator::Requests(std::size_t printer) const {
  const std::lock_guard<std::mutex> lock(impl_->stateMutex);
  return impl_->devices.at(printer)->printer.Requests();
}

std::vector<JobRecord> Simulator::Jobs(std::size_t printer) const {
  const std::lock_guard<std::mutex> lock(impl_->stateMutex);
  return impl_->devices.at(printer)->printer.GetMachine().Jobs().Jobs();
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
  const std::lock_guard<std::mutex> lock(impl_->stateMutex);
  return impl_->devices.at(printer)->printer.Received();
}

std::string Simulator::ReceivedBytes(const std::string& kind, std::size_t printer) const {
  const std::lock_guard<std::mutex> lock(impl_->stateMutex);
  const ReceivedItem* item =
      impl_->devices.at(printer)->printer.GetMachine().GetIntake().Last(kind);
  return item == nullptr ? std::string() : ReadFile(item->file);
}

std::filesystem::path Simulator::CommandFile(std::size_t printer) const {
  const std::lock_guard<std::mutex> lock(impl_->stateMutex);
  return impl_->devices.at(printer)->printer.GetMachine().Jobs().CommandFile();
}

std::string Simulator::CommandText(std::size_t printer) const {
  return ReadFile(CommandFile(printer));
}

bool Simulator::WaitUntil(const std::function<bool()>& predicate,
                          std::chrono::milliseconds timeout) const {
  return impl_->events.WaitUntil(predicate, timeout);
}

void Simulator::InjectFault(std::size_t printer, const Fault& fault) {
  impl_->Change(printer, [&fault](Printer& each) { each.Faults().Add(fault); });
}

void Simulator::ClearFaults(std::size_t printer) { impl_->ClearFaults(printer); }

void Simulator::SetError(std::size_t printer, int number) {
  impl_->Change(printer, [number](Printer& each) { each.GetMachine().SetError(number); });
}

void Simulator::ClearError(std::size_t printer) {
  impl_->Change(printer, [](Printer& each) { each.GetMachine().ClearError(); });
}

void Simulator::SetIdle(std::size_t printer) {
  impl_->Change(printer, [](Printer& each) { each.GetMachine().SetIdle(); });
}

void Simulator::SetResinRefusal(std::size_t printer, std::optional<int> state) {
  impl_->Change(printer, [state](Printer& each) { each.GetMachine().SetResinRefusal(state); });
}

void Simulator::SetTagRegistered(std::size_t printer, bool isRegistered) {
  impl_->Change(printer, [=](Printer& each) { each.GetMachine().SetTagRegistered(isRegistered); });
}

void Simulator::SetRepositioning(std::size_t printer, bool isRepositioning) {
  impl_->Change(printer,
                [=](Printer& each) { each.GetMachine().SetRepositioning(isRepositioning); });
}

void Simulator::Unplug(std::size_t printer) { impl_->Unplug(printer); }
void Simulator::Replug(std::size_t printer) { impl_->Replug(printer); }
void Simulator::ClockChanged() { impl_->ClockChanged(); }

}  // namespace nuvsim

#include "naming.h"

#include <QHostAddress>
#include <QHostInfo>
#include <future>
#include <memory>
#include <thread>

#include "error.h"

namespace NuvCtl {

std::string HostOf(const std::string& address) { return address.substr(0, address.find(':')); }

std::string ResolveAddress(const std::string& address) {
  constexpr std::chrono::seconds kLimit(3);
  const std::string host = HostOf(address);
  const std::string port = address.substr(host.size());
  if (QHostAddress(QString::fromStdString(host)).protocol() == QAbstractSocket::IPv4Protocol) {
    return address;
  }
  // The system's own look-up knows no limit, so it is left behind when it takes too long.
  const auto told = std::make_shared<std::promise<QList<QHostAddress>>>();
  std::future<QList<QHostAddress>> answer = told->get_future();
  std::thread([told, host] {
    told->set_value(QHostInfo::fromName(QString::fromStdString(host)).addresses());
  }).detach();
  if (answer.wait_for(kLimit) != std::future_status::ready) {
    throw CommandError("no_address", kNoPrinter,
                       "The address of \"" + host + "\" could not be looked up within 3 s",
                       "Give the printer's IPv4 address, as its panel shows it.");
  }
  for (const QHostAddress& one : answer.get()) {
    if (one.protocol() == QAbstractSocket::IPv4Protocol) {
      return one.toString().toStdString() + port;
    }
  }
  throw CommandError("no_address", kNoPrinter, "No host is known by the name \"" + host + "\"",
                     "Check the name, or give the printer's IPv4 address.");
}

void Learn(const Context& context, const KnownPrinters& told) {
  if (told.empty()) return;
  try {
    ChangeKnown([&](KnownPrinters& printers) {
      for (KnownPrinter& printer : printers) {
        for (const KnownPrinter& one : told) {
          if (printer.name == one.name) printer = one;
        }
      }
    });
  } catch (const CommandError& error) {
    context.output.Remark("nuvctl: " + error.message);
  }
}

}  // namespace NuvCtl

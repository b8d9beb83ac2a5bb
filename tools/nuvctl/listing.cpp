#include "listing.h"

#include <QHostAddress>
#include <algorithm>
#include <condition_variable>
#include <deque>
#include <future>
#include <list>
#include <mutex>
#include <set>
#include <thread>
#include <tuple>

#include "known_printers.h"
#include "naming.h"
#include "progress.h"

namespace NuvCtl {
namespace {

using nuv::Identity;
using nuv::Result;

constexpr int kLongestSearchMs = 3000;
constexpr size_t kMostAddresses = 900;  // of one search
constexpr size_t kMostThreads = 32;

// Threads that do what is added, as many as are needed.
class Pool {
 public:
  ~Pool() { Finish(); }

  void Add(std::function<void()> job) {
    const std::lock_guard<std::mutex> lock(mutex_);
    jobs_.push_back(std::move(job));
    if (idle_ < jobs_.size() && threads_.size() < kMostThreads) {
      threads_.emplace_back([this] { Run(); });
    }
    changed_.notify_one();
  }

  void Finish() {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      ended_ = true;
    }
    changed_.notify_all();
    for (std::thread& thread : threads_) thread.join();
    threads_.clear();
  }

 private:
  void Run() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!jobs_.empty() || !ended_) {
      if (jobs_.empty()) {
        ++idle_;
        changed_.wait(lock);
        --idle_;
        continue;
      }
      const std::function<void()> job = std::move(jobs_.front());
      jobs_.pop_front();
      lock.unlock();
      job();
      lock.lock();
    }
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::function<void()>> jobs_;
  std::vector<std::thread> threads_;
  size_t idle_ = 0;
  bool ended_ = false;
};

CommandError NothingFound(const Choice& choice) {
  Report report;
  report.json["printers"] = nlohmann::ordered_json::array();
  if (choice.usb) {
    return CommandError("no_printer", kNoPrinter, "No printer was found on USB",
                        "Check the cable and that the printer is on; 'nuvctl doctor' looks for "
                        "what else may be wrong.",
                        report);
  }
  return CommandError("no_printer", kNoPrinter, "No printer was found",
                      "Check that the printer is on and in the same network as this computer; "
                      "'nuvctl doctor' looks for what else may be wrong.",
                      report);
}

// One search and all that is asked of those found.
class Search {
 public:
  Search(const Context& context, const Errand& errand)
      : context_(context),
        errand_(errand),
        begin_(context.system.NowMs()),
        row_(context.output.Err()),
        live_(context.system.ErrorIsTerminal() && !context.output.Json()) {}

  Listing Run() {
    if (!context_.choice.usb) known_ = LoadKnown();
    const std::vector<std::string> groups = Groups();
    std::vector<std::future<void>> others;
    for (size_t i = 1; i < groups.size(); ++i) {
      others.push_back(
          std::async(std::launch::async, [this, &groups, i] { Find(groups[i], false); }));
    }
    Find(groups.front(), true);
    for (std::future<void>& other : others) other.get();
    pool_.Finish();
    row_.Clear(context_.system.ErrorWidth());
    if (context_.system.Interrupted()) throw CommandError("cancelled", kCancelled, "Cancelled", "");
    return Sorted();
  }

 private:
  // What each search asks: the first one all networks too.
  std::vector<std::string> Groups() const {
    const std::string usual = qEnvironmentVariable("NUVCONNECT_SEARCH", "broadcast").toStdString();
    std::vector<std::string> groups{usual};
    size_t count = 0;
    for (const KnownPrinter& printer : known_) {
      if (printer.address.empty()) continue;
      if (++count % kMostAddresses == 0) groups.emplace_back();
      try {
        groups.back() += ' ' + ResolveAddress(printer.address);
      } catch (const CommandError&) {
        // It is listed as not found.
      }
    }
    return groups;
  }

  // On one thread for each group; the first is the caller's.
  void Find(const std::string& addresses, bool first) {
    nuv::SearchOptions options;
    options.addresses = addresses;
    options.addressesOnly = true;
    options.udpPort = context_.choice.port.value_or(0);
    if (!first) options.links = {nuv::Link::kNetwork};
    if (context_.choice.usb) options.links = {nuv::Link::kUsb};
    options.found = [this, first](const Identity& printer) {
      const size_t count = Found(printer);
      if (first && live_) {
        row_.Draw({"searching: " + std::to_string(count) + " found"}, context_.system.ErrorWidth());
      }
      return true;
    };
    nuv::Call call = context_.Endless();
    call.timeLimit =
        std::chrono::milliseconds(std::min(kLongestSearchMs, context_.choice.timeoutMs));
    Asked("Searching", [&] { return nuv::Find(options, call); });
  }

  // How many there are.
  size_t Found(const Identity& printer) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (places_.emplace(printer.address, printer.tcpPort).second) {
      found_.emplace_back();
      Listed& row = found_.back();
      row.who = printer;
      pool_.Add([this, &row] { AskWho(row); });
    }
    return found_.size();
  }

  // On a thread of the pool, which has the row for itself.
  void AskWho(Listed& row) {
    bool answered = false;
    try {
      nuv::Call call = context_.Endless();
      const int64_t left = begin_ + context_.choice.timeoutMs - context_.system.NowMs();
      call.timeLimit = std::chrono::milliseconds(std::max<int64_t>(left, 1));
      nuv::Printer printer = nuv::Printer::Open(row.who, call);
      Identity who = printer.GetIdentity(call);
      who.mac = row.who.mac;
      row.who = who;
      answered = true;
      if (errand_) row.answer = errand_(printer, call);
    } catch (const nuv::Error& error) {
      row.answer.failure = FailureOf(error, "Asking " + row.Name());
      if (!answered) row.who.contact = error.Reason();
    } catch (const CommandError& error) {
      row.answer.failure = error;
    }
  }

  Listing Sorted() {
    Listing listing;
    KnownPrinters learnt;
    for (const KnownPrinter& known : known_) {
      const auto is = [&](const Listed& one) {
        const std::string serial = one.who.serial.value_or("");
        if (!known.serial.empty() && !serial.empty()) return serial == known.serial;
        return one.who.address == HostOf(known.address);
      };
      const auto row = std::find_if(found_.begin(), found_.end(), is);
      Listed printer;
      if (row != found_.end()) {
        printer = *row;
        found_.erase(row);
        if (known.serial.empty() && printer.who.serial) {
          learnt.push_back({known.name, known.address, *printer.who.serial});
        }
      } else {
        printer.who.address = known.address;
        if (!known.serial.empty()) printer.who.serial = known.serial;
        printer.who.contact = Result::kNotFound;
        printer.answer.failure =
            CommandError("no_printer", kNoPrinter, known.name + " was not found", "");
      }
      printer.known = known.name;
      listing.push_back(printer);
    }
    Learn(context_, learnt);
    found_.sort([](const Listed& a, const Listed& b) { return Place(a) < Place(b); });
    listing.insert(listing.end(), found_.begin(), found_.end());
    if (listing.empty()) throw NothingFound(context_.choice);
    Remember(listing);
    return listing;
  }

  static std::tuple<int, quint32, std::string, int> Place(const Listed& printer) {
    const QHostAddress address(QString::fromStdString(printer.who.address));
    return {static_cast<int>(printer.who.link), address.toIPv4Address(), printer.who.address,
            printer.who.tcpPort};
  }

  void Remember(const Listing& listing) const {
    KnownPrinters seen;
    for (const Listed& printer : listing) {
      if (!printer.Found() || printer.who.link != nuv::Link::kNetwork || !printer.who.serial)
        continue;
      std::string address = printer.who.address;
      if (context_.choice.port) address += ':' + std::to_string(*context_.choice.port);
      seen.push_back({"", address, *printer.who.serial});
    }
    if (!seen.empty()) RememberSeen(seen);
  }

  const Context& context_;
  const Errand& errand_;
  const int64_t begin_;
  LiveRows row_;
  const bool live_;
  KnownPrinters known_;
  std::mutex mutex_;  // guards what follows
  std::set<std::pair<std::string, int>> places_;
  std::list<Listed> found_;  // whose places in memory stay
  Pool pool_;
};

}  // namespace

std::string Listed::Name() const {
  if (!known.empty()) return known;
  if (who.nickname && !who.nickname->empty()) return *who.nickname;
  return who.serial && !who.serial->empty() ? *who.serial : AddressText(who);
}

Listing ListPrinters(const Context& context, const Errand& errand) {
  return Search(context, errand).Run();
}

std::string AddressText(const Identity& who) {
  // A path without the mark that the library puts behind it.
  constexpr char kMark[] = "\\1";
  const size_t mark = who.address.rfind(kMark);
  const bool marked = mark != std::string::npos && mark + 2 == who.address.size();
  return who.address.substr(0, marked ? mark : std::string::npos);
}

std::string ContactText(Result contact) {
  switch (contact) {
    case Result::kOk:
      return "ok";
    case Result::kUnreachable:
    case Result::kLost:
      return "busy";
    case Result::kNoAnswer:
    case Result::kTimeLimit:
      return "does not answer";
    case Result::kNotFound:
      return "not found";
    default:
      return nuv_result_text(static_cast<nuv_result>(contact));
  }
}

nlohmann::ordered_json ListedJson(const Listed& printer, size_t index) {
  nlohmann::ordered_json entry = {{"index", index}};
  if (!printer.known.empty()) entry["known"] = printer.known;
  entry["address"] = AddressText(printer.who);
  const auto add = [&entry](const char* key, const std::optional<std::string>& text) {
    entry[key] = text ? nlohmann::ordered_json(*text) : nlohmann::ordered_json();
  };
  add("serial", printer.who.serial);
  add("model", printer.who.model);
  add("nickname", printer.who.nickname);
  entry["contact"] = ContactText(printer.who.contact);
  return entry;
}

Report ListingReport(const Listing& listing) {
  const bool anyKnown = std::any_of(listing.begin(), listing.end(),
                                    [](const Listed& one) { return !one.known.empty(); });
  Report report;
  report.json["printers"] = nlohmann::ordered_json::array();
  std::vector<TableRow> rows;
  for (size_t i = 0; i < listing.size(); ++i) {
    const Listed& printer = listing[i];
    report.json["printers"].push_back(ListedJson(printer, i));
    const Identity& who = printer.who;
    const bool ok = who.contact == Result::kOk;
    TableRow row = {std::to_string(i), AddressText(who), who.serial.value_or(""),
                    ok ? who.model.value_or("") : ContactText(who.contact),
                    ok ? who.nickname.value_or("?") : ""};
    if (anyKnown) row.insert(row.begin() + 1, printer.known);
    rows.push_back(row);
  }
  TableRow head = {"INDEX", "ADDRESS", "SERIAL", "MODEL", "NICKNAME"};
  if (anyKnown) head.insert(head.begin() + 1, "NAME");
  if (!rows.empty()) report.text = FormatTable(head, rows);
  return report;
}

}  // namespace NuvCtl

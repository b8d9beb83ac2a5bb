#include "known_printers.h"

#include <QDir>
#include <QFile>
#include <QLockFile>
#include <QSaveFile>
#include <algorithm>
#include <nlohmann/json.hpp>

#include "error.h"

namespace NuvCtl {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kMomentMs = 50;
constexpr int kLockAttempts = 200;
constexpr size_t kMostSeen = 1000;

#ifdef Q_OS_WIN
constexpr char kConfigVariable[] = "APPDATA";
constexpr char kCacheVariable[] = "LOCALAPPDATA";
constexpr char kConfigFolder[] = "/AppData/Roaming";
constexpr char kCacheFolder[] = "/AppData/Local";
#else
constexpr char kConfigVariable[] = "XDG_CONFIG_HOME";
constexpr char kCacheVariable[] = "XDG_CACHE_HOME";
constexpr char kConfigFolder[] = "/.config";
constexpr char kCacheFolder[] = "/.cache";
#endif

QString FileIn(const char* variable, const char* usualFolder, const char* name) {
  QString folder = qEnvironmentVariable(variable);
  // By the convention of these variables a path that is not absolute counts as none.
  if (!QDir::isAbsolutePath(folder)) folder = QDir::homePath() + usualFolder;
  return folder + "/nuvctl/" + name;
}

QString KnownFile() { return FileIn(kConfigVariable, kConfigFolder, "printers.json"); }
QString SeenFile() { return FileIn(kCacheVariable, kCacheFolder, "seen.json"); }

CommandError FileError(const QString& path, const std::string& what, const std::string& hint) {
  return CommandError("settings_file", kLocalProblem,
                      "The file " + QDir::toNativeSeparators(path).toStdString() + " " + what,
                      hint);
}

KnownPrinters Load(const QString& path) {
  QFile file(path);
  if (!file.exists()) return {};
  if (!file.open(QIODevice::ReadOnly)) {
    throw FileError(path, "cannot be read: " + file.errorString().toStdString(), "");
  }
  KnownPrinters printers;
  try {
    const Json document = Json::parse(file.readAll().toStdString());
    for (const Json& one : document.at("printers")) {
      const auto text = [&one](const char* key) { return one.value(key, std::string()); };
      printers.push_back({text("name"), text("address"), text("serial")});
    }
  } catch (const nlohmann::json::exception&) {
    throw FileError(path, "is damaged",
                    "Mend it, or move it away: nuvctl leaves it as it is, and then begins anew.");
  }
  return printers;
}

void Change(const QString& path, const std::function<void(KnownPrinters&)>& change) {
  const QString folder = QFileInfo(path).path();
  constexpr char kHint[] = "Check that the folder can be written.";
  if (!QDir().mkpath(folder)) throw FileError(folder, "cannot be made as a folder", kHint);
  QLockFile lock(path + ".lock");
  // In short attempts: one long one looks ever more rarely.
  int attempts = 0;
  while (!lock.tryLock(kMomentMs)) {
    if (lock.error() != QLockFile::LockFailedError || ++attempts == kLockAttempts) {
      throw FileError(path, "cannot be locked", kHint);
    }
  }
  KnownPrinters printers = Load(path);
  change(printers);
  Json list = Json::array();
  for (const KnownPrinter& printer : printers) {
    Json one;
    if (!printer.name.empty()) one["name"] = printer.name;
    if (!printer.address.empty()) one["address"] = printer.address;
    if (!printer.serial.empty()) one["serial"] = printer.serial;
    list.push_back(one);
  }
  const std::string text = Json({{"printers", list}}).dump(2) + '\n';
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly) ||
      file.write(text.data(), static_cast<qint64>(text.size())) < 0 || !file.commit()) {
    throw FileError(path, "cannot be written: " + file.errorString().toStdString(), kHint);
  }
}

QString Folded(const std::string& text) { return QString::fromStdString(text).toCaseFolded(); }

}  // namespace

KnownPrinters LoadKnown() { return Load(KnownFile()); }

void ChangeKnown(const std::function<void(KnownPrinters&)>& change) { Change(KnownFile(), change); }

std::optional<KnownPrinter> FindSeen(const std::string& serial) {
  try {
    const KnownPrinters seen = Load(SeenFile());
    for (const auto is : {IsSerial, EndsIn}) {
      const auto matches = [&](const KnownPrinter& one) { return is(one.serial, serial); };
      const auto found = std::find_if(seen.begin(), seen.end(), matches);
      if (found == seen.end()) continue;
      if (std::any_of(found + 1, seen.end(), matches)) return std::nullopt;
      return *found;
    }
  } catch (const CommandError&) {
    // Without it the printer is searched for.
  }
  return std::nullopt;
}

void RememberSeen(const KnownPrinters& printers) {
  const auto remember = [&](KnownPrinters& seen) {
    for (const KnownPrinter& printer : printers) {
      seen.erase(std::remove_if(seen.begin(), seen.end(),
                                [&](const KnownPrinter& one) {
                                  return one.serial == printer.serial ||
                                         one.address == printer.address;
                                }),
                 seen.end());
      seen.push_back(printer);
    }
    if (seen.size() > kMostSeen) {
      seen.erase(seen.begin(), seen.end() - static_cast<std::ptrdiff_t>(kMostSeen));
    }
  };
  try {
    Change(SeenFile(), remember);
  } catch (const CommandError&) {
    QFile::remove(SeenFile());  // begun anew the next time, if it was damaged
  }
}

bool IsSerial(const std::string& serial, const std::string& wanted) { return serial == wanted; }

bool EndsIn(const std::string& serial, const std::string& wanted) {
  return !wanted.empty() && Folded(serial).endsWith(Folded(wanted));
}

}  // namespace NuvCtl

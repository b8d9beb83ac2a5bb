#include "job/nuv_file_library.h"

#include <QString>
#include <QStringList>

#include "platform/diagnostics.h"
#include "platform/files.h"

using Nuv::Platform::Diagnostic;

namespace Nuv::Connect {
namespace {

// The second where only what runs programs is installed.
constexpr const char* kLibraryNames[] = {"NuvFile", "libNuvFile.so.0"};
constexpr char kLibraryVariable[] = "NUVFILE_LIBRARY";
// Most data lines fit at once; a longer one costs a second call.
constexpr size_t kUsualLineBytes = 4096;

QStringList PlacesToLook() {
  const QString named = qEnvironmentVariable(kLibraryVariable);
  if (!named.isEmpty()) return {named};
  QStringList places;
  const std::string folder = Platform::ModuleFolder();
  for (const char* const name : kLibraryNames) {
    if (!folder.empty()) places << QString::fromStdString(folder + "/" + name);
  }
  for (const char* const name : kLibraryNames) places << QString(name);
  return places;
}

}  // namespace

bool NuvFileLibrary::LoadLibrary() {
  if (loaded_) return true;
  const QStringList places = PlacesToLook();
  for (const QString& place : places) {
    if (LoadFrom(place)) return loaded_ = true;
  }
  Diagnostic("print-file library not loaded, looked for: %s", qPrintable(places.join(", ")));
  return false;
}

bool NuvFileLibrary::LoadFrom(const QString& file) {
  library_.setFileName(file);
  if (!library_.load()) {
    Diagnostic("print-file library %s: %s", qPrintable(file), qPrintable(library_.errorString()));
    return false;
  }
  functions_.GetLastErrorText =
      reinterpret_cast<TextFunction>(library_.resolve("GetLastErrorText"));
  return Resolve("Load", functions_.Load) && Resolve("Close", functions_.Close) &&
         Resolve("GetMachineID", functions_.GetMachineID) &&
         Resolve("GetProjectID", functions_.GetProjectID) &&
         Resolve("GetMaterialID", functions_.GetMaterialID) &&
         Resolve("GetFileArguments", functions_.GetFileArguments) &&
         Resolve("GetModelDataSize", functions_.GetModelDataSize) &&
         Resolve("ReadLayer", functions_.ReadLayer) && Resolve("GetAESkey", functions_.GetAESkey) &&
         Resolve("ReadPreImg", functions_.ReadPreImg) && Resolve("ReadL101", functions_.ReadL101) &&
         Resolve("ReadL102", functions_.ReadL102) && Resolve("ReadL103", functions_.ReadL103);
}

template <class Function>
bool NuvFileLibrary::Resolve(const char* name, Function& function) {
  function = reinterpret_cast<Function>(library_.resolve(name));
  if (function != nullptr) return true;
  Diagnostic("print-file library %s has no function %s", qPrintable(library_.fileName()), name);
  return false;
}

bool NuvFileLibrary::Load(const std::string& path) {
  const int fault = functions_.Load(path.c_str());
  if (fault == 0) return true;
  Diagnostic("print file %s refused (%d): %s", path.c_str(), fault, LastError().c_str());
  return false;
}

void NuvFileLibrary::Close() { functions_.Close(); }

std::string NuvFileLibrary::GetMachineID() { return Text(functions_.GetMachineID); }

std::string NuvFileLibrary::GetProjectID() { return Text(functions_.GetProjectID); }

std::string NuvFileLibrary::GetMaterialID() { return Text(functions_.GetMaterialID); }

std::string NuvFileLibrary::GetFileArguments() { return Text(functions_.GetFileArguments); }

int NuvFileLibrary::GetModelDataSize() { return functions_.GetModelDataSize(); }

bool NuvFileLibrary::ReadLayer(int index, std::vector<uint8_t>& line) {
  // A second call is needed only when the line turns out longer than the buffer.
  line.resize(kUsualLineBytes);
  for (int attempt = 0; attempt < 2; ++attempt) {
    const int capacity = static_cast<int>(line.size());
    const int length = functions_.ReadLayer(index, line.data(), capacity, 0.0F);
    if (length < 0) break;
    line.resize(static_cast<size_t>(length));
    if (length <= capacity) return true;
  }
  Diagnostic("data line %d cannot be read: %s", index, LastError().c_str());
  return false;
}

bool NuvFileLibrary::GetAESkey(std::vector<uint8_t>& bytes) {
  return Bytes(functions_.GetAESkey, "key", bytes);
}

bool NuvFileLibrary::ReadPreImg(std::vector<uint8_t>& bytes) {
  return Bytes(functions_.ReadPreImg, "preview", bytes);
}

bool NuvFileLibrary::ReadL101(std::vector<uint8_t>& bytes) {
  return Bytes(functions_.ReadL101, "record L101", bytes);
}

bool NuvFileLibrary::ReadL102(std::vector<uint8_t>& bytes) {
  return Bytes(functions_.ReadL102, "record L102", bytes);
}

bool NuvFileLibrary::ReadL103(std::vector<uint8_t>& bytes) {
  return Bytes(functions_.ReadL103, "record L103", bytes);
}

bool NuvFileLibrary::Bytes(BytesFunction function, const char* part,
                           std::vector<uint8_t>& bytes) const {
  bytes.clear();
  const int length = function(nullptr, 0);
  if (length == 0) return true;
  if (length > 0) {
    bytes.resize(static_cast<size_t>(length));
    if (function(bytes.data(), length) == length) return true;
    bytes.clear();
  }
  Diagnostic("%s of the print file cannot be read: %s", part, LastError().c_str());
  return false;
}

std::string NuvFileLibrary::Text(TextFunction function) {
  const int length = function(nullptr, 0);
  if (length <= 0) return {};
  // One more for the NUL, which is then dropped.
  std::string text(static_cast<size_t>(length) + 1, '\0');
  if (function(text.data(), length + 1) != length) return {};
  text.pop_back();
  return text;
}

std::string NuvFileLibrary::LastError() const {
  return functions_.GetLastErrorText == nullptr ? std::string("no reason given")
                                                : Text(functions_.GetLastErrorText);
}

}  // namespace Nuv::Connect

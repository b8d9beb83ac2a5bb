#include "nuvfile/NuvFile.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <string>

#include "nuvfile/print_file.h"

namespace {

using NuvFile::Fault;
using NuvFile::PrintFile;
using NuvFile::Section;
using NuvFile::Status;

static_assert(static_cast<int>(Fault::kNone) == NUVFILE_LOADED);
static_assert(static_cast<int>(Fault::kCannotOpen) == NUVFILE_CANNOT_OPEN);
static_assert(static_cast<int>(Fault::kReadFailed) == NUVFILE_READ_FAILED);
static_assert(static_cast<int>(Fault::kNotPrintFile) == NUVFILE_NOT_A_PRINT_FILE);
static_assert(static_cast<int>(Fault::kUnknownVersion) == NUVFILE_UNKNOWN_VERSION);
static_assert(static_cast<int>(Fault::kBadHeader) == NUVFILE_BAD_HEADER);
static_assert(static_cast<int>(Fault::kBadChecksum) == NUVFILE_BAD_CHECKSUM);
static_assert(static_cast<int>(Fault::kBadIndex) == NUVFILE_BAD_INDEX);
static_assert(static_cast<int>(Fault::kBadText) == NUVFILE_BAD_TEXT);
static_assert(static_cast<int>(Fault::kBadLine) == NUVFILE_BAD_LINE);
static_assert(static_cast<int>(Fault::kTooLarge) == NUVFILE_TOO_LARGE);
static_assert(static_cast<int>(Fault::kOutOfMemory) == NUVFILE_OUT_OF_MEMORY);
// Lengths are returned as int.
static_assert(NuvFile::kMaxModelBytes <= 0x7FFFFFFF);

struct State {
  std::unique_ptr<PrintFile> file;
  std::string lastError;
};

State& TheState() {
  static State state;
  return state;
}

// Runs one call of the interface. Nothing may be thrown into the host, which may be
// written in another language or built by another compiler.
template <typename Call>
int Guarded(int fallback, Call call) noexcept {
  try {
    return call(TheState());
  } catch (const std::exception& e) {
    // what() of bad_alloc fits into the string without an allocation.
    try {
      TheState().lastError = e.what();
    } catch (...) {
    }
  } catch (...) {
  }
  return fallback;
}

size_t Room(const void* out, int capacity) {
  return out == nullptr || capacity < 0 ? 0 : static_cast<size_t>(capacity);
}

int CopyText(const std::string& text, char* out, int capacity) {
  if (text.size() < Room(out, capacity)) std::memcpy(out, text.c_str(), text.size() + 1);
  return static_cast<int>(text.size());
}

int NoFile(State& state) {
  state.lastError = "no print file is open";
  return NUVFILE_NO_FILE;
}

template <typename Text>
int GetText(Text text, char* out, int capacity) {
  return Guarded(NUVFILE_NO_FILE, [&](State& state) {
    if (!state.file) return NoFile(state);
    return CopyText((*state.file.*text)(), out, capacity);
  });
}

// Length of what was read, or the result code that stands for the fault.
int ReadResult(State& state, const Status& status, size_t length) {
  if (status.Ok()) return static_cast<int>(length);
  state.lastError = status.Message();
  return status.GetFault() == Fault::kLineOutOfRange ? NUVFILE_INDEX_OUT_OF_RANGE
                                                     : NUVFILE_READ_ERROR;
}

int ReadBytes(Section section, unsigned char* buffer, int capacity) {
  return Guarded(NUVFILE_READ_ERROR, [&](State& state) {
    if (!state.file) return NoFile(state);
    size_t length = 0;
    const Status status = state.file->ReadSection(section, buffer, Room(buffer, capacity), &length);
    return ReadResult(state, status, length);
  });
}

}  // namespace

int Load(const char* path) {
  return Guarded(NUVFILE_OUT_OF_MEMORY, [&](State& state) {
    state.file.reset();
    state.lastError.clear();
    if (path == nullptr) {
      state.lastError = "the path is null";
      return static_cast<int>(NUVFILE_CANNOT_OPEN);
    }
    const Status status = PrintFile::Open(path, &state.file);
    state.lastError = status.Message();
    return static_cast<int>(status.GetFault());
  });
}

void Close(void) {
  Guarded(0, [](State& state) {
    state.file.reset();
    return 0;
  });
}

int GetMachineID(char* out, int capacity) { return GetText(&PrintFile::MachineId, out, capacity); }

int GetProjectID(char* out, int capacity) { return GetText(&PrintFile::ProjectId, out, capacity); }

int GetMaterialID(char* out, int capacity) {
  return GetText(&PrintFile::MaterialId, out, capacity);
}

int GetFileArguments(char* out, int capacity) {
  return GetText(&PrintFile::ArgumentsText, out, capacity);
}

int GetModelDataSize(void) {
  return Guarded(NUVFILE_NO_FILE, [](State& state) {
    if (!state.file) return NoFile(state);
    return static_cast<int>(state.file->ModelBytes());
  });
}

int ReadLayer(int index, unsigned char* buffer, int capacity, float /*reserved*/) {
  return Guarded(NUVFILE_READ_ERROR, [&](State& state) {
    if (!state.file) return NoFile(state);
    size_t length = 0;
    // A negative index becomes one far above the number of lines.
    const Status status = state.file->ReadLine(static_cast<uint64_t>(int64_t{index}), buffer,
                                               Room(buffer, capacity), &length);
    return ReadResult(state, status, length);
  });
}

int ReadPreImg(unsigned char* buffer, int capacity) {
  return ReadBytes(Section::kPreview, buffer, capacity);
}

int ReadL101(unsigned char* buffer, int capacity) {
  return ReadBytes(Section::kL101, buffer, capacity);
}

int ReadL102(unsigned char* buffer, int capacity) {
  return ReadBytes(Section::kL102, buffer, capacity);
}

int ReadL103(unsigned char* buffer, int capacity) {
  return ReadBytes(Section::kL103, buffer, capacity);
}

int GetAESkey(unsigned char* buffer, int capacity) {
  return ReadBytes(Section::kAesKey, buffer, capacity);
}

int GetLastErrorText(char* out, int capacity) {
  return Guarded(0, [&](State& state) { return CopyText(state.lastError, out, capacity); });
}

#include "nuvfile/byte_source.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace NuvFile {
namespace {

// `long` has 32 bits on Windows, so plain fseek and ftell end at 2 GiB there.
int Seek(std::FILE* file, uint64_t offset, int origin) {
#if defined(_WIN32)
  return _fseeki64(file, static_cast<long long>(offset), origin);
#else
  return fseeko(file, static_cast<off_t>(offset), origin);
#endif
}

int64_t Tell(std::FILE* file) {
#if defined(_WIN32)
  return _ftelli64(file);
#else
  return ftello(file);
#endif
}

Status ReadFault(uint64_t offset, const std::string& reason) {
  return {Fault::kReadFailed, "reading at offset " + std::to_string(offset) + " failed: " + reason};
}

}  // namespace

std::string SystemErrorText(int errorNumber) {
  return std::generic_category().message(errorNumber);
}

Status FileSource::Open(const std::string& path, std::unique_ptr<ByteSource>* source) {
  FileHandle file(std::fopen(path.c_str(), "rb"));
  if (!file) return {Fault::kCannotOpen, "cannot open '" + path + "': " + SystemErrorText(errno)};
  // The callers read in blocks of their own choice; a second buffer would turn each
  // 16-byte index read into a 4 KiB one.
  std::setvbuf(file.get(), nullptr, _IONBF, 0);
  int64_t size = -1;
  if (Seek(file.get(), 0, SEEK_END) == 0) size = Tell(file.get());
  if (size < 0) {
    return {Fault::kCannotOpen,
            "cannot find the size of '" + path + "': " + SystemErrorText(errno)};
  }
  source->reset(new FileSource(std::move(file), static_cast<uint64_t>(size)));
  return {};
}

Status FileSource::ReadAt(uint64_t offset, uint8_t* buffer, size_t length) {
  if (length == 0) return {};
  if (Seek(file_.get(), offset, SEEK_SET) != 0) return ReadFault(offset, SystemErrorText(errno));
  const size_t got = std::fread(buffer, 1, length, file_.get());
  if (got == length) return {};
  const int errorNumber = errno;
  const bool failed = std::ferror(file_.get()) != 0;
  std::clearerr(file_.get());
  return ReadFault(offset + got,
                   failed ? SystemErrorText(errorNumber) : "the file ends before that offset");
}

Status MemorySource::ReadAt(uint64_t offset, uint8_t* buffer, size_t length) {
  if (offset > bytes_.size() || length > bytes_.size() - offset) {
    return ReadFault(offset, "the file ends before that offset");
  }
  if (length != 0) std::memcpy(buffer, bytes_.data() + offset, length);
  return {};
}

Status ReadWholeFile(const std::string& path, uint64_t maxLength, std::vector<uint8_t>* bytes) {
  std::unique_ptr<ByteSource> source;
  if (Status status = FileSource::Open(path, &source); !status.Ok()) return status;
  if (source->Size() > maxLength) {
    return {Fault::kTooLarge, "'" + path + "' has " + std::to_string(source->Size()) +
                                  " bytes, at most " + std::to_string(maxLength) + " are allowed"};
  }
  bytes->resize(static_cast<size_t>(source->Size()));
  if (Status status = source->ReadAt(0, bytes->data(), bytes->size()); !status.Ok()) {
    return {status.GetFault(), "'" + path + "': " + status.Message()};
  }
  return {};
}

}  // namespace NuvFile

#include "job/send_job_proc.h"

#include <openssl/evp.h>

#include <memory>
#include <optional>

#include "job/machine_ids.h"
#include "job/printer_exchange.h"
#include "nuvconnect/ResultCodes.h"
#include "platform/diagnostics.h"
#include "platform/files.h"

using Nuv::Platform::Diagnostic;

namespace Nuv::Connect {

// ---- Zafel Superfine

int SendJobProcZSF::PrepareJob(uint64_t& freeBuffer) {
  const std::optional<JobOpening> job = OpeningOf(context_.printFiles);
  if (!job) return NUV_FILE_NOT_READABLE;
  const std::optional<std::string> state = QueryState(context_);
  if (!state) return NUV_FAILED;
  F103proc opening(context_.Commands(), *job);
  const int opened = OpenJob(context_, opening, *state);
  if (opened != NUV_OK) return opened;
  freeBuffer = QueryFreeBufferSize(context_, kZafelSuperfineMachineId);
  return freeBuffer != 0 ? NUV_OK : NUV_NO_BUFFER_SPACE;
}

// ---- BEGO

namespace {

// What stands between the opening exchange and the data lines, in wire order.
struct RawParts {
  std::vector<uint8_t> key;
  std::vector<uint8_t> l102;
  std::vector<uint8_t> l103;
};

bool ReadParts(IPrintFileLibrary& file, RawParts& parts) {
  return file.GetAESkey(parts.key) && file.ReadL102(parts.l102) && file.ReadL103(parts.l103);
}

// `name`: what it is a part of or is. A query behind it confirms it.
int SendPart(IChannel& channel, const std::vector<uint8_t>& part, const char* name) {
  const Reason reason = channel.Send(part);
  if (reason != Reason::kNone) Diagnostic("job: %s not written: %s", name, WordsFor(reason));
  return ResultOf(reason, Step::kStream);
}

}  // namespace

int SendJobProcBEGO::PrepareJob(uint64_t& freeBuffer) {
  // A name with a line end would be a second command.
  if (file_.name.find_first_of("\r\n") != std::string::npos) {
    Diagnostic("print file %s: a name with a line end cannot be sent", file_.path.c_str());
    return NUV_FILE_NOT_READABLE;
  }
  // Before the first exchange: a damaged file then costs the printer nothing.
  RawParts parts;
  const std::optional<JobOpening> job = OpeningOf(context_.printFiles);
  if (!job || !ReadParts(context_.printFiles, parts)) return NUV_FILE_NOT_READABLE;

  IPrintFileLibrary& file = context_.printFiles;
  std::vector<std::string> values;
  const std::optional<std::string> state = QueryState(context_);
  if (!state || F354proc(context_.Commands()).Process(values) != NUV_OK ||
      F353proc(context_.Commands()).Process(values) != NUV_OK ||
      F367proc(context_.Commands(), file_.name).Process(values) != NUV_OK ||
      F355proc(context_.Commands(), file.GetMaterialID(), file.GetProjectID()).Process(values) !=
          NUV_OK) {
    return NUV_FAILED;
  }
  F103proc opening(context_.Commands(), *job);
  const int opened = OpenJob(context_, opening, *state);
  if (opened != NUV_OK) return opened;
  int sent = SendPart(context_.channel, parts.key, "key");
  if (sent == NUV_OK) sent = SendPart(context_.channel, parts.l102, "record L102");
  if (sent == NUV_OK) sent = SendPart(context_.channel, parts.l103, "record L103");
  if (sent != NUV_OK) return sent;
  freeBuffer = QueryFreeBufferSize(context_, kBegoMachineId);
  return freeBuffer != 0 ? NUV_OK : NUV_NO_BUFFER_SPACE;
}

// ---- Android board

namespace {

// What 508 tells of the print file.
struct FileDigest {
  uint64_t bytes = 0;         // length of the file
  std::vector<uint8_t> sha1;  // 20 bytes
};

struct ContextDeleter {
  void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};
using DigestContext = std::unique_ptr<EVP_MD_CTX, ContextDeleter>;

// False when the file or the digest fails.
bool Digest(Platform::RegularFile& file, EVP_MD_CTX* context, FileDigest& digest) {
  std::vector<char> chunk(Platform::kFileChunkBytes);
  int64_t count = 0;
  while ((count = file.Read(chunk.data(), chunk.size())) > 0) {
    if (EVP_DigestUpdate(context, chunk.data(), static_cast<size_t>(count)) != 1) return false;
    digest.bytes += static_cast<uint64_t>(count);
  }
  if (count < 0) return false;
  digest.sha1.resize(EVP_MAX_MD_SIZE);
  unsigned int length = 0;
  if (EVP_DigestFinal_ex(context, digest.sha1.data(), &length) != 1) return false;
  digest.sha1.resize(length);
  return true;
}

// Reads the file through once, in memory that does not depend on its size. Nothing, with a
// diagnostic, when it cannot be read to its end.
std::optional<FileDigest> DigestOf(const std::string& path) {
  Platform::RegularFile file(path);
  const DigestContext context(EVP_MD_CTX_new());
  FileDigest digest;
  if (file.IsOpen() && context != nullptr &&
      EVP_DigestInit_ex(context.get(), EVP_sha1(), nullptr) == 1 &&
      Digest(file, context.get(), digest)) {
    return digest;
  }
  Diagnostic("no digest of print file %s: it cannot be read", path.c_str());
  return std::nullopt;
}

constexpr char kThumbnailName[] = "Thumbnail.png";

// Appends what `read` reads to `joined`.
template <class Read>
bool Append(Read read, std::vector<uint8_t>& joined) {
  std::vector<uint8_t> record;
  if (!read(record)) return false;
  joined.insert(joined.end(), record.begin(), record.end());
  return true;
}

}  // namespace

bool SendJobProcAndroid::ReadParts(Parts& parts) const {
  IPrintFileLibrary& file = context_.printFiles;
  return file.ReadPreImg(parts.thumbnail) &&
         Append([&](auto& record) { return file.ReadL101(record); }, parts.records) &&
         Append([&](auto& record) { return file.ReadL102(record); }, parts.records) &&
         Append([&](auto& record) { return file.ReadL103(record); }, parts.records);
}

int SendJobProcAndroid::PrepareJob(uint64_t& /*freeBuffer*/) {
  // The name stands in angle brackets on a line.
  if (file_.name.find_first_of("\r\n>") != std::string::npos) {
    Diagnostic("print file %s: a name with a line end or > cannot be sent", file_.path.c_str());
    return NUV_FILE_NOT_READABLE;
  }
  // Before the first exchange: a damaged file then costs the printer nothing.
  Parts parts;
  const std::optional<FileDigest> digest = DigestOf(file_.path);
  const std::optional<JobOpening> job = OpeningOf(context_.printFiles);
  if (!digest || !job || !ReadParts(parts)) return NUV_FILE_NOT_READABLE;

  std::vector<std::string> values;
  const std::optional<std::string> state = QueryState(context_);
  if (!state ||
      F508proc(context_.Commands(), digest->bytes, digest->sha1, file_.name).Process(values) !=
          NUV_OK) {
    return NUV_FAILED;
  }
  const int sent = SendThumbnail(parts.thumbnail);
  if (sent != NUV_OK) return sent;
  F500proc opening(context_.Commands(), *job, file_.name);
  const int opened = OpenJob(context_, opening, *state);
  if (opened != NUV_OK) return opened;
  return SendBlocks(parts.records, BlockHeader::kNone);
}

int SendJobProcAndroid::SendThumbnail(const std::vector<uint8_t>& thumbnail) const {
  if (thumbnail.empty()) return NUV_OK;
  std::vector<std::string> values;
  F501proc announcement(context_.Commands(), static_cast<uint32_t>(thumbnail.size()),
                        kThumbnailName);
  const int result = announcement.Process(values);
  if (result != NUV_OK) return result;
  // A printer that does not want a thumbnail prints all the same.
  if (announcement.Accepted()) return SendBlocks(thumbnail, BlockHeader::kL105);
  Diagnostic("job: the printer refused the thumbnail");
  return NUV_OK;
}

int SendJobProcAndroid::SendBlocks(const std::vector<uint8_t>& bytes, BlockHeader header) const {
  for (BlockStream blocks(bytes, header); !blocks.AtEnd();) {
    const int sent = SendPart(context_.channel, blocks.Next(), "a block before the data lines");
    if (sent != NUV_OK) return sent;
  }
  return NUV_OK;
}

std::unique_ptr<ISendJobProc> CreateSendJobProc(const std::string& machineId, const JobFile& file,
                                                const JobContext& context) {
  switch (FamilyOf(machineId)) {
    case PrinterFamily::kZafelSuperfine:
      return std::make_unique<SendJobProcZSF>(context);
    case PrinterFamily::kBego:
      return std::make_unique<SendJobProcBEGO>(context, file);
    case PrinterFamily::kAndroid:
      return std::make_unique<SendJobProcAndroid>(context, file);
    case PrinterFamily::kUnknown:
      break;
  }
  return nullptr;
}

}  // namespace Nuv::Connect

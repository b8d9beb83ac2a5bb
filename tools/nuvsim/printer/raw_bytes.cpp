#include "nuvsim/printer/raw_bytes.h"

#include <openssl/evp.h>

#include <algorithm>
#include <system_error>
#include <utility>

namespace NuvSim {
namespace {

constexpr size_t kNameBytes = 4;
constexpr size_t kHeadBytes = 8;  // name and length
constexpr uint64_t kKeyBytes = 32;
constexpr std::string_view kFrameName = "L105";
constexpr uint32_t kLargestPayload = 10232;  // of a frame: 10240 bytes on the wire

bool MayBecome(std::string_view begun, std::string_view name) {
  const size_t common = std::min(begun.size(), name.size());
  return begun.substr(0, common) == name.substr(0, common);
}

uint32_t LengthOf(std::string_view head) {
  uint32_t length = 0;
  for (size_t i = kHeadBytes; i-- > kNameBytes;) {
    length = length << 8 | static_cast<unsigned char>(head[i]);
  }
  return length;
}

enum class Verdict { kNo, kPerhaps, kYes };

// A key is any bytes, so at its place a command must be more than "F" and a digit: a code, ended.
Verdict IsWholeHead(std::string_view begun) {
  constexpr size_t kLongestCode = 4;
  if (begun.front() != 'F') return Verdict::kNo;
  const size_t end = std::min(begun.find_first_not_of("0123456789", 1), begun.size());
  if (end - 1 > kLongestCode) return Verdict::kNo;
  if (end == begun.size()) return Verdict::kPerhaps;
  const bool ends = begun[end] == ' ' || begun[end] == '\r' || begun[end] == '\n';
  return end > 1 && ends ? Verdict::kYes : Verdict::kNo;
}

// A printer that is used for days must not exhaust the memory.
constexpr size_t kItemsKept = 10000;

constexpr char kThumbnail[] = "thumbnail";

}  // namespace

size_t RawPhase::Take(std::string_view bytes) {
  size_t taken = 0;
  while (taken < bytes.size() && !over_) {
    if (left_ == 0) {
      held_ += bytes[taken++];
      Decide();
      continue;
    }
    const std::string_view piece =
        bytes.substr(taken, static_cast<size_t>(std::min<uint64_t>(left_, bytes.size() - taken)));
    sink_.OnBytes(piece);
    taken += piece.size();
    left_ -= piece.size();
    if (left_ == 0) PieceCame();
  }
  return taken;
}

void RawPhase::Stop() {
  if (over_) return;
  // The head of something that never came whole is no line.
  if (held_.size() >= kNameBytes) held_.clear();
  End();
}

void RawPhase::End() {
  over_ = true;
  left_ = 0;
  sink_.OnItemEnd();
}

std::string RawPhase::TakeUndecided() { return std::exchange(held_, std::string()); }

namespace {

// What comes behind the opening of a job: perhaps the key, 32 bytes without a name; then records
// (name of four characters, length as 4 bytes little-endian, payload), each once at most. Anything
// else is a line again.
class HeaderPhase final : public RawPhase {
 public:
  HeaderPhase(RawSink& sink, bool hasKey, std::vector<std::string> records)
      : RawPhase(sink), mayBeKey_(hasKey), records_(std::move(records)) {}

 private:
  void Decide() override {
    const bool mayBeRecord =
        std::any_of(records_.begin(), records_.end(),
                    [this](const std::string& name) { return MayBecome(Undecided(), name); });
    if (mayBeRecord) {
      if (Undecided().size() == kHeadBytes) DecideRecord();
      return;
    }
    const Verdict isCommand = mayBeKey_ ? IsWholeHead(Undecided()) : Verdict::kYes;
    if (isCommand == Verdict::kYes) {
      End();
    } else if (isCommand == Verdict::kNo) {
      mayBeKey_ = false;
      const std::string begun = TakeUndecided();
      sink_.OnItem("key", kKeyBytes);
      sink_.OnBytes(begun);
      Expect(kKeyBytes - begun.size());
    }
  }

  void DecideRecord() {
    mayBeKey_ = false;
    const std::string head = TakeUndecided();
    const std::string name = head.substr(0, kNameBytes);
    records_.erase(std::find(records_.begin(), records_.end(), name));
    sink_.OnItem(name, LengthOf(head));
    Expect(LengthOf(head));
    if (LengthOf(head) == 0) PieceCame();
  }

  void PieceCame() override {
    sink_.OnItemEnd();
    if (records_.empty()) End();
  }

  bool mayBeKey_;
  std::vector<std::string> records_;  // that have not come
};

// An item of a known length in frames: "L105", payload length as 4 bytes little-endian, payload.
class FramedPhase final : public RawPhase {
 public:
  FramedPhase(RawSink& sink, const std::string& kind, uint64_t bytes)
      : RawPhase(sink), itemLeft_(bytes) {
    sink.OnItem(kind, bytes);
  }

  bool EndsInSilence() const override { return true; }

 private:
  void Decide() override {
    if (!MayBecome(Undecided(), kFrameName)) return End();
    if (Undecided().size() < kHeadBytes) return;
    const uint32_t length = LengthOf(TakeUndecided());
    sink_.OnBlock(length);
    if (length == 0 || length > kLargestPayload || length > itemLeft_) return End();
    itemLeft_ -= length;
    Expect(length);
  }

  void PieceCame() override {
    if (itemLeft_ == 0) End();
  }

  uint64_t itemLeft_;  // payload bytes that no frame has announced yet
};

// An item of a known length, above 0, as it is.
class ImagePhase final : public RawPhase {
 public:
  ImagePhase(RawSink& sink, const std::string& kind, uint64_t bytes) : RawPhase(sink) {
    sink.OnItem(kind, bytes);
    Expect(bytes);
  }

 private:
  void Decide() override {}
  void PieceCame() override { End(); }
};

}  // namespace

// SHA-1 of bytes that come piece by piece.
class Intake::Digest {
 public:
  Digest() { EVP_DigestInit_ex(context_.get(), EVP_sha1(), nullptr); }

  void Add(std::string_view bytes) { EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size()); }

  // 40 hexadecimal digits, lower case; what follows is a new digest.
  std::string Finish() {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    EVP_DigestFinal_ex(context_.get(), digest, &length);
    EVP_DigestInit_ex(context_.get(), EVP_sha1(), nullptr);
    std::string digits;
    for (unsigned int i = 0; i < length; ++i) {
      constexpr char kDigits[] = "0123456789abcdef";
      digits += kDigits[digest[i] >> 4];
      digits += kDigits[digest[i] & 15];
    }
    return digits;
  }

 private:
  std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> context_{EVP_MD_CTX_new(), EVP_MD_CTX_free};
};

Intake::Intake(std::filesystem::path folder, std::string prefix)
    : folder_(std::move(folder)), prefix_(std::move(prefix)), digest_(std::make_unique<Digest>()) {}

Intake::~Intake() = default;

ReceivedItem& Intake::Add(const std::string& kind, uint64_t announcedBytes) {
  if (items_.size() == kItemsKept) items_.pop_front();
  ReceivedItem& item = items_.emplace_back();
  item.kind = kind;
  item.announcedBytes = announcedBytes;
  return item;
}

void Intake::NotePrintFile(uint64_t bytes, std::string name, std::string digest) {
  ReceivedItem& item = Add("announcement", bytes);
  item.name = std::move(name);
  item.sha1 = std::move(digest);
}

void Intake::ExpectHeader(int job, bool hasKey, std::vector<std::string> records) {
  next_ = [this, job, hasKey, records = std::move(records)] {
    name_.clear();
    job_ = job;
    return std::make_unique<HeaderPhase>(Sink(), hasKey, records);
  };
}

void Intake::ExpectFrames(std::string kind, uint64_t bytes, std::string name) {
  next_ = [this, kind = std::move(kind), bytes, name = std::move(name)] {
    name_ = name;
    job_ = 0;
    return std::make_unique<FramedPhase>(Sink(), kind, bytes);
  };
}

void Intake::ExpectImage(std::string kind, uint64_t bytes, std::string name) {
  next_ = [this, kind = std::move(kind), bytes, name = std::move(name)] {
    name_ = name;
    job_ = 0;
    return std::make_unique<ImagePhase>(Sink(), kind, bytes);
  };
}

std::unique_ptr<RawPhase> Intake::TakePhase() {
  const auto make = std::exchange(next_, nullptr);
  return make ? make() : nullptr;
}

ReceivedItem* Intake::Last(std::string_view kind) {
  const auto found = std::find_if(items_.rbegin(), items_.rend(),
                                  [kind](const ReceivedItem& each) { return each.kind == kind; });
  return found == items_.rend() ? nullptr : &*found;
}

void Intake::OnItem(const std::string& kind, uint64_t announcedBytes) {
  OnItemEnd();
  ReceivedItem& item = Add(kind, announcedBytes);
  item.name = name_;
  item.job = job_;
  item.file = folder_ / (prefix_ + "-" + kind + (kind == kThumbnail ? ".png" : ".bin"));
  // Emptied instead, it would be written to the disk when it is closed, which takes long.
  std::error_code ignored;
  std::filesystem::remove(item.file, ignored);
  file_.open(item.file, std::ios::binary | std::ios::trunc);
  receiving_ = true;
}

void Intake::OnBlock(uint32_t payloadBytes) {
  std::vector<BlockRun>& blocks = items_.back().blocks;
  if (blocks.empty() || blocks.back().bytes != payloadBytes) blocks.push_back({payloadBytes, 0});
  ++blocks.back().count;
}

void Intake::OnBytes(std::string_view bytes) {
  items_.back().receivedBytes += bytes.size();
  digest_->Add(bytes);
  file_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (file_) return;
  ++writeErrors_;
  file_.clear();
}

void Intake::OnItemEnd() {
  if (!std::exchange(receiving_, false)) return;
  Flush();
  file_.close();
  ReceivedItem& item = items_.back();
  item.complete = item.receivedBytes == item.announcedBytes;
  // The engine has no command that starts it: it takes what is whole.
  item.started = item.complete && item.kind == "engine";
  item.sha1 = digest_->Finish();
}

void Intake::Flush() {
  if (!file_.is_open() || file_.flush()) return;
  ++writeErrors_;
  file_.clear();
}

}  // namespace NuvSim

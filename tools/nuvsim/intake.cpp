#include "nuvsim/intake.h"

#include <algorithm>
#include <utility>

namespace nuvsim {
namespace {

// A printer that is used for days must not exhaust the memory.
constexpr std::size_t kItemsKept = 10000;

constexpr char kThumbnail[] = "thumbnail";

}  // namespace

Intake::Intake(std::filesystem::path folder, std::string prefix)
    : folder_(std::move(folder)), prefix_(std::move(prefix)) {}

ReceivedItem& Intake::Add(const std::string& kind, std::uint64_t announcedBytes) {
  if (items_.size() == kItemsKept) items_.pop_front();
  ReceivedItem& item = items_.emplace_back();
  item.kind = kind;
  item.announcedBytes = announcedBytes;
  return item;
}

void Intake::NotePrintFile(std::uint64_t bytes, std::string name, std::string digest) {
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

void Intake::ExpectFrames(std::string kind, std::uint64_t bytes, std::string name) {
  next_ = [this, kind = std::move(kind), bytes, name = std::move(name)] {
    name_ = name;
    job_ = 0;
    return std::make_unique<FramedPhase>(Sink(), kind, bytes);
  };
}

void Intake::ExpectImage(std::string kind, std::uint64_t bytes, std::string name) {
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

void Intake::OnItem(const std::string& kind, std::uint64_t announcedBytes) {
  OnItemEnd();
  ReceivedItem& item = Add(kind, announcedBytes);
  item.name = name_;
  item.job = job_;
  item.file = folder_ / (prefix_ + "-" + kind + (kind == kThumbnail ? ".png" : ".bin"));
  file_.open(item.file, std::ios::binary | std::ios::trunc);
  receiving_ = true;
}

void Intake::OnBlock(std::uint32_t payloadBytes) {
  std::vector<BlockRun>& blocks = items_.back().blocks;
  if (blocks.empty() || blocks.back().bytes != payloadBytes) blocks.push_back({payloadBytes, 0});
  ++blocks.back().count;
}

void Intake::OnBytes(std::string_view bytes) {
  items_.back().receivedBytes += bytes.size();
  sha1_.Add(bytes);
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
  item.sha1 = sha1_.Finish();
}

void Intake::Flush() {
  if (!file_.is_open() || file_.flush()) return;
  ++writeErrors_;
  file_.clear();
}

}  // namespace nuvsim

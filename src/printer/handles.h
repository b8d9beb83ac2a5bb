#ifndef NUV_PRINTER_HANDLES_H_
#define NUV_PRINTER_HANDLES_H_

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace Nuv::Printer {

// The last number that was given, of any kind.
inline std::atomic<uintptr_t>& LastHandle() {
  static std::atomic<uintptr_t> last{0};
  return last;
}

// The objects of one kind that the host holds, by numbers in the dress of pointers: no number is
// used again, not even for another kind, so one that is gone leads nowhere.
//
// Thread-safety: safe.
template <class Object, class Handle>
class Handles {
 public:
  Handle* Add(std::shared_ptr<Object> object) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const uintptr_t number = ++LastHandle();
    objects_.emplace(number, std::move(object));
    // NOLINTNEXTLINE(performance-no-int-to-ptr): nobody follows it
    return reinterpret_cast<Handle*>(number);
  }
  // Null when there is none, or no longer.
  std::shared_ptr<Object> Find(const Handle* handle) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = objects_.find(reinterpret_cast<uintptr_t>(handle));
    return found == objects_.end() ? nullptr : found->second;
  }
  std::vector<std::shared_ptr<Object>> All() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::vector<std::shared_ptr<Object>> all;
    for (const auto& [number, object] : objects_) all.push_back(object);
    return all;
  }
  // The object lives on as long as somebody uses it.
  std::shared_ptr<Object> Remove(const Handle* handle) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = objects_.extract(reinterpret_cast<uintptr_t>(handle));
    return found.empty() ? nullptr : std::move(found.mapped());
  }

 private:
  mutable std::mutex mutex_;
  std::unordered_map<uintptr_t, std::shared_ptr<Object>> objects_;
};

}  // namespace Nuv::Printer

#endif  // NUV_PRINTER_HANDLES_H_

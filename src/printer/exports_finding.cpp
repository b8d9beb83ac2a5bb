// Lists, and the search for printers.

#include "printer/finder.h"
#include "printer/lists.h"
#include "printer/values.h"

using namespace Nuv::Printer;

namespace {

template <class Item>
nuv_result CopyItem(Item* out, const nuv_list* list, int32_t index) {
  return Guarded(nullptr, [&] {
    Prepare(out);
    const auto found = Lists().Find(list);
    if (found == nullptr) throw Failure{NUV_RESULT_BAD_HANDLE, {}};
    const auto* const items = std::get_if<std::vector<Item>>(found.get());
    if (items == nullptr || index < 0 || static_cast<size_t>(index) >= items->size()) {
      throw Failure{NUV_RESULT_INVALID_ARGUMENT, "an item that the list has not"};
    }
    HandOut((*items)[static_cast<size_t>(index)], out);
  });
}

}  // namespace

Handles<List, nuv_list>& Nuv::Printer::Lists() {
  static auto* const kLists = new Handles<List, nuv_list>;
  return *kLists;
}

int32_t nuv_list_count(const nuv_list* list) {
  const auto found = Lists().Find(list);
  if (found == nullptr) return 0;
  return std::visit([](const auto& items) { return static_cast<int32_t>(items.size()); }, *found);
}

nuv_result nuv_list_get_identity(nuv_identity* out, const nuv_list* list, int32_t index) {
  return CopyItem(out, list, index);
}

nuv_result nuv_list_get_access_point(nuv_access_point* out, const nuv_list* list, int32_t index) {
  return CopyItem(out, list, index);
}

void nuv_list_free(nuv_list* list) { Lists().Remove(list); }

nuv_result nuv_search_printers(nuv_list** out, const nuv_search_options* options,
                               const nuv_call* call, nuv_error* error) {
  if (out != nullptr) *out = nullptr;
  return Guarded(error, [&] {
    if (out == nullptr) throw Failure{NUV_RESULT_INVALID_ARGUMENT, "no place for the list"};
    CallLimits limits(call, kUsualSearchMs, Nuv::Platform::SystemClock());
    const Wishes wishes = WishesOf(options);
    *out = Lists().Add(std::make_shared<List>(Find(wishes, limits, limits.End())));
  });
}

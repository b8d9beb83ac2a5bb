// Lists, and the search for printers.

#include "printer/finder.h"
#include "printer/handles.h"
#include "printer/values.h"

using namespace Nuv::Printer;

namespace {

constexpr int kUsualSearchMs = 3000;

using List = std::vector<nuv_identity>;

Handles<List, nuv_list>& Lists() {
  static auto* const kLists = new Handles<List, nuv_list>;
  return *kLists;
}

}  // namespace

int32_t nuv_list_count(const nuv_list* list) {
  const auto found = Lists().Find(list);
  return found == nullptr ? 0 : static_cast<int32_t>(found->size());
}

nuv_result nuv_list_get_identity(nuv_identity* out, const nuv_list* list, int32_t index) {
  return Guarded(nullptr, [&] {
    Prepare(out);
    const auto found = Lists().Find(list);
    if (found == nullptr) throw Failure{NUV_RESULT_BAD_HANDLE, {}};
    if (index < 0 || static_cast<size_t>(index) >= found->size()) {
      throw Failure{NUV_RESULT_INVALID_ARGUMENT, "an item that the list has not"};
    }
    HandOut((*found)[static_cast<size_t>(index)], out);
  });
}

void nuv_list_free(nuv_list* list) { Lists().Remove(list); }

nuv_result nuv_search_printers(nuv_list** out, const nuv_search_options* options,
                               const nuv_call* call, nuv_error* error) {
  if (out != nullptr) *out = nullptr;
  return Guarded(error, [&] {
    if (out == nullptr) throw Failure{NUV_RESULT_INVALID_ARGUMENT, "no place for the list"};
    CallLimits limits(call, kUsualSearchMs, Nuv::Platform::SystemClock());
    const Wishes wishes = WishesOf(options);
    *out = Lists().Add(std::make_shared<List>(Find(wishes, limits)));
  });
}

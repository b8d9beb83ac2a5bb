#include "nuvsim/wireless.h"

#include <algorithm>
#include <utility>

namespace nuvsim {

Wireless::Wireless(std::vector<AccessPoint> reach) : reach_(std::move(reach)) {
  std::stable_sort(reach_.begin(), reach_.end(),
                   [](const AccessPoint& a, const AccessPoint& b) { return a.signal > b.signal; });
}

const AccessPoint* Wireless::Find(std::string_view name) const {
  const auto found = std::find_if(reach_.begin(), reach_.end(),
                                  [name](const AccessPoint& each) { return each.name == name; });
  return found == reach_.end() ? nullptr : &*found;
}

bool Wireless::Join(std::string_view name, bool isSecured, std::string_view key) {
  const AccessPoint* wanted = Find(name);
  if (wanted == nullptr || wanted->IsSecured() != isSecured || wanted->key != key) return false;
  joined_ = wanted;
  return true;
}

}  // namespace nuvsim

#include "connect/device_table.h"

#include <algorithm>

namespace Nuv::Connect {
namespace {

constexpr char kBego[] = "BEGO VARSEO XS";
constexpr const char* kListedWithNickname[] = {"Zafel Superfine", "Fabrix100 xP", "Moldrix100 xP"};

// Model names are ASCII; the host's locale must not change what equals what.
char Folded(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool EqualIgnoringCase(const std::string& a, const std::string& b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(),
                                            [](char x, char y) { return Folded(x) == Folded(y); });
}

}  // namespace

bool HasOwnSerialQuery(const std::string& model) { return model == kBego; }

bool ListsNickname(const std::string& model) {
  return std::any_of(std::begin(kListedWithNickname), std::end(kListedWithNickname),
                     [&](const char* name) { return EqualIgnoringCase(model, name); });
}

}  // namespace Nuv::Connect

// The printer's wireless side: the access points in its reach and the one that it has joined.
//
// Thread-safety: none; the owner serialises calls.
#ifndef NUVSIM_WIRELESS_H_
#define NUVSIM_WIRELESS_H_

#include <string_view>
#include <vector>

#include "nuvsim/types.h"

namespace nuvsim {

class Wireless {
 public:
  // `reach` has no two access points of one name.
  explicit Wireless(std::vector<AccessPoint> reach);
  Wireless(const Wireless&) = delete;
  Wireless& operator=(const Wireless&) = delete;

  // False, with nothing changed, unless the access point is in reach and both are right: the key,
  // and that there is one.
  bool Join(std::string_view name, bool isSecured, std::string_view key);
  void Leave() { joined_ = nullptr; }

  const AccessPoint* Joined() const { return joined_; }               // null when none
  const AccessPoint* Find(std::string_view name) const;               // null when out of reach
  const std::vector<AccessPoint>& InReach() const { return reach_; }  // strongest first

 private:
  std::vector<AccessPoint> reach_;
  const AccessPoint* joined_ = nullptr;
};

}  // namespace nuvsim

#endif  // NUVSIM_WIRELESS_H_

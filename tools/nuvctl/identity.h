// What the current printer is.
#ifndef NUVCTL_IDENTITY_H_
#define NUVCTL_IDENTITY_H_

#include <string>

namespace nuvctl {

// Models that are asked in another way than the rest.
constexpr char kBegoModel[] = "BEGO VARSEO XS";
constexpr char kThreeLineModel[] = "Fabrix150 xP";
constexpr char kFirstModel[] = "Zafel 1.0";
constexpr char kFirstModelRevised[] = "Zafel 1.0A";

struct Identity {
  std::string firmware, name, model, serial, controller;
  std::string manufactured;  // only of a BEGO printer, else empty
};

// Throws CommandError when the printer does not tell.
Identity ReadIdentity();

}  // namespace nuvctl

#endif  // NUVCTL_IDENTITY_H_

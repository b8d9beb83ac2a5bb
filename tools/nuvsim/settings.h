// What hosts set on a printer, as it is when the printer comes from the factory.
#ifndef NUVSIM_SETTINGS_H_
#define NUVSIM_SETTINGS_H_

#include <array>
#include <string>

namespace nuvsim {

struct Settings {
  std::string nickname;
  int laserPower = 80;                                 // percent
  int zCompensation = 0;                               // micrometres
  std::array<double, 6> scaling = {1, 1, 1, 1, 1, 1};  // two factors each for X, Y and Z
  int lastUpdatedIndex = 0;                            // of the last job that a host has read
};

}  // namespace nuvsim

#endif  // NUVSIM_SETTINGS_H_

// The readings of the sensors query.
#ifndef NUVSIM_SENSORS_H_
#define NUVSIM_SENSORS_H_

#include <array>

namespace nuvsim {

struct Sensor {
  const char* key;  // as on the wire
  int low;
  int high;
  int usual;  // the reading unless the configuration tells another
};

// In the order of the answer.
constexpr std::array<Sensor, 13> kSensors = {{
    {"C_T", -40, 200, 28},
    {"C_B", -40, 200, 27},
    {"ZLT", 0, 1, 0},
    {"ZLB", 0, 1, 1},
    {"V_S", 0, 255, 2},
    {"L_S", 0, 100, 80},
    {"W_H", 0, 1, 1},
    {"Y_H", 0, 1, 1},
    {"C_LI", 0, 1, 1},
    {"C_P", 0, 1, 1},
    {"P_S", 0, 1, 1},
    {"Y_F", 0, 1, 0},
    {"T_T", -40, 200, 30},
}};

}  // namespace nuvsim

#endif  // NUVSIM_SENSORS_H_

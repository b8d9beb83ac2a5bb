// The simulator's configuration: its JSON form and the check that it can be used.
#ifndef NUVSIM_CONFIG_FILE_H_
#define NUVSIM_CONFIG_FILE_H_

#include <string>

#include "nuvsim/types.h"

namespace nuvsim {

// Reads the JSON text of a configuration file (see README.md). Unlike in SimulatorConfig,
// searches are answered unless the file says otherwise. Throws ConfigError with a message that
// names the place.
SimulatorConfig ParseConfig(const std::string& json);

// Reads and parses a file; throws ConfigError also when it cannot be read.
SimulatorConfig LoadConfig(const std::filesystem::path& file);

// Throws ConfigError unless the simulator can be built from this.
void ValidateConfig(const SimulatorConfig& config);

}  // namespace nuvsim

#endif  // NUVSIM_CONFIG_FILE_H_

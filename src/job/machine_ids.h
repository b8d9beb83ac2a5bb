#ifndef NUV_JOB_MACHINE_IDS_H_
#define NUV_JOB_MACHINE_IDS_H_

#include <string>

namespace Nuv::Connect {

// Families of printers that take a job in the same way.
enum class PrinterFamily { kUnknown, kZafelSuperfine, kBego, kAndroid };

// The family of a print file's machine ID, compared exactly.
PrinterFamily FamilyOf(const std::string& machineId);

// Whose free buffer the senders ask for; the Zafel Superfine one whatever the file's own ID.
extern const char kZafelSuperfineMachineId[];
extern const char kBegoMachineId[];

}  // namespace Nuv::Connect

#endif  // NUV_JOB_MACHINE_IDS_H_

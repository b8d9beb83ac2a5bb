#ifndef NUV_JOB_MACHINE_IDS_H_
#define NUV_JOB_MACHINE_IDS_H_

#include <string>

namespace Nuv::Connect {

// Families of printers that take a job in the same way.
enum class PrinterFamily { kUnknown, kZafelSuperfine, kBego, kAndroid };

// The family of a print file's machine ID, compared exactly.
PrinterFamily FamilyOf(const std::string& machineId);

// The family of a printer model, by its name as command 101 tells it.
PrinterFamily FamilyOfModel(const std::string& model);

// "BEGO"; empty when unknown.
const char* NameOf(PrinterFamily family);

// Whose free buffer the senders ask for; the Zafel Superfine one whatever the file's own ID.
extern const char kZafelSuperfineMachineId[];
extern const char kBegoMachineId[];
extern const char kAndroidMachineId[];

}  // namespace Nuv::Connect

#endif  // NUV_JOB_MACHINE_IDS_H_

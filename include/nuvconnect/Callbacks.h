// Callbacks that a host registers: plain function pointers.
//
// A callback must not throw. Registering a null pointer removes a callback. Callbacks may be
// replaced at any time, also while a job runs; the next call goes to the new one.
#ifndef NUVCONNECT_CALLBACKS_H_
#define NUVCONNECT_CALLBACKS_H_

#ifdef __cplusplus
#include <string>
extern "C" {
#else
#include <stdbool.h>
#endif

// A command failed. `result`: the code that the failing call returns or, from the processors that
// open a job, the transaction status (-1 nothing usable came back, -2 a reply to another command).
// `code`: number of the printer command, such as 102. Called on the thread of the failing call.
typedef void (*NuvErrorCodeCallback)(int result, int code);

// A job or firmware transfer starts. Called on the sending thread.
typedef void (*NuvSendDataStartCallback)(void);

// Progress of a transfer, in bytes: `total` of the whole, `sent` so far (line ends of a print job
// are not counted in either). Called on the sending thread.
typedef void (*NuvSendDataUpdateCallback)(int total, int sent);

// Asked before every line or block, and once more at the end of a print job; true cancels the
// transfer. Called on the sending thread.
typedef bool (*NuvSendDataCancelCallback)(void);

// Progress of a job in percent, 0 to 100. Called on the sending thread after each line.
typedef void (*NuvJobProgressCallback)(float percent);

#ifdef __cplusplus
}

// State of a running print; the strings are C++ objects, so the host needs this library's compiler.
// `totalLayers`, `totalMinutes`, `jobText`: keys L, T, R of command 107. `layer`, `minutesLeft`,
// `stateText`, `controller`: keys L, T, R, C of command 101. Called on the status thread.
typedef void (*NuvPrintingInfoCallback)(int totalLayers, int layer, int totalMinutes,
                                        std::string jobText, int minutesLeft, std::string stateText,
                                        std::string controller);
#endif

#endif  // NUVCONNECT_CALLBACKS_H_

// Callbacks that a host registers: plain function pointers.
//
// A callback must not throw. One that throws ends the call that it was made from with its exception
// or, of the status thread, its pass; the library stays usable. Registering a null pointer removes
// a callback. Callbacks may be replaced at any time, also while a job runs; the next call goes to
// the new one. The printing-info callback is the exception: the first one stays.
//
// What a callback may call. No callback is made with a lock held, so no call of the library blocks
// for ever. But some would disturb what the callback reports on; and whatever lists or chooses
// printers inside a job or transfer sends the rest of it to another one:
//   callback        queries, settings, Register..  jobs, firmware      API_Close
//   error code      yes (1)                         no (2)              no
//   start, update,  yes; during a firmware          no: returns 1       no
//   cancel          transfer no (3)
//   job progress    yes                             no: returns 1       no
//   printing info   yes                             yes (4)             yes (5)
//
// (1) A query that fails calls the error-code callback again, inside itself: the host ends that.
//
// (2) The call that failed may be a part of a job.
//
// (3) The command would become a part of the image.
//
// (4) No further printing info comes until the callback has returned.
//
// (5) The status thread then ends by itself, a moment after the callback has returned. The library
// must not be unloaded before its line "PrintStatusCallBackHandler exit ..." on standard output.
#ifndef NUVCONNECT_CALLBACKS_H_
#define NUVCONNECT_CALLBACKS_H_

#ifdef __cplusplus
#include <string>
extern "C" {
#else
#include <stdbool.h>
#endif

// A command failed. `code`: its number, such as 102. `result`: what the failing call returns. In a
// print job or command text, and of the serial query (140) of a listing, what became of the command
// instead: -1 nothing usable came back, -2 a reply to another command, 29 refused. Of the commands
// of a job only 103, 500, 104 and the free-buffer queries (117, 503) are told as refused; the
// result of the job itself is not told. Called on the thread of the failing call.
typedef void (*NuvErrorCodeCallback)(int result, int code);

// A job or firmware transfer starts, also an empty one. Called on the sending thread.
typedef void (*NuvSendDataStartCallback)(void);

// Progress of a transfer, in bytes: `total` of the whole, `sent` so far (line ends of a print job
// and headers of firmware blocks are not counted in either). Called on the sending thread after
// each line or block.
typedef void (*NuvSendDataUpdateCallback)(int total, int sent);

// Asked before every line or block, and once more at the end of a print job; true cancels the
// transfer. Called on the sending thread.
typedef bool (*NuvSendDataCancelCallback)(void);

// Progress of a job in percent, 0 to 100. Called on the sending thread after each line.
typedef void (*NuvJobProgressCallback)(float percent);

#ifdef __cplusplus
}

// State of a running print, at most once per interval; the strings are C++ objects, so the host
// needs this library's compiler. It must not wait for the thread that calls API_Close, which waits
// for it.
// `totalLayers`, `totalMinutes`, `jobText`: keys L, T, R of command 107. `layer`, `minutesLeft`,
// `stateText`, `controller`: keys L, T, R, C of command 101. Called on the status thread.
typedef void (*NuvPrintingInfoCallback)(int totalLayers, int layer, int totalMinutes,
                                        std::string jobText, int minutesLeft, std::string stateText,
                                        std::string controller);
#endif

#endif  // NUVCONNECT_CALLBACKS_H_

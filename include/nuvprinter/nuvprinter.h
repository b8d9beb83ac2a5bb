// libnuvprinter: resin 3D printers, a handle each, for every language that can call C.
//
// Reading order: the rules, what every call shares, finding. C++ programs include nuvprinter.hpp
// instead. docs/protocol.md has the wire; "command 102" below names the line that a function sends.
// So far the library finds printers; docs/architecture.md says what comes next.
//
// ---- The rules, the same everywhere -------------------------------------------------------------
//
// Shape. result = nuv_object_verb(outputs, object, inputs, call, error). `call` and `error` end
// every function that talks to a printer or the network; both may be null. All other pointers are
// not null unless said.
//
// Results. NUV_RESULT_OK is 0, everything else is a failure. After one, structures that were handed
// in hold nothing known, handles are null and numbers 0, unless said otherwise. What a person can
// read stands in `error`; there is no "last error".
//
// Structures. Those that begin with `size` get it from the caller: `= NUV_INIT(nuv_state)` does,
// and zeroes the rest. 0 is the default of every option and "not known" in every answer, so a
// zeroed structure with its size is right in any language. The library reads and fills the part
// that both sides know, and zeroes what only the caller knows; a size below that of the
// structure's first version is NUV_RESULT_INVALID_ARGUMENT. New fields are added at the end only.
// nuv_int and nuv_text never change; a structure with a size is never a field of another; none has
// padding, so that its layout is the same for every compiler.
//
// Texts are UTF-8, NUL-terminated, file names too, on every system. A text handed in is copied.
//
// Handles (nuv_list) are numbers in the dress of pointers: never followed, never used again. One
// that was freed, or is of another kind, gives NUV_RESULT_BAD_HANDLE. Each is freed by its _free
// function, which accepts null and handles that are gone.
//
// Threads. Any function from any thread.
//
// Callbacks return 1 to go on and 0 to end; whatever is not 1 ends, so that what a language makes
// of a failed callback never goes on. They run without a lock held. Those that belong to one call
// run on that call's thread and are not used after it. The one that outlives its call, of
// nuv_log_to, has `release(user)`: called once, after the last callback, also when the call fails;
// only there may what `user` points to be destroyed. In a structure that a callback is handed
// `size` is the library's: read no field beyond it. A callback must neither throw nor longjmp.
//
// Not supported: calls after fork in the child; unloading the library (it stays loaded).
#ifndef NUVPRINTER_NUVPRINTER_H_
#define NUVPRINTER_NUVPRINTER_H_

#include <stddef.h>
#include <stdint.h>

// Functions need no dllimport: the import library resolves their plain names. cdecl everywhere.
#if defined(_WIN32) && defined(NUVPRINTER_BUILDING)
#define NUV_PRINTER_API __declspec(dllexport)
#elif defined(_WIN32)
#define NUV_PRINTER_API
#else
#define NUV_PRINTER_API __attribute__((visibility("default")))
#endif

// Version of this header: 10000 * major + 100 * minor + patch.
#define NUV_PRINTER_VERSION 100

// A value of a structure type with its size set and all else zero.
#ifdef __cplusplus
template <typename T>
inline T nuv_init() {
  T value{};
  value.size = static_cast<uint32_t>(sizeof(T));
  return value;
}
#define NUV_INIT(type) (nuv_init<type>())
extern "C" {
#else
#define NUV_INIT(type) ((type){.size = (uint32_t)sizeof(type)})
#endif

typedef struct nuv_list nuv_list;  // what a search found

// ---- What every call shares ---------------------------------------------------------------------

typedef int32_t nuv_result;
enum {
  NUV_RESULT_OK = 0,
  NUV_RESULT_INVALID_ARGUMENT = 1,  // null, wrong size, out of range, a line end; nothing was sent
  NUV_RESULT_BAD_HANDLE = 2,        // null, freed, or of another kind
  NUV_RESULT_BUSY = 3,              // this process has that printer open, or sends a print job
  NUV_RESULT_NOT_FOUND = 4,         // no printer with that serial number or at that address
  NUV_RESULT_UNREACHABLE = 5,       // known, but no connection could be made
  NUV_RESULT_NO_ANSWER = 6,         // silent; another program may be using the printer
  NUV_RESULT_LOST = 7,              // the printer, or the way to it, ended the connection
  NUV_RESULT_UNREADABLE = 8,        // it answered what the protocol does not allow
  NUV_RESULT_REFUSED = 9,           // it answered no: not now, not that value, or not on its model
  NUV_RESULT_TIME_LIMIT = 10,       // the call's own time limit has passed
  NUV_RESULT_CANCELLED = 11,        // still_wanted
  NUV_RESULT_BAD_FILE = 12,         // the file cannot be read, or is damaged
  NUV_RESULT_NOT_FIT = 13,          // the file is not for this printer, or not now; not sent
  NUV_RESULT_UNCONFIRMED = 14,      // something was sent; whether the printer took it is not known
  NUV_RESULT_TOO_SMALL = 15,        // the caller's buffer
  NUV_RESULT_SYSTEM = 16            // memory, threads, descriptors, a library that is missing
};

// One line of English without the name of a printer, "the printer refused"; also for values that
// this version does not know. Static; never null.
NUV_PRINTER_API const char* nuv_result_text(nuv_result result);

// A number that a printer may not have told.
typedef struct nuv_int {
  int32_t known;  // 1, else 0 and `value` is 0
  int32_t value;
} nuv_int;

enum {
  NUV_TEXT_KNOWN = 1,     // told, be it empty
  NUV_TEXT_REPAIRED = 2,  // bytes that were no UTF-8 are now U+FFFD
  NUV_TEXT_CUT = 4        // longer than fits; cut between characters
};

// A text that a printer may not have told. 512 bytes.
typedef struct nuv_text {
  uint32_t flags;  // NUV_TEXT_..., 0 when not known
  char text[508];  // empty when not known
} nuv_text;

typedef struct nuv_error {
  uint32_t size;
  nuv_result result;     // as returned
  int32_t command;       // number of the command that failed, such as 102; 0 for none
  int32_t system_error;  // errno, on Windows GetLastError or WSAGetLastError; 0 for none
  nuv_text message;      // for a person: printer, what was wanted, what happened
} nuv_error;

// Asked on the calling thread every 200 ms, at the latest, while a call waits. 0 ends the call,
// within 0.6 s, with NUV_RESULT_CANCELLED.
typedef int32_t (*nuv_still_wanted)(void* user);

// How long a call may last and who can end it. May be used for many calls, also at the same time.
typedef struct nuv_call {
  uint32_t size;
  int32_t time_limit_ms;          // 0: what the function says
  nuv_still_wanted still_wanted;  // may be null
  void* user;
} nuv_call;

// ---- Lists --------------------------------------------------------------------------------------

typedef struct nuv_identity nuv_identity;

// Number of items; 0 for null and for a handle that is gone.
NUV_PRINTER_API int32_t nuv_list_count(const nuv_list* list);

// Copies item `index`, from 0. NUV_RESULT_INVALID_ARGUMENT beyond the list's end.
NUV_PRINTER_API nuv_result nuv_list_get_identity(nuv_identity* out, const nuv_list* list,
                                                 int32_t index);

NUV_PRINTER_API void nuv_list_free(nuv_list* list);

// ---- Finding printers ---------------------------------------------------------------------------

enum { NUV_LINK_NETWORK = 1, NUV_LINK_USB = 2 };  // may be added up in nuv_search_options

// Who a printer is and where.
struct nuv_identity {
  uint32_t size;
  int32_t link;        // NUV_LINK_...
  nuv_text address;    // IPv4 address, or the path of the USB port
  int32_t tcp_port;    // 0 on USB
  nuv_result contact;  // how asking it went: OK, NO_ANSWER, UNREACHABLE ("busy") ...
  nuv_text mac;        // network search only: MAC address
  nuv_text name;       // printer name
  nuv_text model;
  nuv_text serial;        // whole serial number
  nuv_text nickname;      // known and empty when the printer has none
  nuv_text firmware;      // version
  nuv_text controller;    // version
  nuv_text manufactured;  // year month day, as 20240131: dental models
};

// Told each printer once, when its identity is known or could not be had. 0 ends the search, which
// then returns NUV_RESULT_OK with what it has: how a host takes the first that suits.
typedef int32_t (*nuv_found_function)(const nuv_identity* printer, void* user);

typedef struct nuv_search_options {
  uint32_t size;
  int32_t links;             // NUV_LINK_..., added up; 0: all
  const char* addresses;     // "broadcast 10.0.5.7 10.0.6.2:6014": blank-separated IPv4 addresses,
                             // each with an own UDP port if need be, and the word broadcast, at
                             // most 1,000. Null: the environment variable NUVCONNECT_SEARCH when
                             // that is set, else broadcast
  int32_t udp_port;          // 0: 6013
  int32_t addresses_only;    // 1: connects to no printer; serial, model, nickname stay unknown
  nuv_found_function found;  // may be null
  void* user;
} nuv_search_options;

// Searches all networks and USB at once. *out: a list of nuv_identity, in order of arrival, never
// null after success. `options` may be null. The time limit (default 3000 ms) is for everything
// together, and reaching it is success; with addresses alone the search ends when all have
// answered. A printer that answers the search, but not the questions that follow (at most 32
// printers are asked at once; commands 101, 140, 354 and 197), is an item whose `contact` says so.
// An address is asked three times. A printer that tells another address than the one asked, being
// behind a translating router, is listed with the one asked; its TCP port must be forwarded
// unchanged. A malformed, broadcast or multicast address is NUV_RESULT_INVALID_ARGUMENT, named in
// `error`; in the environment variable it is logged and passed over.
NUV_PRINTER_API nuv_result nuv_search_printers(nuv_list** out, const nuv_search_options* options,
                                               const nuv_call* call, nuv_error* error);

// ---- Library ------------------------------------------------------------------------------------

// Version of the library that is loaded, in the form of NUV_PRINTER_VERSION.
NUV_PRINTER_API uint32_t nuv_version(void);

enum {
  NUV_LOG_ERROR = 1,   // a call that failed
  NUV_LOG_WARNING = 2  // what a person who looks for a cause wants to know
};

typedef struct nuv_log_line {
  uint32_t size;
  int32_t level;        // NUV_LOG_...
  const char* printer;  // address or path; empty when it concerns none
  const char* text;     // one line; keys of wireless networks never appear
} nuv_log_line;

// Called once, after the last callback with `user`. May be null where it is asked for.
typedef void (*nuv_release)(void* user);

// Called on any thread, several at the same time. May call nothing here. 0 ends the log.
typedef int32_t (*nuv_log_function)(const nuv_log_line* line, void* user);

// Sends what the library has to say up to `level`, of the whole process, to `function`, or for null
// nowhere, as at the start: nothing is ever written to standard output or error. The one before is
// released, a moment later when it is being called.
NUV_PRINTER_API nuv_result nuv_log_to(int32_t level, nuv_log_function function, void* user,
                                      nuv_release release);

#ifdef __cplusplus
}  // extern "C"
#endif

#endif  // NUVPRINTER_NUVPRINTER_H_

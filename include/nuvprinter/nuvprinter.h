// libnuvprinter: resin 3D printers, a handle each, for every language that can call C.
//
// Reading order: the rules, what every call shares, finding, opening; then by topic, the topics of
// docs/protocol.md. C++ programs include nuvprinter.hpp instead. docs/protocol.md has the wire;
// "command 102" below names the line that a function sends.
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
// Handles (nuv_printer, nuv_list, nuv_watch) are numbers in the dress of pointers: never followed,
// never used again. One that was freed, or is of another kind, gives NUV_RESULT_BAD_HANDLE. Each is
// freed by its _free function, which accepts null and handles that are gone.
//
// Threads. Any function from any thread. Calls on one printer take turns in the order in which they
// came; `call.time_limit_ms` counts from the call, not from the turn. Freeing a handle while other
// threads are in calls on it ends these with NUV_RESULT_CANCELLED and waits for them.
//
// Callbacks return 1 to go on and 0 to end; whatever is not 1 ends, so that what a language makes
// of a failed callback never goes on. They run without a lock held. Those that belong to one call
// run on that call's thread and are not used after it; on the printer of that call they may only
// call _cancel and _free, all else is NUV_RESULT_BUSY. Those that outlive their
// call, of nuv_printer_watch and nuv_log_to, have `release(user)`: called once, after the last
// callback, also when the call fails; only there may what `user` points to be destroyed. _free
// inside any callback does not wait. In a structure that a callback is handed `size` is the
// library's: read no field beyond it. A callback must neither throw nor longjmp.
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

typedef struct nuv_printer nuv_printer;  // a printer that was opened
typedef struct nuv_list nuv_list;        // what a search or a query found
typedef struct nuv_watch nuv_watch;      // a printer that is looked at regularly

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
  NUV_RESULT_CANCELLED = 11,        // nuv_printer_cancel, still_wanted, or _free
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
  int32_t system_error;  // of the system, for later versions: 0, none is told yet
  nuv_text message;      // for a person: printer, what was wanted, what happened
} nuv_error;

// Asked on the calling thread every 200 ms, at the latest, while a call waits. 0 ends the call,
// within 0.6 s, with NUV_RESULT_CANCELLED.
typedef int32_t (*nuv_still_wanted)(void* user);

// How long a call may last and who can end it. May be used for many calls, also at the same time.
typedef struct nuv_call {
  uint32_t size;
  int32_t time_limit_ms;          // 0: the limits of the wire, 36 s per answer and three attempts
  nuv_still_wanted still_wanted;  // may be null
  void* user;
} nuv_call;

// Called once, after the last callback with `user`. May be null where it is asked for.
typedef void (*nuv_release)(void* user);

// ---- Lists --------------------------------------------------------------------------------------

typedef struct nuv_identity nuv_identity;
typedef struct nuv_access_point nuv_access_point;

// Number of items; 0 for null and for a handle that is gone.
NUV_PRINTER_API int32_t nuv_list_count(const nuv_list* list);

// Copies item `index`, from 0, of a list of that type. NUV_RESULT_INVALID_ARGUMENT beyond its end
// and for a list of something else.
NUV_PRINTER_API nuv_result nuv_list_get_identity(nuv_identity* out, const nuv_list* list,
                                                 int32_t index);
NUV_PRINTER_API nuv_result nuv_list_get_access_point(nuv_access_point* out, const nuv_list* list,
                                                     int32_t index);

NUV_PRINTER_API void nuv_list_free(nuv_list* list);

// ---- Finding printers ---------------------------------------------------------------------------

enum { NUV_LINK_NETWORK = 1, NUV_LINK_USB = 2 };  // may be added up in nuv_search_options

// Who a printer is and where: what a search finds, what opens a printer, what an open one tells.
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
// One that this process has open is asked over that connection. An address is asked three times. A
// printer that tells another address than the one asked, being behind a translating router, is
// listed with the one asked; its TCP port must be forwarded unchanged. A malformed, broadcast or
// multicast address is NUV_RESULT_INVALID_ARGUMENT, named in `error`; in the environment variable
// it is logged and passed over.
NUV_PRINTER_API nuv_result nuv_search_printers(nuv_list** out, const nuv_search_options* options,
                                               const nuv_call* call, nuv_error* error);

// ---- Opening a printer --------------------------------------------------------------------------

// Connects to a printer. A handle is one connection; the next call makes it anew when it was lost.
// A printer serves one client: see nuv_printer_let_go. NUV_RESULT_BUSY when this process has that
// printer open already (same link, address and port).
//
// By an identity: `link`, `address` and, on the network, `tcp_port` count; may be made by hand.
NUV_PRINTER_API nuv_result nuv_printer_open(nuv_printer** out, const nuv_identity* printer,
                                            const nuv_call* call, nuv_error* error);
// By IPv4 address, with an own UDP port if need be ("10.0.5.7", "10.0.5.7:6014"): that printer is
// asked for its TCP port first, no other is. No names: NUV_RESULT_INVALID_ARGUMENT.
NUV_PRINTER_API nuv_result nuv_printer_open_address(nuv_printer** out, const char* address,
                                                    const nuv_call* call, nuv_error* error);
// By whole serial number, exactly: searches as nuv_search_printers does (`options` may be null;
// `found` is told) and ends at the first that has it.
NUV_PRINTER_API nuv_result nuv_printer_open_serial(nuv_printer** out, const char* serial,
                                                   const nuv_search_options* options,
                                                   const nuv_call* call, nuv_error* error);

// Ends the calls under way on this printer, those waiting for their turn included, within 0.6 s,
// with NUV_RESULT_CANCELLED; none that begins later. Its watches go on. Does not wait. On the
// network the next call connects anew, over USB it first waits for the answer owed, at most 3 s.
// For a cancel that must not come too early, still_wanted is the means.
NUV_PRINTER_API nuv_result nuv_printer_cancel(nuv_printer* printer);

// Closes the connection until the next call, so that other programs reach the printer.
NUV_PRINTER_API nuv_result nuv_printer_let_go(nuv_printer* printer);

// Closes the connection, cancels calls under way and waits for them; ends the printer's watches.
NUV_PRINTER_API void nuv_printer_free(nuv_printer* printer);

// ---- Identity and state -------------------------------------------------------------------------

// Commands 101 and 197; of dental models also 354 and 140. What a later command does not get is not
// known; only a failure of 101 is one of the call.
NUV_PRINTER_API nuv_result nuv_printer_get_identity(nuv_identity* out, nuv_printer* printer,
                                                    const nuv_call* call, nuv_error* error);

enum {  // others are passed on
  NUV_STATE_IDLE = 0,
  NUV_STATE_PRINTING = 1,
  NUV_STATE_RECEIVING = 2,  // a job is opened and its data not yet complete
  NUV_STATE_ERROR = 3
};

typedef struct nuv_state {
  uint32_t size;
  uint32_t reserved;     // 0
  nuv_int state;         // NUV_STATE_...; always known after success
  nuv_int error_number;  // in error
  nuv_int layer;         // while printing, from 1
  nuv_int percent;       // while printing, 0 to 100
  nuv_int minutes_left;  // while printing; a printer's 0 counts as not known
  nuv_text job_name;     // while printing; ends at its first blank
  int64_t ends_at;       // seconds since 1970 UTC by this computer's clock; 0: not known
} nuv_state;

// Command 102.
NUV_PRINTER_API nuv_result nuv_printer_get_state(nuv_state* out, nuv_printer* printer,
                                                 const nuv_call* call, nuv_error* error);

typedef struct nuv_job {
  uint32_t size;
  nuv_int index;    // one more for each job that the printer accepts; 0 before the first
  nuv_int bytes;    // model data received for it
  nuv_int layers;   // of the whole job
  nuv_int minutes;  // of the whole job
  nuv_text name;    // ends at its first blank
} nuv_job;

// The current or last job: commands 107 and 157. Fails only when both do.
NUV_PRINTER_API nuv_result nuv_printer_get_job(nuv_job* out, nuv_printer* printer,
                                               const nuv_call* call, nuv_error* error);

// Skips the warm-up that a laser printer is in: command 112.
NUV_PRINTER_API nuv_result nuv_printer_skip_warmup(nuv_printer* printer, const nuv_call* call,
                                                   nuv_error* error);

// ---- Resin --------------------------------------------------------------------------------------

enum {  // a printer's refusal number and 1; others are passed on likewise
  NUV_RESIN_STATE_READY = 0,
  NUV_RESIN_STATE_ABSENT = 1,  // no cartridge or tank in place
  NUV_RESIN_STATE_TAG_UNREADABLE = 2,
  NUV_RESIN_STATE_EXPIRED = 3,  // past its use-by date
  NUV_RESIN_STATE_WRONG = 4,    // not a resin for this printer
  NUV_RESIN_STATE_TOO_LITTLE = 5
};

typedef struct nuv_resin {
  uint32_t size;
  nuv_int state;  // NUV_RESIN_STATE_...
  nuv_int remaining_ml;
  nuv_int tank_volume_ml;
  nuv_int open_mode;       // 1 when the printer takes resins without a tag, else 0
  nuv_int tag_registered;  // 1 when the tag of the resin in place is registered and right, else 0
  nuv_text code;
  nuv_text type;
  nuv_text name;
  nuv_text lot;
  nuv_text use_by;  // year month day, as 20270131
} nuv_resin;

// Command 105, 120 or 356, as the model has it; of models with a history also 335 and 219. A resin
// that the printer refuses is an answer: NUV_RESULT_OK, with the reason in `state`.
NUV_PRINTER_API nuv_result nuv_printer_get_resin(nuv_resin* out, nuv_printer* printer,
                                                 const nuv_call* call, nuv_error* error);

// ---- Settings -----------------------------------------------------------------------------------

// The printer refuses values out of range, and laser power on models without laser: REFUSED.
// Power of the laser, 0 to 100: command 159 with 0, 332 with 0.
NUV_PRINTER_API nuv_result nuv_printer_get_laser_power_percent(int32_t* out, nuv_printer* printer,
                                                               const nuv_call* call,
                                                               nuv_error* error);
NUV_PRINTER_API nuv_result nuv_printer_set_laser_power_percent(nuv_printer* printer,
                                                               int32_t percent,
                                                               const nuv_call* call,
                                                               nuv_error* error);
// Z compensation, -500 to 500 micrometres: command 159 with 1, 332 with 1.
NUV_PRINTER_API nuv_result nuv_printer_get_z_compensation_um(int32_t* out, nuv_printer* printer,
                                                             const nuv_call* call,
                                                             nuv_error* error);
NUV_PRINTER_API nuv_result nuv_printer_set_z_compensation_um(nuv_printer* printer,
                                                             int32_t micrometres,
                                                             const nuv_call* call,
                                                             nuv_error* error);

typedef struct nuv_scaling {
  uint32_t size;
  uint32_t reserved;  // 0
  double x[2];        // factors, above 0 and at most 10; 0: not told
  double y[2];
  double z[2];
} nuv_scaling;

// Commands 369 and 370 (six decimals).
NUV_PRINTER_API nuv_result nuv_printer_get_scaling(nuv_scaling* out, nuv_printer* printer,
                                                   const nuv_call* call, nuv_error* error);
NUV_PRINTER_API nuv_result nuv_printer_set_scaling(nuv_printer* printer, const nuv_scaling* scaling,
                                                   const nuv_call* call, nuv_error* error);

// Command 196; nuv_printer_get_identity reads it. No line end; runs of blanks come back as one.
NUV_PRINTER_API nuv_result nuv_printer_set_nickname(nuv_printer* printer, const char* nickname,
                                                    const nuv_call* call, nuv_error* error);

// ---- Wireless and network -----------------------------------------------------------------------

enum { NUV_SECURITY_OPEN = 0, NUV_SECURITY_SECURED = 1 };  // others are passed on

struct nuv_access_point {
  uint32_t size;
  nuv_int joined;  // 1 when the printer is joined to it, else 0
  nuv_int signal_percent;
  nuv_int security;  // NUV_SECURITY_...
  nuv_int channel;
  nuv_text name;
};

// The access point `name`, or for null the one joined (`joined` 0 and nothing else known when there
// is none): command 190. NUV_RESULT_REFUSED when it is out of reach.
NUV_PRINTER_API nuv_result nuv_printer_get_access_point(nuv_access_point* out, nuv_printer* printer,
                                                        const char* name, const nuv_call* call,
                                                        nuv_error* error);

// Those in reach, strongest first: a list of nuv_access_point with only the names known, command
// 198. However the network cuts the answer, the list is whole.
NUV_PRINTER_API nuv_result nuv_printer_get_access_points(nuv_list** out, nuv_printer* printer,
                                                         const nuv_call* call, nuv_error* error);

// Joins `name`, with `key` or, for null, an open one; address by DHCP: command 191 with 1. REFUSED
// when it is out of reach or the key is wrong, an earlier join then stays. The key appears in no
// error and no log.
NUV_PRINTER_API nuv_result nuv_printer_join_access_point(nuv_printer* printer, const char* name,
                                                         const char* key, const nuv_call* call,
                                                         nuv_error* error);
// Leaves the one joined: command 191 with 2. A printer that leaves the network over which it was
// reached, here or by joining another, cannot say so: UNCONFIRMED.
NUV_PRINTER_API nuv_result nuv_printer_leave_access_point(nuv_printer* printer,
                                                          const nuv_call* call, nuv_error* error);

enum { NUV_PORT_IN_USE = 0, NUV_PORT_WIRED = 1, NUV_PORT_WIRELESS = 2 };

typedef struct nuv_network {
  uint32_t size;
  uint32_t reserved;  // 0
  nuv_text address;   // IPv4 addresses as text; a printer's 0.0.0.0 counts as not known
  nuv_text netmask;
  nuv_text gateway;
  nuv_text name_server;
  nuv_text second_name_server;
  nuv_text mac;
} nuv_network;

// One of the printer's ports (NUV_PORT_...): command 192.
NUV_PRINTER_API nuv_result nuv_printer_get_network(nuv_network* out, nuv_printer* printer,
                                                   int32_t port, const nuv_call* call,
                                                   nuv_error* error);

// ---- Versions -----------------------------------------------------------------------------------

typedef struct nuv_versions {
  uint32_t size;
  uint32_t reserved;  // 0
  nuv_text android_board;
  nuv_text android_loader;
  nuv_text lcm_panel;
} nuv_versions;

// Versions of the boards that Android-board printers have: commands 310 and 504. Those of firmware
// and controller are in nuv_identity.
NUV_PRINTER_API nuv_result nuv_printer_get_versions(nuv_versions* out, nuv_printer* printer,
                                                    const nuv_call* call, nuv_error* error);

// ---- Job history --------------------------------------------------------------------------------

enum {  // others are passed on
  NUV_JOB_FINISHED = 0,
  NUV_JOB_CANCELLED = 1,
  NUV_JOB_FAILED = 2,
  NUV_JOB_NOT_ENDED = 3
};

typedef struct nuv_job_record {
  uint32_t size;
  nuv_int index;
  nuv_int result;  // NUV_JOB_...
  nuv_int layers;
  nuv_int minutes;
  nuv_int resin_ml;
  nuv_int layer_thickness_um;
  nuv_int exposure_ms;
  nuv_int bottom_exposure_ms;
  nuv_int laser_power_percent;
  nuv_text name;
  nuv_text resin_code;
  nuv_text resin_lot;
  nuv_text started;  // by the printer's clock, as 20261121T103000
  nuv_text ended;    // likewise; not known while it has not ended
} nuv_job_record;

// Job `index` of the history, from 1: commands 174 to 177. REFUSED when there is no such job.
NUV_PRINTER_API nuv_result nuv_printer_get_job_record(nuv_job_record* out, nuv_printer* printer,
                                                      int32_t index, const nuv_call* call,
                                                      nuv_error* error);

typedef struct nuv_job_counts {
  uint32_t size;
  nuv_int started;
  nuv_int finished;
  nuv_int cancelled;
  nuv_int failed;
} nuv_job_counts;

// Jobs ever, or with `since_power_on` 1 since the printer was switched on: command 169.
NUV_PRINTER_API nuv_result nuv_printer_get_job_counts(nuv_job_counts* out, nuv_printer* printer,
                                                      int32_t since_power_on, const nuv_call* call,
                                                      nuv_error* error);

// Index of the last job that a host has read, kept by the printer: commands 170 and 171.
NUV_PRINTER_API nuv_result nuv_printer_get_last_read_job(int32_t* out, nuv_printer* printer,
                                                         const nuv_call* call, nuv_error* error);
NUV_PRINTER_API nuv_result nuv_printer_set_last_read_job(nuv_printer* printer, int32_t index,
                                                         const nuv_call* call, nuv_error* error);

// ---- Light engine and sensors -------------------------------------------------------------------

typedef struct nuv_sensors {
  uint32_t size;
  nuv_int chamber_top_c;  // degrees Celsius
  nuv_int chamber_bottom_c;
  nuv_int tank_c;
  nuv_int resin_level_percent;
  nuv_int tank;         // number of the tank in place, 0 for none
  nuv_int z_limit_top;  // this and the following 1 or 0
  nuv_int z_limit_bottom;
  nuv_int wiper_home;
  nuv_int y_home;
  nuv_int y_end;
  nuv_int lid_closed;
  nuv_int cartridge;
  nuv_int platform;
  nuv_int moving_to_reference;
} nuv_sensors;

// Command 301; of Android-board printers also 515. Fails only when both do.
NUV_PRINTER_API nuv_result nuv_printer_get_sensors(nuv_sensors* out, nuv_printer* printer,
                                                   const nuv_call* call, nuv_error* error);

typedef struct nuv_laser {
  uint32_t size;
  nuv_int photodiode_minimum;  // readings, 0 to 1023
  nuv_int photodiode_maximum;
  nuv_int photodiode_mean;
  nuv_int pulse_width[5];  // 0 to 4095
} nuv_laser;

// Laser `number`, 1 to 4, of models with a scan unit: commands 186 and 303.
NUV_PRINTER_API nuv_result nuv_printer_get_laser(nuv_laser* out, nuv_printer* printer,
                                                 int32_t number, const nuv_call* call,
                                                 nuv_error* error);

typedef struct nuv_scan_unit {  // raw numbers of the flash; [0] alone on models with one scan line
  uint32_t size;
  nuv_int scan_centre[3];
  nuv_int line_length[3];
  nuv_int trigger_delay[3];
  nuv_int z_offset[2];
  nuv_int polygon_speed;
  nuv_int start;
  nuv_int line_width;
  nuv_int y_offset;
} nuv_scan_unit;

// Command 327.
NUV_PRINTER_API nuv_result nuv_printer_get_scan_unit(nuv_scan_unit* out, nuv_printer* printer,
                                                     const nuv_call* call, nuv_error* error);

// Hours that the light source of an LED printer has been on: command 708.
NUV_PRINTER_API nuv_result nuv_printer_get_led_hours(int32_t* out, nuv_printer* printer,
                                                     const nuv_call* call, nuv_error* error);

// ---- Jobs and firmware --------------------------------------------------------------------------

enum {                                // reasons against sending a file, added up in `findings`
  NUV_FINDING_FILE_DAMAGED = 1,       // or no print file; can never be accepted
  NUV_FINDING_OTHER_MODEL = 2,        // its machine ID is of another family than the model
  NUV_FINDING_RESIN_FORBIDS = 4,      // nuv_resin.state is none to print with
  NUV_FINDING_RESIN_TOO_LITTLE = 8,   // less left than the file's argument resin_ml
  NUV_FINDING_PRINTER_NOT_IDLE = 16,  // printing, receiving or in error; can never be accepted
  NUV_FINDING_NO_IMAGE = 32,          // firmware: plainly something else, such as a picture
  NUV_FINDING_IMAGE_WRONG_SIZE = 64   // of an LCM panel; can never be accepted
};

typedef struct nuv_check {
  uint32_t size;
  int32_t findings;         // NUV_FINDING_..., 0: fit to be sent
  nuv_text message;         // for a person: every finding, with file and printer
  nuv_text machine_id;      // of the file
  nuv_text machine_family;  // of that ID, for a person
  nuv_text printer_model;
  nuv_int resin_needed_ml;
  nuv_int resin_left_ml;
  nuv_int layers;   // of the file
  nuv_int minutes;  // of the file
  int64_t bytes;    // model data that will be sent
} nuv_check;

// Looks whether print file `path` can be sent to `printer`, or, for null, only at the file. What
// cannot be known is no finding. Commands 102, 101, and 105, 120 or 356. A file that cannot be
// opened, or is sliced for a machine that no printer of this family of libraries is, is
// NUV_RESULT_BAD_FILE, a damaged one a finding; SYSTEM when the print-file library is missing.
// Reads the whole file, about a second per GiB; BUSY while this process sends a job.
NUV_PRINTER_API nuv_result nuv_printer_check(nuv_check* out, nuv_printer* printer, const char* path,
                                             const nuv_call* call, nuv_error* error);

enum {
  NUV_STAGE_CHECKING = 1,  // reading the file, asking the printer
  NUV_STAGE_OPENING = 2,
  NUV_STAGE_SENDING = 3,
  NUV_STAGE_WAITING = 4,  // for free memory in the printer
  NUV_STAGE_CONFIRMING = 5
};

typedef struct nuv_progress {
  uint32_t size;
  int32_t stage;        // NUV_STAGE_...
  int64_t bytes_sent;   // model data or image, without line ends and headers
  int64_t bytes_total;  // 0 while checking, and of a text before its first line
} nuv_progress;

// Told each new stage, each line or block, and every second while waiting. 0 cancels the transfer
// at the end of the line or block.
typedef int32_t (*nuv_progress_function)(const nuv_progress* progress, void* user);

typedef struct nuv_send_options {
  uint32_t size;
  int32_t accept;                  // findings that a person has accepted
  int32_t android_kind;            // Android-board image: number of its kind; 0: 1
  int32_t reserved;                // 0
  nuv_progress_function progress;  // may be null
  void* user;
} nuv_send_options;

enum {
  NUV_OUTCOME_NONE = 0,         // nothing was sent, or no job opened; the result says why
  NUV_OUTCOME_ACCEPTED = 1,     // OK: the printer says that it has all of it
  NUV_OUTCOME_SENT = 2,         // OK: all was sent; the printer cannot say more
  NUV_OUTCOME_CANCELLED = 3,    // CANCELLED or TIME_LIMIT; BAD_FILE: it could not be read on
  NUV_OUTCOME_REFUSED = 4,      // REFUSED: the printer did not take it
  NUV_OUTCOME_UNCONFIRMED = 5,  // UNCONFIRMED; LOST, NO_ANSWER or UNREADABLE where the printer
                                // cannot have all
  NUV_OUTCOME_NOT_FIT = 6       // NOT_FIT: findings that nobody has accepted; nothing was sent
};

typedef struct nuv_outcome {
  uint32_t size;
  int32_t outcome;       // NUV_OUTCOME_...
  int32_t findings;      // NUV_FINDING_..., also those accepted
  int32_t may_hold_job;  // 1: the printer may wait for the rest; nuv_printer_abandon_job frees it
  int64_t bytes_sent;
  nuv_int job_index;  // of the job that was accepted; models that keep no count tell none
  nuv_text message;   // for a person, also the printer's answer to a panel update
} nuv_outcome;

// Sends print file `path`: the check, the opening, the data, about ten lines a second, and the
// question (command 157) whether a new job with all bytes is there, also after the connection was
// lost. Result and `out` go together as NUV_OUTCOME_... says: OK means accepted or sent, and `out`
// is filled whatever the result. Findings that are not in options.accept end it with NOT_FIT: a
// host shows out.message, asks, and sends again with options.accept = out.findings. A cancel takes
// effect at the end of a line: the job is abandoned (command 104) and the answer awaited for 0.4 s;
// out.may_hold_job is 1 when none came. In the middle of a line that the printer does not take the
// connection is dropped. Without call.time_limit_ms there is no limit for the whole. One print
// job per process, through any library of this family: a second one is BUSY at once. `options` may
// be null.
NUV_PRINTER_API nuv_result nuv_printer_send(nuv_outcome* out, nuv_printer* printer,
                                            const char* path, const nuv_send_options* options,
                                            const nuv_call* call, nuv_error* error);

// Sends a text file of printer commands, line by line, as it stands. Printers confirm no such file:
// SENT at best. The printer must be idle: else NOT_FIT.
NUV_PRINTER_API nuv_result nuv_printer_send_text(nuv_outcome* out, nuv_printer* printer,
                                                 const char* path, const nuv_send_options* options,
                                                 const nuv_call* call, nuv_error* error);

enum { NUV_PART_ENGINE = 1, NUV_PART_ANDROID_BOARD = 2, NUV_PART_LCM_PANEL = 3 };

// Replaces the firmware of a part (NUV_PART_...) by the image in file `path`: commands 141, 506 and
// 507, or 188 and 189. The printer must be idle. Ends at the first block on a lost connection.
// Engine: SENT at best. Of an image only what is plainly something else is a finding: print file,
// picture, PDF, empty, for the engine also an archive; a text that is neither Intel HEX nor
// S-records. A panel image has exactly 21504 bytes.
NUV_PRINTER_API nuv_result nuv_printer_update(nuv_outcome* out, nuv_printer* printer, int32_t part,
                                              const char* path, const nuv_send_options* options,
                                              const nuv_call* call, nuv_error* error);

// Abandons the job that is received or printed: command 104 with 2.
NUV_PRINTER_API nuv_result nuv_printer_abandon_job(nuv_printer* printer, const nuv_call* call,
                                                   nuv_error* error);

// ---- Raw ----------------------------------------------------------------------------------------

// Holds every reply with its NUL.
#define NUV_RAW_REPLY_BYTES 65537

// Sends `line`, to which the line end is added, and copies the reply without its line end, bytes as
// they came, and a NUL to `reply`, of `capacity` bytes. Null for `line` sends nothing and reads one
// more reply. *length: bytes of the reply without the NUL; with TOO_SMALL `reply` has its
// beginning. One attempt; a printer's NG is a reply too.
NUV_PRINTER_API nuv_result nuv_printer_raw(char* reply, size_t capacity, size_t* length,
                                           nuv_printer* printer, const char* line,
                                           const nuv_call* call, nuv_error* error);

// ---- Watching -----------------------------------------------------------------------------------

enum {
  NUV_EVENT_STATE = 1,       // the printer answered
  NUV_EVENT_SILENT = 2,      // it can be reached but does not answer
  NUV_EVENT_GONE = 3,        // it cannot be reached
  NUV_EVENT_PRINT_ENDED = 4  // the print that the last event showed is over; `state` is what is now
};

typedef struct nuv_event {
  uint32_t size;
  int32_t event;           // NUV_EVENT_...
  const nuv_state* state;  // the last one that is known; null before the first answer
  const nuv_job* job;      // of the running or ended print, when the printer tells; else null
  int64_t last_answer;     // seconds since 1970 UTC; 0 before the first
  nuv_int job_result;      // at the end: NUV_JOB_..., of models with a history
  int32_t changed;         // 1 when this event tells something else than the one before
  nuv_result reason;       // silent, gone: why
} nuv_event;

// Told of each look, on a thread of the library, one at a time per watch; the event and all it
// points to end with the call. 0 ends the watch.
typedef int32_t (*nuv_watch_function)(const nuv_event* event, void* user);

// Looks at a printer every `interval_ms` (at least 1000): command 102, once per print 107 and 157,
// at its end 175. Shares the printer's connection and takes turns with other calls; lets go of it
// for a moment at least every 10 s. A printer that is back is found within two intervals; one
// switched off is told within two, never below 2 s (over TCP, by the system's means). One that is
// reached and says nothing for an interval, at least 2 s, is silent. Nothing is sent, and nothing
// told, while a job or an image is. A silent printer delays no other watch. The first look is at
// once. `release` is called also when this fails.
NUV_PRINTER_API nuv_result nuv_printer_watch(nuv_watch** out, nuv_printer* printer,
                                             int32_t interval_ms, nuv_watch_function function,
                                             void* user, nuv_release release);

// Waits until the watch has ended: by its function, or with its printer. OK; TIME_LIMIT (default
// none) and CANCELLED leave it running. BUSY inside its own function.
NUV_PRINTER_API nuv_result nuv_watch_wait(nuv_watch* watch, const nuv_call* call);

// Ends the watch, within 0.6 s, and waits for a callback under way; `release` has been called when
// it returns. Inside a callback it does not wait: `release` comes later.
NUV_PRINTER_API void nuv_watch_free(nuv_watch* watch);

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

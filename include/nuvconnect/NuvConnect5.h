// NuvConnect5: connection library for resin 3D printers. The exported functions.
//
// Reading order: life cycle, finding printers, state, jobs, callbacks; then the rest by topic.
//
// Results. Every int export returns -1 (NUV_NO_INSTANCE), and touches no argument, while no
// framework exists; otherwise a code of ResultCodes.h. A query returns 0, 1 when the printer did
// not answer, or 29 when it answered without "OK"; each failed query also calls the error-code
// callback once with (result, command). There are three attempts with pauses of 1 s, so a printer
// that says nothing holds a query for 110 s on the network (36 s each) and 11 s on USB (3 s each),
// and one that has ended the connection for 2 s.
//
// Strings are 8-bit and NUL-terminated. `char* out` buffers are filled by unbounded copies: the
// library asks for no size and copies whatever the printer reported, so give each NUV_TEXT_BYTES
// bytes, which holds any printer's value. A value beyond that, which only a broken printer sends,
// is cut to it. A function with ONE string output writes it only when it returns 0; a function with
// SEVERAL writes all of them whatever it returns, so after a failure they are empty.
//
// String lists: `list` is an array of `*count` buffers of `entrySize` + 1 bytes EACH: a string as
// long as entrySize or longer is cut to entrySize characters and a NUL is written behind them.
// Afterwards *count is the number of strings found, also when that is more than were copied, and
// the copy is made whatever the function returns.
//
// Integer outputs of a failed query are 0 unless said otherwise. A null pointer is allowed only
// where said.
//
// Paths of type `wchar_t` become the bytes that open the file and name it to printers: UTF-8 on
// Linux, whatever the locale; the system's ANSI code page on Windows. 4 when there is no such form.
//
// Threads. API_Initial first, API_Close last, neither beside another call. All others may be
// called from any thread; one request and its reply are never mixed with another's. Listing,
// choosing and jobs change what is current: do those from one thread at a time.
//
// Several printers in one program need a framework each (GetConnectingInstance). A printer serves
// one client, so list with all of them before connecting the first: a listing opens every printer,
// and one that is held by another framework does not open or says nothing. Callbacks do not tell
// which printer they are about: give each framework its own functions. One print file is sent at a
// time in the whole program; all else runs side by side. Search settings are common to all.
//
// Printers behind a router, where broadcasts do not reach: the environment variable
// NUVCONNECT_SEARCH, "10.0.5.7 10.0.6.2:6014 broadcast", names the addresses to ask, each with an
// own UDP port if need be, up to 1,000, and says by the word broadcast whether the networks of the
// host are searched too. Read at each search but that of API_SearchNetworkDevice; unset or blank,
// the networks are searched. docs/protocol.md tells how addresses are asked.
//
// Exceptions. A reply whose code or field is no number leaves the call as the C++ exception
// std::invalid_argument ("invalid stoi argument"), one beyond 32 bits as std::out_of_range ("stoi
// argument out of range"); a lack of memory as std::bad_alloc. docs/protocol.md has the wire.
// A host that cannot catch them (in C, in another language, or of another compiler than the
// library's) is ended by one garbled reply unless it sets the environment variable
// NUVCONNECT_NO_EXCEPTIONS, to whatever value, before API_Initial, which reads it. Each then
// becomes the result 1, or false; outputs are those of any failed call; the error-code callback is
// called with (1, command), the command 0 where none is to blame; a diagnostic has the text. What a
// callback of the host throws passes through the library unchanged in any case.
//
// What crosses the boundary as a C++ object (the interface of GetConnectingInstance, the strings
// of NuvPrintingInfoCallback) needs the compiler that built the library; all else is plain C.
#ifndef NUVCONNECT_NUVCONNECT5_H_
#define NUVCONNECT_NUVCONNECT5_H_

#include <stddef.h>

#include "nuvconnect/Callbacks.h"
#include "nuvconnect/ResultCodes.h"

// Version of these headers: 10000 * major + 100 * minor + patch.
#define NUVCONNECT_VERSION 100

// Functions need no dllimport: the import library resolves their plain names.
#if defined(_WIN32) && defined(NUVCONNECT_BUILDING)
#define NUV_API __declspec(dllexport)
#elif defined(_WIN32)
#define NUV_API
#else
#define NUV_API __attribute__((visibility("default")))
#endif

// Size that holds any single string a printer reports, with its NUL.
#define NUV_TEXT_BYTES 4096

// Length of an image of the LCM panel.
#define NUV_PANEL_IMAGE_BYTES 21504

#ifdef __cplusplus
namespace Nuv {
namespace Connect {
class IConnectingFramework;
}
}  // namespace Nuv
extern "C" {
#else
#include <stdbool.h>
#endif

// ---- Life cycle ---------------------------------------------------------------------------------

// Creates the framework; a second call does nothing. Returns 0 (1: no memory, see Exceptions).
NUV_API int API_Initial(void);

// Ends the status thread and destroys the framework with its connection and callbacks. The thread's
// sleep ends at once; its wait for a reply, a connection that it is making and a write under way
// end within 0.6 s.
// Waited for is the printing-info callback, in which a job now ends with 1, 16 or 20. Inside that
// callback nothing is waited for (Callbacks.h). Harmless without a framework. Not while another
// thread is inside an export.
NUV_API void API_Close(void);

#ifdef __cplusplus
// Makes a new framework of the caller's own, unrelated to the one of the API_ functions. The
// caller deletes it through the interface.
NUV_API Nuv::Connect::IConnectingFramework* GetConnectingInstance(void);
#endif

// ---- Finding and choosing printers --------------------------------------------------------------

// Port of the UDP search, 1 to 65535, 6013 at start. Process-wide; kept after API_Close.
// The two names do the same. Return 0.
NUV_API int API_SetUpdPort(int port);
NUV_API int API_SetBroadCastPort(int port);

// Searches by the local link's own UDP search. `address`, `netmask` (null: empty): the one network
// to search, both empty for every network of the host. `timeoutMs`: wait after the last answer, 0
// or below for 3000. `list`: the replies as they came, also equal ones, cut at 255 bytes. Returns
// 0; 2 when none came or the message could not be sent. Changes nothing that an index counts in.
//
// Every search of a network ends after ten such waits or 30 s, whichever is longer, and after 4096
// replies or 1 MiB of them; the rest is dropped with a diagnostic.
NUV_API int API_SearchNetworkDevice(char** list, int* count, int entrySize, const char* address,
                                    const char* netmask, int timeoutMs);

// Lists the printers of `kind` (0 USB, any other the network) by opening each in turn and asking
// its identity (command 101). `list`: their serial numbers; of a BEGO printer the whole one
// (command 140), of which API_GetPrinterInfo has the last six characters. `timeoutMs`: how long the
// network search waits after the last answer on each network, 0 or below for 3000; it stays set for
// later searches. Opening the first one closes what was open; afterwards nothing is open.
// Returns 0; 1 negative kind, or a BEGO printer does not tell its serial number; 2 nothing found,
// and nothing closed; 3 a printer could not be opened.
//
// A printer that opens but says nothing (110 s) is a row with empty texts. So is an answer with a
// name in place of an address: names are not looked up, and such a row cannot be chosen. After 256
// rows, or 10 minutes of opening, the printers left are dropped with a diagnostic.
//
// Each listing makes a new search, in which the indexes of API_ChooseDevice and the addresses of
// API_ConnectNetWorkDevice count from then on. One that succeeds also fills the table (of kind 0 or
// 1) behind API_GetDeviceInfo and API_ConnectDeviceBySN; after 1, 2 and 3 that is still the earlier
// one. When a printer has ended the listing (3, or 1), *count is its index and `list` has those
// before it. Those behind it are opened by API_ChooseDevice from *count + 1 on (3: there is none,
// or it does not open either) and asked who they are, or by their address.
//
// This and API_GetBroadCastResult search one at a time, in all programs of a user; who comes later
// waits.
NUV_API int API_GetDeviceList(int kind, char** list, int* count, int entrySize, int timeoutMs);

// Lists USB printers as API_GetDeviceList does, with a `timeoutMs` of 0, which resets the time
// limit of network searches to 3000. *count: how many were listed.
NUV_API int API_SearchUSBDevice(int* count);

// One text of a listed device: `index` in the table of `kind`, `field` 0 to 3 (NuvDeviceField).
// Returns 0, or 2 (no such device); `out` is written in both cases, empty after a failure.
NUV_API int API_GetDeviceInfo(char* out, int kind, int index, int field);

// Opens device `index` of `kind` and makes it current; what is open of the other kind is closed.
// A USB printer that is open already is kept open; one that was plugged in anew since the listing
// is found again on its port. Returns 0 or 3. After 3 the earlier choice stays, and its connection
// too, except that one on the network is closed before another on the network is tried
// (API_NUVCONNECT_OpenDevice makes it again).
NUV_API int API_ChooseDevice(int kind, int index);

// Opens the first listed device of `kind` whose serial number is exactly `serial` (not null).
// While the table of that kind is empty, this call lists it (time limit 0) and returns 2, whatever
// became of the listing, but 1 for a BEGO printer without a serial number; call again to connect.
// Returns 0; 2 no match; 3 not opened, or a later listing found another printer at that index. As
// to the earlier choice see API_ChooseDevice.
NUV_API int API_ConnectDeviceBySN(int kind, const char* serial);

// Opens the network printer of the last listing, also a failed one, with exactly this `address`
// text (null: empty). Returns 0 or 3; as to the earlier choice see API_ChooseDevice.
NUV_API int API_ConnectNetWorkDevice(const char* address);

// Runs one network search with the stored port and time limit. `list`: the distinct reply lines
// that contain `filter` (null or empty: all), in order of arrival. Returns 0, or 2 when none.
NUV_API int API_GetBroadCastResult(char** list, int* count, int entrySize, const char* filter);

// ---- Identity and state -------------------------------------------------------------------------

// Firmware version, printer name, model name, serial number (of a BEGO printer its last six
// characters), controller version: keys V, N, M, S, C of command 101.
NUV_API int API_GetPrinterInfo(char* version, char* name, char* model, char* serial,
                               char* controller);

// The same of a BEGO printer, its serial number whole, and its date of manufacture (year month
// day): keys V, N, M, S, C, D of command 354. 29 from any other model.
NUV_API int API_GetPrinterInfo_BEGO(char* version, char* name, char* model, char* serial,
                                    char* controller, char* date);

// *status: printer state (NuvPrinterState), key S of command 102; -1 when the query fails.
NUV_API int API_GetPrinterStatus(int* status);

// As above; *errorCode: the printer's error number, key E, written only when the state is 3.
NUV_API int API_GetPrinterStatusWithErrorCode(int* status, int* errorCode);

// Current layer (key L), progress in percent 0 to 100 (the number in key C) and minutes left (key
// T) of command 102. Returns 22 when the printer is not printing; the outputs are then, as after
// every failure, left as they were. A reply without key C counts as a malformed number.
NUV_API int API_GetPrintingStatus(int* layer, int* progressPercent, int* minutesLeft);

// Layers (key L) and minutes (key T) of the whole current or last job, of command 107.
NUV_API int API_GetTotalLayerAndTime(int* totalLayers, int* totalMinutes);

// Skips the warm-up that a laser printer is in: command 112.
NUV_API int API_SkipSLAWarmup(void);

// *processing: 1 while the printer moves to its reference position: key R of command 515.
NUV_API int API_GetRepositionProcessing(int* processing);

NUV_API int API_GetAndroidVersion(char* out);   // of the Android board: key V of command 310
NUV_API int API_GetLCMPanelVersion(char* out);  // of the LCM panel: key V of command 504

// ---- Resin --------------------------------------------------------------------------------------

// Each model answers one of these three.
//
// All but those named below: resin state (key S), resin left in ml (R), resin code (C), tank volume
// in ml (V), lot (Q) of command 105. A refusal that names the resin's state returns 10 to 14
// (ResultCodes.h), or 1 for a state that is none of those; one without a state, from a model that
// has no such query, 29.
NUV_API int API_GetResinInfo2(int* state, int* remaining, char* resinCode, int* tankVolume,
                              char* lot);

// "Zafel 1.0" and "Zafel 1.0A": resin state (key S), resin left in ml (R), use-by
// date as year month day (D), resin type (T) of command 120. Results as API_GetResinInfo2.
NUV_API int API_GetResinInfo(int* state, int* remaining, char* date, char* type);

// BEGO printers: resin name, lot, use-by date, resin left in ml: keys N, L, D, V of command 356.
// 29 from any other model.
NUV_API int API_GetResinInfo_BEGO(char* name, char* lot, char* expiry, char* volume);

// Passes the question on to the printer: *registered is 1 and the result 0 when it accepts command
// 219, that is, the tag of the resin in place is registered and right; else 0 and 29.
NUV_API int API_IsRegisteredCorrectTag(int* registered);

// *supported: 1 when the printer takes resins without a tag: key S of command 335.
NUV_API int API_IsOpenModeSupported(int* supported);

// ---- Settings -----------------------------------------------------------------------------------

// Scaling of the build in X, Y and Z, two factors each, above 0 and at most 10 (the printer refuses
// others with 29): set by command 370, six decimals; read from keys X, Y, Z of command 369, where a
// missing factor is 0 and a malformed one is an exception as above, with "stof" for "stoi".
NUV_API int API_SetBCPScaling(float x1, float x2, float y1, float y2, float z1, float z2);
NUV_API int API_GetBCPScaling(float* x1, float* x2, float* y1, float* y2, float* z1, float* z2);

// Nickname of the printer, any 8-bit text without a line end (with one: 1, nothing is sent):
// command 196, read from key N of command 197. Runs of blanks come back as one. `name` not null.
NUV_API int API_SetNickName(const char* name);
NUV_API int API_GetNickName(char* out);

// Laser power in percent, 0 to 100 (laser printers), and Z compensation in micrometres, -500 to
// 500: set by command 332, read from the second value of command 159 (1 when the reply is about the
// other setting). 29 outside the range.
NUV_API int API_SetLaserPower(int percent);
NUV_API int API_GetLaserPower(int* percent);
NUV_API int API_SetZCompensation(int micrometres);
NUV_API int API_GetZCompensation(int* micrometres);

// ---- Wireless and network -----------------------------------------------------------------------

// Names of the access points in reach, strongest first: the SSID fields of command 198.
NUV_API int API_GetApList(char** list, int* count, int entrySize);

// *connected: 1 when the printer is joined to an access point, else 0: key S of command 190. Of
// this group all but the wired MAC address: 29 from printers without wireless link.
NUV_API int API_IsconnectedAp(int* connected);

// Joins the access point `name` with `key` (null: empty; an empty key joins an open one; both may
// hold blanks): command 191 with 1. 29 when it is out of reach or the key is wrong. The key appears
// in no diagnostic.
NUV_API int API_ConnectAp(const char* name, const char* key);

// Signal in percent (key R) and security (key M: 0 open, 1 secured) of access point `name` (null:
// empty): command 190 with the name. 29 when it is out of reach.
NUV_API int API_GetApAttribute(const char* name, int* signal, int* security);

// Leaves the access point: command 191 with 2.
NUV_API int API_DisconnectAp(void);

// MAC address of the wireless and of the wired port: key MAC of command 192 with 1 and with 0.
NUV_API int API_GetMacAddressWifi(char* out);
NUV_API int API_GetMacAddressLan(char* out);

// ---- Job history --------------------------------------------------------------------------------

// Index of the last job that a host has read: key I of command 170; set by command 171 (29 beyond
// the last job).
NUV_API int API_GetLastUpdatedIndex(int* index);
NUV_API int API_SetLastUpdatedIndex(int index);

// Index of the current or last job (0: none yet), one more for each job that the printer accepts,
// and the model data bytes received for it: keys I and S of command 157.
NUV_API int API_GetCurrJobIndexAndTotalSize(int* index, int* totalSize);

// Job `jobIndex` of the history, from 1; 29 when there is no such job. Commands 174 to 177:
// name (key N), resin code (C), start as 20261121T103000 (T);
// layers (L), minutes (T), resin in ml (V), result (R: 0 finished, 1 cancelled, 2 failed, 3 not
// ended); layer thickness in micrometres (T), exposure (E) and bottom exposure (B) in ms, laser
// power in percent (P); end, or "-" (T), and resin lot (Q).
NUV_API int API_GetJobInfo1(int jobIndex, char* jobName, char* resinCode, char* startTime);
NUV_API int API_GetJobInfo2(int jobIndex, int* layers, int* minutes, int* resinVolume, int* result);
NUV_API int API_GetJobInfo3(int jobIndex, int* layerThickness, int* exposureTime,
                            int* bottomExposureTime, int* laserPower);
NUV_API int API_GetJobInfo4(int jobIndex, char* endTime, char* lot);

// Jobs started, finished, cancelled and failed: keys S, F, C, E of command 169. `kind` 0: all, 1:
// since the printer was switched on.
NUV_API int API_GetJobCounter(int kind, int* started, int* finished, int* cancelled, int* failed);

// ---- Light engine and sensors -------------------------------------------------------------------

// Raw numbers in the flash of the laser scan unit, keys by name: command 327. The first form is the
// Fabrix150's, the second the other models'; the keys of the one that a printer lacks are 0.
NUV_API int API_GetLSUFlashParameterFX150(int* c1, int* c2, int* c3, int* l1, int* l2, int* l3,
                                          int* t1, int* t2, int* t3, int* z1, int* z2);
NUV_API int API_GetLSUFlashParameter(int* c, int* l, int* p, int* s, int* t, int* w, int* y);

// Laser number and pulse widths, 0 to 4095, of `laser` (from 1): keys LSU, P1 to P5 of command 303.
NUV_API int API_GetLSULaserPWMvalues(int laser, int* lsu, int* p1, int* p2, int* p3, int* p4,
                                     int* p5);

// Lowest, highest and mean photodiode reading, 0 to 1023, of `laser` (from 1): the three values of
// command 186.
NUV_API int API_GetPDSensorData(int laser, int* minimum, int* maximum, int* average);

// Hours that the light source of a light-engine printer has been on: key H of command 708.
NUV_API int API_GetLedUseTime(char* out);

// Thirteen sensors: keys C_T, C_B (chamber top and bottom, degrees Celsius), ZLT, ZLB (Z limits),
// V_S (tank number), L_S (resin level, percent), W_H (wiper home), Y_H (Y home), C_LI (lid closed),
// C_P (cartridge), P_S (platform), Y_F (Y far end), T_T (tank, degrees Celsius) of command 301, in
// this order; switches are 0 or 1.
NUV_API int API_GetSensorStatusFX120(int* ct, int* cb, int* zlt, int* zlb, int* vs, int* ls,
                                     int* wh, int* yh, int* cli, int* cp, int* ps, int* yf,
                                     int* tt);

// *type: number of the tank in place, 0 for none: key V_S of command 301.
NUV_API int API_GetTankType(int* type);

// ---- Jobs and data ------------------------------------------------------------------------------

// Sends the print file at `path` to the current printer, about 100 ms a line; while the printer has
// no room in its buffer it waits, for ever if need be: only the cancel callback ends that.
// `progress` (may be null) gets the percentage after each line. The send callbacks run on this
// thread. Diagnostics name the cause of a failure.
// Returns
//   0   all was handed over, on connections that the printer had not ended when they were looked at
//       (see below), or the cancel callback ended it (command 104 with 2 then abandons the job);
//   1   a command of the opening was not answered; or another print file is being sent in this
//       program, or command text or firmware by this framework;
//   4   the file is no regular file, cannot be opened, is damaged, or cannot be sent: `layers` and
//       `print_minutes` must be plain decimals up to 2147483647, and its name, for BEGO and Android
//       printers, without line ends, for these also without ">"; or it cannot be read on, which
//       abandons the job as a cancel does;
//   16  no free buffer when the job was opened (not for Android printers, which are waited for), or
//       the printer could not be opened again while it was waited for;
//   20  a line was not taken, or the printer ended the connection and nothing it sent confirms that
//       it had taken what was written before. After 100 %: not confirmed, as a printer that closes
//       behind the last byte looks the same;
//   21  no sender for the file's machine ID; 23 the NuvFile library cannot be loaded;
//   29  the printer refused to open the job (command 103 or 500).
//
// The printer does not say that it has the data; API_GetCurrJobIndexAndTotalSize, asked before and
// after, does: a new index, and the bytes that the update callback had as `total`. Connect again
// before asking after 16 or 20.
//
// After 16, 20, or an exception of a malformed reply (1: see Exceptions), the job may be open on
// the printer, which keeps it: state 2, and the next opening ends with 29, until the raw command
// "F104 S2\r\n" abandons it. That also ends a running print, so look at the state first.
NUV_API int API_SendPrintFile(const wchar_t* path, NuvJobProgressCallback progress);

// Sends a plain text file of printer commands, line by line, each ended CR LF; empty lines are left
// out. As above, but with no opening, and a cancel (0) sends no command 104. The file is read into
// memory before the first byte goes out. Returns 0; 1 a job or firmware transfer of this framework
// is running; 4 no regular file, not readable, or above 2147483647 bytes of text; 16; 20.
NUV_API int API_SendGCodeFile(const wchar_t* path, NuvJobProgressCallback progress);

// ---- Callbacks: Callbacks.h says what each is told and on which thread. Return 0. ---------------

#ifdef __cplusplus
// The first call with a callback starts the status thread, which every `intervalMs` milliseconds
// (at least 1000) reopens the connection (API_NUVCONNECT_OpenDevice), asks the printer (commands
// 101 and 107) and reports a running print; later calls change nothing. It sends nothing while a
// job or an image is sent. What goes wrong there is told by diagnostics only. 1: the system gave no
// thread.
NUV_API int API_RegisterPrintingInfoCallback(NuvPrintingInfoCallback callback,
                                             unsigned int intervalMs);
#endif
NUV_API int API_RegisterErrorCodeCallback(NuvErrorCodeCallback callback);
NUV_API int API_RegisterSendDataStartCallback(NuvSendDataStartCallback callback);
NUV_API int API_RegisterSendDataUpdateCallback(NuvSendDataUpdateCallback callback);
NUV_API int API_RegisterSendDataCancelCallback(NuvSendDataCancelCallback callback);

// ---- Firmware -----------------------------------------------------------------------------------

// An update is an announcement, the image, and for panel and Android board a command that ends it.
//   Engine: API_SetFWUpdateFileInfo_Engine, API_SendFWData.
//
//   LCM panel: API_StartFWUpdateFileInfo_LCM, API_SendFWPanelData, API_FinishFWUpdateFileInfo_LCM.
//
//   Android: API_SetFWUpdateFileInfo_Android, API_SendFWDataAndroid, API_StartFWUpgradeProcess.
//
// Between announcement and the end of the image no other call may send to the printer, from any
// thread: it would become a part of the image. The printer waits 1 s for the image's next byte.

// Announces an image: engine (`size` in bytes, file name; command 141); Android board (`kind`,
// `size` in bytes, file name; command 506, for boards only); LCM panel (file name; command 188, for
// boards only). Names are not null and hold no line end (1). 29 when the printer refuses: it
// prints, the size is 0, it has no such part. 1 also while a job or a transfer is running.
NUV_API int API_SetFWUpdateFileInfo_Engine(unsigned int size, const char* path);
NUV_API int API_SetFWUpdateFileInfo_Android(unsigned int kind, unsigned int size, const char* path);
NUV_API int API_StartFWUpdateFileInfo_LCM(const char* path);

// Sends an announced image of `length` bytes (below 1: an empty one) in blocks of at most 10240
// bytes, about 15 ms each, on this thread, with the send callbacks. The image is copied first.
// Return 0, or 2 when the cancel callback stopped it (before the next command then reopen the
// connection or wait 1 s), or 1 while a job or another transfer of this framework is running. A
// lost connection is no failure here: what the printer answers to the next command tells. On the
// network a printer that erases its memory may take nothing for 60 s; then it is dropped.
NUV_API int API_SendFWData(const unsigned char* data, int length);
NUV_API int API_SendFWDataAndroid(const unsigned char* data, int length);

// The same for the panel: the first NUV_PANEL_IMAGE_BYTES of `data`, of which nothing further is
// read; 1, and nothing is sent, when `length` is less.
NUV_API int API_SendFWPanelData(const unsigned char* data, int length);

// Ends a panel update: command 189; `out`: the printer's answer, its first value. 29 when the image
// did not arrive whole.
NUV_API int API_FinishFWUpdateFileInfo_LCM(char* out);

// Starts the upgrade of the Android board: command 507. 29 when the image did not arrive whole.
NUV_API int API_StartFWUpgradeProcess(void);

// ---- Raw channel --------------------------------------------------------------------------------

// Reopens the last chosen printer, never another one at its place; closes it. A network connection
// is made anew, a USB printer that is open and owes no reply is kept, and one that was plugged in
// anew at the same port is found. False without a framework.
NUV_API bool API_NUVCONNECT_OpenDevice(void);
NUV_API bool API_NUVCONNECT_CloseDevice(void);

// Sends `command` (null: empty; the caller writes the line end) and writes the reply line, without
// its line feed, to `reply`, at most `maxLen` characters and a NUL: maxLen + 1 bytes. One attempt:
// an empty reply when none came in 36 s (USB: 3 s). Returns 0 (1: see Exceptions).
NUV_API int API_NUVCONNECT_ExecutiveCommand(const char* command, char* reply, int maxLen);

// Reads one more reply line without sending, in the same way.
NUV_API int API_NUVCONNECT_ReceiveCommand(char* reply, int maxLen);

#ifdef __cplusplus
}  // extern "C"
#endif

#endif  // NUVCONNECT_NUVCONNECT5_H_

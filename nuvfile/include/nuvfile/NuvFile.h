// Reading of print files for resin printers: the C interface of the library NuvFile.
//
// The library holds at most one open print file per process. Load opens it and
// checks every byte of it; the other functions read from the file that is open.
//
// Thread-safety: none. Calls must not overlap, whatever threads they come from.
// Errors: by return value only; no exception and no signal leaves the library.
// GetLastErrorText names the fault behind the last call that failed.
//
// Functions that fill a text buffer (`char* out, int capacity`)
//   return the length of the text in bytes, without the terminating NUL. When the
//   length is less than `capacity`, the text and a NUL have been written to `out`;
//   otherwise nothing has been written. `out` may be null when `capacity` is 0, so a
//   first call with (NULL, 0) tells the size. A negative capacity counts as 0.
//
// Functions that fill a binary buffer (`unsigned char* buffer, int capacity`)
//   return the length of the bytes. When the length is not more than `capacity`, the
//   bytes have been written to `buffer`, without a NUL; otherwise nothing has been
//   written. `buffer` may be null when `capacity` is 0. On NUVFILE_READ_ERROR the
//   content of `buffer` is unspecified.
#ifndef NUVFILE_NUVFILE_H_
#define NUVFILE_NUVFILE_H_

// Functions need no dllimport: the import library resolves their plain names.
#if defined(_WIN32) && defined(NUVFILE_BUILDING)
#define NUVFILE_API __declspec(dllexport)
#elif defined(_WIN32)
#define NUVFILE_API
#else
#define NUVFILE_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

// Results of Load. The values are fixed; new ones are added behind the last.
enum NuvFileLoadResult {
  NUVFILE_LOADED = 0,
  NUVFILE_CANNOT_OPEN = 1,       // no such file, no permission, or a null path
  NUVFILE_READ_FAILED = 2,       // the system reported an error while reading
  NUVFILE_NOT_A_PRINT_FILE = 3,  // the file does not begin as a print file does
  NUVFILE_UNKNOWN_VERSION = 4,   // written by a newer program than this library
  NUVFILE_BAD_HEADER = 5,        // header or section table contradict themselves or the file
  NUVFILE_BAD_CHECKSUM = 6,      // bytes have changed since the file was written
  NUVFILE_BAD_INDEX = 7,         // the line index does not fit the data lines
  NUVFILE_BAD_TEXT = 8,          // machine, project or material ID, or an argument
  NUVFILE_BAD_LINE = 9,          // a data line that a printer must not be sent
  NUVFILE_TOO_LARGE = 10,        // a part of the file is larger than this library handles
  NUVFILE_OUT_OF_MEMORY = 11
};

// Negative results of all functions that read from the open file.
enum NuvFileReadResult {
  NUVFILE_NO_FILE = -1,             // no file is open
  NUVFILE_INDEX_OUT_OF_RANGE = -2,  // ReadLayer only
  NUVFILE_READ_ERROR = -3           // the file was damaged or became unreadable after Load
};

// Opens the print file at `path` and verifies all of it, in time proportional to its
// size (about a second per GiB) and in memory that does not depend on it.
// `path`: NUL-terminated; UTF-8 on Linux, the ANSI code page on Windows.
// A file opened earlier is closed first, also when this call fails; after a failure no
// file is open. Returns NUVFILE_LOADED or another value of NuvFileLoadResult.
// The file stays open, and must not be changed, until Close or the next Load.
NUVFILE_API int Load(const char* path);

// Closes the open file; does nothing when none is open. Keeps the last error text.
NUVFILE_API void Close(void);

// The machine that the file was sliced for: 17 letters and digits, so a buffer of
// 18 bytes is enough. Returns the length or NUVFILE_NO_FILE.
NUVFILE_API int GetMachineID(char* out, int capacity);

// Project and material of the job: at most 255 bytes each, empty when the file
// names none. Return the length or NUVFILE_NO_FILE.
NUVFILE_API int GetProjectID(char* out, int capacity);
NUVFILE_API int GetMaterialID(char* out, int capacity);

// The job's arguments, one `name=value` per line, each line ended by LF, in the order
// of the file; at most 1 MiB. Names are unique. The argument `layers` is always there.
// Returns the length or NUVFILE_NO_FILE.
NUVFILE_API int GetFileArguments(char* out, int capacity);

// Sum of the lengths of all data lines in bytes, without line ends: 0 to 2147483647.
// Returns NUVFILE_NO_FILE when no file is open.
NUVFILE_API int GetModelDataSize(void);

// Reads data line `index` (0 is the first) without a line end. The length is 0 to
// 16777216 bytes; an empty line returns 0. Every line costs the same two reads,
// wherever it lies in the file. `reserved`: pass 0; the value has no effect.
// Returns the length, NUVFILE_NO_FILE, NUVFILE_INDEX_OUT_OF_RANGE or NUVFILE_READ_ERROR.
NUVFILE_API int ReadLayer(int index, unsigned char* buffer, int capacity, float reserved);

// The preview picture as a PNG, at most 64 MiB; length 0 when the file has none.
// Returns the length, NUVFILE_NO_FILE or NUVFILE_READ_ERROR.
NUVFILE_API int ReadPreImg(unsigned char* buffer, int capacity);

// The header records that some printers are sent before the data lines, at most 16 MiB
// each; length 0 when the file has none.
// Return the length, NUVFILE_NO_FILE or NUVFILE_READ_ERROR.
NUVFILE_API int ReadL101(unsigned char* buffer, int capacity);
NUVFILE_API int ReadL102(unsigned char* buffer, int capacity);
NUVFILE_API int ReadL103(unsigned char* buffer, int capacity);

// The key bytes as stored, at most 4096; length 0 when the file has none.
// Returns the length, NUVFILE_NO_FILE or NUVFILE_READ_ERROR.
NUVFILE_API int GetAESkey(unsigned char* buffer, int capacity);

// What was wrong in the last call that failed, in English: which part of the file, what
// was expected and what was found. Empty when nothing failed since the last successful
// Load. Works without an open file. Returns the length.
NUVFILE_API int GetLastErrorText(char* out, int capacity);

#ifdef __cplusplus
}  // extern "C"
#endif

#endif  // NUVFILE_NUVFILE_H_

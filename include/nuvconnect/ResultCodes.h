// Result codes of every int-returning export and framework operation.
//
// Plain C. Codes that a printer-side layer produces pass up to the host unchanged, so a host
// switches on these values whatever call returned them.
#ifndef NUVCONNECT_RESULTCODES_H_
#define NUVCONNECT_RESULTCODES_H_

enum NuvResult {
  NUV_NO_INSTANCE = -1,        // no framework: API_Initial was not called, or API_Close was
  NUV_OK = 0,                  // done; a cancelled print job reports NUV_OK too
  NUV_FAILED = 1,              // the printer did not answer; invalid kind; another job is running
  NUV_NOT_FOUND = 2,           // no device, index out of range, search failed
  NUV_CANCELLED = 2,           // a firmware transfer was cancelled
  NUV_CONNECTION_REFUSED = 3,  // the device could not be opened
  NUV_FILE_NOT_READABLE = 4,   // the file cannot be opened, is damaged, or cannot be sent

  // Resin refusals: the printer answered a resin query without "OK" and named its resin state.
  NUV_RESIN_EMPTY = 10,           // resin state 4: too little resin left
  NUV_RESIN_EXPIRED = 11,         // resin state 2: past its date of use
  NUV_RESIN_NO_CARTRIDGE = 12,    // resin state 0: no cartridge or tank in place
  NUV_RESIN_TAG_UNREADABLE = 13,  // resin state 1: the tag cannot be read
  NUV_RESIN_WRONG_TYPE = 14,      // resin state 3: not a resin for this printer

  NUV_NO_BUFFER_SPACE = 16,  // the printer has no free buffer, or was lost while waiting for it
  NUV_WRITE_FAILED = 20,     // a line of a job could not be written, or is not confirmed
  NUV_NO_JOB_SENDER = 21,    // no sender for the machine ID in the print file
  NUV_NOT_PRINTING = 22,     // the printer is not printing
  NUV_NUVFILE_MISSING = 23,  // the print-file library NuvFile cannot be loaded
  NUV_PRINTER_REFUSED = 29   // the printer answered without "OK"
};

// Device kinds.
enum NuvDeviceKind { NUV_KIND_USB = 0, NUV_KIND_NETWORK = 1 };

// Positions of the strings that API_GetDeviceInfo hands out.
enum NuvDeviceField {
  NUV_DEVICE_IDENTIFIER = 0,    // how the link found it: an IP address; a device path and "\1"
  NUV_DEVICE_SERIAL = 1,        // serial number
  NUV_DEVICE_MODEL = 2,         // model name
  NUV_DEVICE_SUPPLEMENTARY = 3  // nickname of Zafel Superfine, Fabrix100 xP, Moldrix100 xP
};

// Printer states reported by API_GetPrinterStatus.
enum NuvPrinterState {
  NUV_PRINTER_IDLE = 0,
  NUV_PRINTER_PRINTING = 1,
  NUV_PRINTER_RECEIVING = 2,  // a job is opened and its data not yet complete
  NUV_PRINTER_ERROR = 3
};

// For a person: one line of English without a full stop, also for numbers that are none of these.
// Static; never null.
static inline const char* NuvResultText(int result) {
  switch (result) {
    case NUV_NO_INSTANCE:
      return "API_Initial was not called";
    case NUV_OK:
      return "done";
    case NUV_FAILED:
      return "the printer did not answer, or another job is running";
    case NUV_NOT_FOUND:
      return "no such printer, or cancelled";
    case NUV_CONNECTION_REFUSED:
      return "the printer could not be opened";
    case NUV_FILE_NOT_READABLE:
      return "the file cannot be opened, is damaged or cannot be sent";
    case NUV_RESIN_EMPTY:
      return "too little resin is left";
    case NUV_RESIN_EXPIRED:
      return "the resin is past its date of use";
    case NUV_RESIN_NO_CARTRIDGE:
      return "no cartridge or tank is in place";
    case NUV_RESIN_TAG_UNREADABLE:
      return "the tag of the resin cannot be read";
    case NUV_RESIN_WRONG_TYPE:
      return "the resin is not for this printer";
    case NUV_NO_BUFFER_SPACE:
      return "the printer takes no more data, or was lost";
    case NUV_WRITE_FAILED:
      return "the job could not be written, or is not confirmed";
    case NUV_NO_JOB_SENDER:
      return "the print file is for an unknown machine";
    case NUV_NOT_PRINTING:
      return "the printer is not printing";
    case NUV_NUVFILE_MISSING:
      return "the print-file library NuvFile cannot be loaded";
    case NUV_PRINTER_REFUSED:
      return "the printer refused";
    default:
      return "an unknown result";
  }
}

static inline const char* NuvPrinterStateText(int state) {
  switch (state) {
    case NUV_PRINTER_IDLE:
      return "idle";
    case NUV_PRINTER_PRINTING:
      return "printing";
    case NUV_PRINTER_RECEIVING:
      return "receiving";
    case NUV_PRINTER_ERROR:
      return "error";
    default:
      return "unknown";
  }
}

#endif  // NUVCONNECT_RESULTCODES_H_

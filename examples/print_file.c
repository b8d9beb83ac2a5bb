/* Finds a printer, connects to the first one and sends it a print file. Plain C.
   Usage: print_file usb|network FILE */
#include <locale.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "nuvconnect/NuvConnect5.h"

enum { kPrinters = 16, kSerialBytes = 63, kPathBytes = 1024, kSearchMs = 500 };

static char serials[kPrinters][kSerialBytes + 1];

static void show_progress(float percent) { printf("\r%3.0f %%", (double)percent); }

/* The number of printers found. */
static int list_printers(int kind) {
  char* list[kPrinters];
  int count = kPrinters;
  for (int i = 0; i < kPrinters; ++i) list[i] = serials[i];
  if (API_GetDeviceList(kind, list, &count, kSerialBytes, kSearchMs) != NUV_OK) return 0;
  return count < kPrinters ? count : kPrinters;
}

static int send_file(int kind, const char* file) {
  wchar_t path[kPathBytes];
  if (mbstowcs(path, file, kPathBytes) >= kPathBytes) return NUV_FILE_NOT_READABLE;
  int result = API_ChooseDevice(kind, 0);
  if (result != NUV_OK) return result;
  result = API_SendPrintFile(path, show_progress);
  printf("\n");
  return result;
}

/* C cannot catch the exceptions that a garbled reply raises: they become the result 1. */
static void ask_for_results(void) {
#if defined(_WIN32)
  _putenv_s("NUVCONNECT_NO_EXCEPTIONS", "1");
#else
  setenv("NUVCONNECT_NO_EXCEPTIONS", "1", 1);
#endif
}

int main(int argc, char** argv) {
  if (argc != 3) {
    fprintf(stderr, "usage: print_file usb|network FILE\n");
    return 2;
  }
  const int kind = strcmp(argv[1], "usb") == 0 ? NUV_KIND_USB : NUV_KIND_NETWORK;
  setlocale(LC_ALL, ""); /* the path is in its characters */
  ask_for_results();
  API_Initial();
  const int count = list_printers(kind);
  for (int i = 0; i < count; ++i) printf("printer %d: %s\n", i, serials[i]);
  const int result = count == 0 ? NUV_NOT_FOUND : send_file(kind, argv[2]);
  API_Close();
  if (result == NUV_OK) {
    printf("sent\n");
    return 0;
  }
  fprintf(stderr, "not sent: result %d\n", result);
  return 1;
}

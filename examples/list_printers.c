/* Lists the printers that a search finds, each with its state.
   Usage: list_printers [ADDRESS]...   without addresses by broadcast and USB; exit code 1 when none. */
#include <stdio.h>
#include <string.h>

#include "nuvprinter/nuvprinter.h"

/* One row: what the search told, and what the printer is doing now. */
static void show(const nuv_identity* found) {
  nuv_error error = NUV_INIT(nuv_error);
  nuv_state state = NUV_INIT(nuv_state);
  nuv_printer* printer = NULL;
  nuv_call call = NUV_INIT(nuv_call);
  call.time_limit_ms = 2000;

  printf("%-12s %-14s %-16s ", found->address.text, found->serial.text, found->model.text);
  if (found->contact != NUV_RESULT_OK) {
    printf("%s\n", nuv_result_text(found->contact));
    return;
  }
  if (nuv_printer_open(&printer, found, &call, &error) != NUV_RESULT_OK ||
      nuv_printer_get_state(&state, printer, &call, &error) != NUV_RESULT_OK) {
    printf("%s\n", error.message.text);
  } else if (state.state.value == NUV_STATE_PRINTING) {
    printf("printing %s, %d %%", state.job_name.text, (int)state.percent.value);
    if (state.minutes_left.known) printf(", %d min left", (int)state.minutes_left.value);
    printf("\n");
  } else {
    printf("%s\n", state.state.value == NUV_STATE_IDLE ? "idle" : "busy or in error");
  }
  nuv_printer_free(printer);
}

int main(int argc, char** argv) {
  nuv_search_options options = NUV_INIT(nuv_search_options);
  nuv_error error = NUV_INIT(nuv_error);
  nuv_list* list = NULL;
  char addresses[1024] = "";
  int32_t count;

  for (int i = 1; i < argc; ++i) {
    strncat(addresses, argv[i], sizeof addresses - strlen(addresses) - 1);
    strncat(addresses, " ", sizeof addresses - strlen(addresses) - 1);
  }
  if (argc > 1) {
    options.addresses = addresses;
    options.links = NUV_LINK_NETWORK;
  }
  if (nuv_search_printers(&list, &options, NULL, &error) != NUV_RESULT_OK) {
    fprintf(stderr, "list_printers: %s\n", error.message.text);
    return 1;
  }
  count = nuv_list_count(list);
  for (int32_t i = 0; i < count; ++i) {
    nuv_identity found = NUV_INIT(nuv_identity);
    if (nuv_list_get_identity(&found, list, i) == NUV_RESULT_OK) show(&found);
  }
  nuv_list_free(list);
  return count > 0 ? 0 : 1;
}

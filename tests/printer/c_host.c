/* A host in C99 that knows nothing of C++; also that the header has no padding. */
#include "nuvprinter/nuvprinter.h"

static int32_t take_first(const nuv_identity* printer, void* user) {
  *(nuv_identity*)user = *printer;
  return 0;
}

/* The first printer that a search of `addresses` tells; contact NOT_FOUND when there is none. */
nuv_identity first_printer(const char* addresses) {
  nuv_identity first = NUV_INIT(nuv_identity);
  nuv_search_options options = NUV_INIT(nuv_search_options);
  nuv_list* list = NULL;
  first.contact = NUV_RESULT_NOT_FOUND;
  options.addresses = addresses;
  options.found = take_first;
  options.user = &first;
  if (nuv_search_printers(&list, &options, NULL, NULL) != NUV_RESULT_OK) {
    first.contact = NUV_RESULT_SYSTEM;
  }
  nuv_list_free(list);
  return first;
}

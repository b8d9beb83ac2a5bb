#include "identity.h"

#include "library.h"

namespace nuvctl {
namespace {

// A BEGO printer keeps its whole serial number and date of manufacture in a record of its own,
// which older firmware lacks.
void ReadBegoRecord(Identity& identity) {
  TextBuffer version, name, model, serial, controller, date;
  if (API_GetPrinterInfo_BEGO(version.Data(), name.Data(), model.Data(), serial.Data(),
                              controller.Data(), date.Data()) != NUV_OK) {
    return;
  }
  identity = {version.Text(), name.Text(),       model.Text(),
              serial.Text(),  controller.Text(), date.Text()};
}

}  // namespace

Identity ReadIdentity() {
  TextBuffer version, name, model, serial, controller;
  Check(API_GetPrinterInfo(version.Data(), name.Data(), model.Data(), serial.Data(),
                           controller.Data()),
        "Reading the identity");
  Identity identity = {version.Text(), name.Text(),       model.Text(),
                       serial.Text(),  controller.Text(), std::string()};
  if (identity.model == kBegoModel) ReadBegoRecord(identity);
  return identity;
}

}  // namespace nuvctl

#include <windows.h>
// windows.h must come before lmcons.h, which needs it.
#include <lmcons.h>

#include <QDir>

#include "transport/search_turn.h"

namespace Nuv::Transport {

// The temporary folder is the user's own; the name tells users apart where a setting makes it one
// for all.
QString SearchLockFile(uint16_t port) {
  wchar_t user[UNLEN + 1] = {};
  DWORD length = UNLEN + 1;
  if (GetUserNameW(user, &length) == 0) user[0] = L'\0';
  return QDir::tempPath() + "/nuvconnect-" + QString::fromWCharArray(user) + "-search-" +
         QString::number(port) + ".lock";
}

}  // namespace Nuv::Transport

#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <cerrno>
#include <cstring>
#include <string>

#include "platform/diagnostics.h"
#include "transport/search_turn.h"

namespace Nuv::Transport {

using Platform::Diagnostic;

namespace {

constexpr mode_t kOwn = 0700;
constexpr mode_t kOfOthers = 0077;

// Everybody may write to the temporary folder: a lock file there could be anybody's, or a pipe that
// blocks whoever opens it. In a folder of the user's own nobody else puts anything.
bool HaveOwnFolder(const std::string& folder) {
  struct stat found = {};
  if ((mkdir(folder.c_str(), kOwn) != 0 && errno != EEXIST) || lstat(folder.c_str(), &found) != 0) {
    Diagnostic("search: no lock file can be made: %s: %s", folder.c_str(), std::strerror(errno));
    return false;
  }
  if (S_ISDIR(found.st_mode) && found.st_uid == geteuid() && (found.st_mode & kOfOthers) == 0) {
    return true;
  }
  Diagnostic("search: no lock file can be made: %s is not a folder of this user alone",
             folder.c_str());
  return false;
}

}  // namespace

QString SearchLockFile(uint16_t port) {
  // Empty when the environment names a folder that is not there.
  const std::string temporary = QFile::encodeName(QDir::tempPath()).toStdString();
  const std::string folder = temporary + "/nuvconnect-" + std::to_string(geteuid());
  if (temporary.empty()) Diagnostic("search: no lock file can be made: no temporary folder");
  if (temporary.empty() || !HaveOwnFolder(folder)) return {};
  // Searches in different network namespaces do not meet. 0 where there are none.
  struct stat network = {};
  if (stat("/proc/self/ns/net", &network) != 0) network.st_ino = 0;
  const std::string name =
      "/search-" + std::to_string(port) + "-" + std::to_string(network.st_ino) + ".lock";
  return QFile::decodeName((folder + name).c_str());
}

}  // namespace Nuv::Transport

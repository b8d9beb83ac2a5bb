#ifndef NUV_TRANSPORT_SOCKET_THREAD_H_
#define NUV_TRANSPORT_SOCKET_THREAD_H_

#include <QAbstractSocket>

// Makes `owner` and its child `socket` (or one object twice) belong to no thread, before the socket
// is used: then the host's event loop does not read from it behind a blocking call, and any thread
// may make the next call.
inline void DetachFromThreads(QObject& owner, QAbstractSocket& socket) {
  // The socket repeats its errorOccurred signal under the older name. Without a thread that hop
  // would be queued for an event loop that never runs.
  QObject::disconnect(&socket, nullptr, &socket, nullptr);
  owner.moveToThread(nullptr);
}

#endif  // NUV_TRANSPORT_SOCKET_THREAD_H_

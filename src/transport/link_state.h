#ifndef NUV_TRANSPORT_LINK_STATE_H_
#define NUV_TRANSPORT_LINK_STATE_H_

namespace Nuv::Transport {

// How a link to a printer stands.
enum class LinkState {
  kClosed,  // closed by this side or never opened
  kAlive,   // usable
  kEnded,   // ended by the printer or lost
};

}  // namespace Nuv::Transport

#endif  // NUV_TRANSPORT_LINK_STATE_H_

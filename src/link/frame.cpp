#include "link/frame.h"

namespace tavira {

std::string FrameCommands(std::string_view commands) {
  std::string frame;
  frame.reserve(kFrameStart.size() + commands.size() + kFrameEnd.size());
  frame.append(kFrameStart).append(commands).append(kFrameEnd);
  return frame;
}

}  // namespace tavira

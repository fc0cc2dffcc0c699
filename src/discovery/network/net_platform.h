#pragma once

#include "platform/clock.h"
#include "platform/sockets.h"
#include "platform/text_codec.h"
#include "platform/threads.h"

namespace tavira {

/** What connections ask of the system; all of it outlives whoever holds this. */
struct tagNetPlatform {
  ISockets& sockets;
  IThreads& threads;
  IClock& clock;
  ITextCodec& text;
};

}  // namespace tavira

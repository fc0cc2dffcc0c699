#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "transcript/call.h"

namespace recorder {

/// Why a text is no transcript.
struct tagReadError {
  std::size_t line = 0;  ///< counted from 1
  std::string reason;
};

/// Takes a transcript apart. Lines may end in \r\n; empty ones and those that begin with # say nothing. Only
/// the last line may be incomplete. Nothing is returned when all is well; otherwise the transcript holds
/// the calls in front of the bad line.
std::optional<tagReadError> ReadTranscript(std::string_view text, tagTranscript& transcript);

}  // namespace recorder

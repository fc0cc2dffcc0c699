#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "command/prefix.h"

// An answer is "not default" only when it holds a terminated payload of at least 11 bytes, and never because
// of what follows the payload.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view answer(reinterpret_cast<const char*>(data), size);
  const bool is_default = tavira::IsDefaultPrefixAnswer(answer);
  const std::size_t stx = answer.find('\x02');
  const std::size_t etx = stx == std::string_view::npos ? stx : answer.find('\x03', stx);
  if (!is_default && (etx == std::string_view::npos || etx - stx < 12)) {
    std::abort();
  }
  if (etx != std::string_view::npos &&
      tavira::IsDefaultPrefixAnswer(answer.substr(0, etx + 1)) != is_default) {
    std::abort();
  }
  return 0;
}

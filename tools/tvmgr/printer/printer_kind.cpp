#include "printer/printer_kind.h"

#include <algorithm>

#include "names/ascii_text.h"

namespace tvmgr {
namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// "USB001", "LPT1:", "COM3", and what the standard TCP/IP port monitor calls its ports.
bool LooksLikePort(std::string_view text) {
  const std::string upper = UpperAscii(text);
  for (const std::string_view head : {"USB", "LPT", "COM", "DOT4_"}) {
    if (upper.starts_with(head) && upper.size() > head.size()) {
      std::string_view rest = std::string_view(upper).substr(head.size());
      rest.remove_suffix(rest.ends_with(':') ? 1 : 0);
      return !rest.empty() && std::all_of(rest.begin(), rest.end(), IsDigit);
    }
  }
  return upper.starts_with("IP_") || upper.starts_with("WSD-");
}

}  // namespace

std::string KindByLook(std::string_view text) {
  return text.starts_with("\\\\") ? "device" : LooksLikePort(text) ? "port" : "address";
}

bool IsNumericAddress(std::string_view text) {
  int parts = 0;
  for (bool more = true; more; ++parts) {
    const std::size_t end = std::min(text.find('.'), text.size());
    const std::string_view part = text.substr(0, end);
    if (part.empty() || part.size() > 3 || !std::all_of(part.begin(), part.end(), IsDigit) ||
        std::stoi(std::string(part)) > 255) {
      return false;
    }
    more = end < text.size();
    text.remove_prefix(more ? end + 1 : end);
  }
  return parts == 4;
}

}  // namespace tvmgr

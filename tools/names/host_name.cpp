#include "names/host_name.h"

#include <algorithm>
#include <array>
#include <string>

#include "names/ascii_text.h"

namespace tvmgr {

bool IsHostFileName(std::string_view name) {
  static constexpr std::array kDevices =
      std::to_array<std::string_view>({"CON", "PRN", "AUX", "NUL", "COM", "LPT"});
  const auto is_bad = [](char c) {
    return static_cast<unsigned char>(c) < 0x20 ||
           std::string_view("<>:\"/\\|?*").find(c) != std::string_view::npos;
  };
  if (name.empty() || name.front() == '.' || name.back() == '.' || name.back() == ' ' ||
      std::any_of(name.begin(), name.end(), is_bad)) {
    return false;
  }
  const std::string base = UpperAscii(name.substr(0, name.find('.')));
  return std::none_of(kDevices.begin(), kDevices.end(), [&](std::string_view device) {
    const bool has_number = device == "COM" || device == "LPT";
    return base.starts_with(device) && base.size() == device.size() + (has_number ? 1 : 0);
  });
}

}  // namespace tvmgr

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tavira {

/** The pending request to register or delete a file; lasts until the host sets another. */
struct tagFileRequest {
  std::uint32_t kind = 0; /**< a value of enum TvmgrRequest, or anything else */
  std::string primary;    /**< to delete: the file's name. To register: its download command */
  std::string secondary;  /**< follows the primary data of a format registration */
};

/** A name without the terminator that a host may have counted, and what follows it. */
inline std::string_view UpToTerminator(std::string_view name) {
  return name.substr(0, name.find('\0'));
}

/** How often, and at what distance, the printer's listing is asked whether a request took effect. */
inline constexpr int kConfirmationPasses = 10;
inline constexpr std::uint32_t kConfirmationIntervalMs = 500;

}  // namespace tavira

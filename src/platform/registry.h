#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "platform/wide_string.h"

namespace tavira {

/** One open registry key, for reading only; closed at the end of its life. */
class IRegistryKey {
 public:
  virtual ~IRegistryKey() = default;

  /** A key below this one; `path` names one or more levels, with "\\" between. Null when there is none. */
  virtual std::unique_ptr<IRegistryKey> Open(const WideString& path) = 0;

  /** The keys directly below, in the registry's order. */
  virtual std::vector<WideString> SubkeyNames() = 0;

  /** A string value, up to its first zero character; empty when there is no string of that name. */
  virtual WideString ReadText(const WideString& value) = 0;

  /** A 32-bit number; nothing when there is no number of that name. */
  virtual std::optional<std::uint32_t> ReadNumber(const WideString& value) = 0;
};

/** The root of the machine's own keys; a platform without a registry has one that is empty. */
std::unique_ptr<IRegistryKey> MakeLocalMachine();

}  // namespace tavira

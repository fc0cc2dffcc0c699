#pragma once

#include <windows.h>

#include <memory>

#include "platform/registry.h"

namespace tavira {

struct tagRegistryKeyCloser {
  using pointer = HKEY;
  void operator()(HKEY key) const {
    if (key != HKEY_LOCAL_MACHINE) {  // predefined: nobody's to close
      ::RegCloseKey(key);
    }
  }
};

/** Owns an open registry key. */
using RegistryKeyHandle = std::unique_ptr<HKEY, tagRegistryKeyCloser>;

/** A key to read from; takes the handle over. */
std::unique_ptr<IRegistryKey> MakeRegistryKey(RegistryKeyHandle key);

}  // namespace tavira

#include <dlfcn.h>

#include <cstdlib>

#include "emulator/port/ferrolink_system.h"

namespace lxemu {

std::filesystem::path EnvironmentPath(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::filesystem::path() : std::filesystem::path(value);
}

std::filesystem::path LibraryFolder() {
  Dl_info library{};
  if (::dladdr(reinterpret_cast<const void*>(&LibraryFolder), &library) == 0 ||
      library.dli_fname == nullptr) {
    return {};
  }
  return std::filesystem::absolute(library.dli_fname).parent_path();
}

}  // namespace lxemu

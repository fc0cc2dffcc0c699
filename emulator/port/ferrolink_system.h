#pragma once

#include <filesystem>

namespace lxemu {

/// The path that an environment variable holds now, also when the host set it after its start; empty when it is not set.
std::filesystem::path EnvironmentPath(const char* name);

/// The folder that this library was loaded from.
std::filesystem::path LibraryFolder();

}  // namespace lxemu

#pragma once

#include <filesystem>
#include <string_view>

namespace tavira::bench {

/** Open, seek to the end, write, close: the system's four calls and nothing else. False when one fails. */
bool AppendBare(const std::filesystem::path& path, std::string_view bytes);

}  // namespace tavira::bench

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "storage/file_registration.h"

namespace {

constexpr std::string_view kExtensions[] = {".PNG", ".GRF", ".TTF", ".TTE"};

void Require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

}  // namespace

// A name stands in the command as it is, but for an extension put behind it, and holds no separator.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string command(reinterpret_cast<const char*>(data), size);
  const std::string name = tavira::FindDownloadName(command);
  Require(name.find(',') == name.npos);
  const bool is_completed = std::any_of(std::begin(kExtensions), std::end(kExtensions), [&](auto extension) {
    return name.ends_with(extension) && command.find(name.substr(0, name.size() - 4)) != command.npos;
  });
  Require(is_completed || command.find(name) != command.npos);
  if (command.find("~DY") == command.npos && command.find("^DF") == command.npos) {
    Require(name.empty());
    // As a plain name it is found again in both commands that can carry it.
    if (size != 0 && command.find_first_of(",^:. \t\r\n") == command.npos) {
      Require(tavira::FindDownloadName("~DYE:" + command + ",B,G,1,0,x") == command + ".GRF");
      Require(tavira::FindDownloadName("~DY" + command + ".BGD,B,B,1,0,x") == command + ".BGD");
      Require(tavira::FindDownloadName("^XA^DFR:" + command + "^FS^XZ") == command);
    }
  }
  return 0;
}

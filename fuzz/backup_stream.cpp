#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "emulator/printer/printer.h"

namespace {

// Small, so that no input can make the printer hold much.
constexpr std::uint64_t kDeviceCapacity = std::uint64_t{1} << 20;

}  // namespace

// A damaged backup that is restored may do anything to the printer's settings and files, but has to leave a
// printer that answers.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::uint64_t now = 0;
  lxemu::CPrinter printer([&now] { return now; });
  printer.Quirks().device_capacity = kDeviceCapacity;
  printer.PutFile("E:OLD.PNG", "old", true);
  printer.Execute({reinterpret_cast<const char*>(data), size});
  now += 1'000'000;  // the stream may have started a maintenance routine
  printer.Execute(
      "\x1EXA\x1E"
      "CT~\x1E"
      "CC^\x1E"
      "CD,\x1EXZ");
  if (printer.Execute("^XA^H(E^XZ~H(CCC,T") != "\x02LX-R4100\x03\r\n\x02^S(CCC,T,7E\x03\r\n") {
    std::abort();
  }
  // Whatever became of the file, its download stores it again byte for byte.
  if (const auto old = printer.File("E:OLD.PNG")) {
    const std::string answer = printer.Execute("^XA^H(YE:OLD.PNG^XZ");
    printer.Execute("^XA^F(AE:OLD.PNG,N^IDE:OLD.PNG^XZ" + answer);
    if (printer.File("E:OLD.PNG") != old) {
      std::abort();
    }
  }
  return 0;
}

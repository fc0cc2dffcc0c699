#include "printer/printer_environment.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "output/text_encoding.h"

namespace tvmgr {
namespace {

bool IsChoice(std::string_view argument) {
  const std::string_view name = argument.substr(0, argument.find('='));
  return name == "--port" || name == "--device" || name == "--address" || name == "--printers";
}

}  // namespace

void PreparePrinterEnvironment(const std::vector<std::string>& arguments) {
  const bool chosen = std::any_of(arguments.begin(), arguments.end(), IsChoice);
  for (const char* const variable : {kPortVariable, kDeviceVariable, kAddressVariable}) {
    const wchar_t* const value = _wgetenv(ToWide(variable).c_str());
    // An empty text removes the variable.
    _putenv_s(variable, value == nullptr || chosen ? "" : ToUtf8(value).c_str());
  }
}

}  // namespace tvmgr

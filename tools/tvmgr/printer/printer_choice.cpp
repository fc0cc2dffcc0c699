#include "printer/printer_choice.h"

#include "printer/choice_file.h"

namespace tvmgr {

tagPrinterChoice ChoiceInForce(const tagGlobalOptions& options) {
  tagPrinterChoice choice{options.port, options.device, options.address};
  if (!choice.port.empty() || !choice.device.empty() || !choice.address.empty()) {
    return choice;
  }
  if (const std::optional<tagRememberedPrinter> chosen = LoadChoiceFile().chosen) {
    std::string& text = chosen->kind == "port"     ? choice.port
                        : chosen->kind == "device" ? choice.device
                                                   : choice.address;
    text = chosen->value;
    choice.is_remembered = true;
    choice.name = chosen->name;
  }
  return choice;
}

Json PrinterJson(const tagPrinterChoice& choice) {
  for (const auto& [kind, value] :
       {std::pair("address", &choice.address), {"device", &choice.device}, {"port", &choice.port}}) {
    if (!value->empty()) {
      return PrinterJson(kind, *value, choice.name);
    }
  }
  return PrinterJson();
}

std::string Describe(const tagPrinterChoice& choice) {
  std::string text = "the printer that the port library chooses";
  if (!choice.address.empty()) {
    text = "the printer at " + choice.address;
  } else if (!choice.device.empty()) {
    text = "the printer " + choice.device;
  } else if (!choice.port.empty()) {
    text = "the printer on " + choice.port;
  }
  return text + (choice.is_remembered ? " (tvmgr use)" : "");
}

}  // namespace tvmgr

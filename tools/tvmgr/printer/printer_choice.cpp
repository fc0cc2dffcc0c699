#include "printer/printer_choice.h"

#include "output/command_error.h"
#include "output/text_layout.h"
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

tagPrinterChoice RequireChoice(const tagGlobalOptions& options) {
  tagPrinterChoice choice = ChoiceInForce(options);
  if (choice.port.empty() && choice.device.empty() && choice.address.empty()) {
    throw CUsageError(
        "no printer is chosen, and this command changes what is on it: name it with --port, --device or "
        "--address, with TVMGR_PORT, TVMGR_DEVICE or TVMGR_ADDRESS, or remember it with \"tvmgr use\"");
  }
  return choice;
}

std::optional<tagPrinterChoice> ParseChoiceText(std::string_view text) {
  tagPrinterChoice choice;
  for (const auto& [head, value] : {std::pair<std::string_view, std::string*>("port:", &choice.port),
                                    {"device:", &choice.device},
                                    {"address:", &choice.address}}) {
    if (text.size() > head.size() && EqualsIgnoreCase(text.substr(0, head.size()), head)) {
      *value = text.substr(head.size());
      return choice;
    }
  }
  return std::nullopt;
}

std::string ChoiceText(const tagPrinterChoice& choice) {
  return !choice.address.empty()  ? "address:" + choice.address
         : !choice.device.empty() ? "device:" + choice.device
         : !choice.port.empty()   ? "port:" + choice.port
                                  : std::string();
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
    text = "the printer at " + MakeVisible(choice.address);
  } else if (!choice.device.empty()) {
    text = "the printer " + MakeVisible(choice.device);
  } else if (!choice.port.empty()) {
    text = "the printer on " + MakeVisible(choice.port);
  }
  return text + (choice.is_remembered ? " (tvmgr use)" : "");
}

}  // namespace tvmgr

#include "commands/commands.h"
#include "output/command_error.h"
#include "output/json_output.h"
#include "output/record_output.h"
#include "output/setting_cell.h"
#include "output/status_words.h"
#include "output/text_encoding.h"
#include "output/text_layout.h"
#include "printer/manager_session.h"
#include "profile/required_settings.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

// Model, version, and what the printer tells its host of itself.
constexpr std::int32_t kIdentity[] = {TVMGR_SETTING_IMP_S, TVMGR_SETTING_IMF_V, TVMGR_SETTING_INU_S,
                                      TVMGR_SETTING_INU_N, TVMGR_SETTING_INU_U, TVMGR_SETTING_INU_P,
                                      TVMGR_SETTING_INU_V};

std::string KeyOf(std::int32_t id) {
  return std::string(RequireSetting(std::to_string(id)).key);
}

struct tagChosenPrinter {
  bool is_network = false;
  std::string port;
  std::string device;
  std::string address;
};

tagChosenPrinter ReadChosen(const CManagerSession& session) {
  TvmgrFoundPrinter record = {};
  session.Require("TVMGR_GetPrinterDeviceInfo", "reading the chosen printer", 0,
                  [&] { return TVMGR_GetPrinterDeviceInfo(&record); });
  tagChosenPrinter chosen{record.kind == TVMGR_SEARCH_NETWORK, TextOf(record.text1), TextOf(record.text3),
                          TextOf(record.text5)};
  TvmgrFoundPrinterRelease(&record);
  return chosen;
}

void Print(const tagChosenPrinter& chosen, std::uint32_t status, const CManagerSession& session) {
  const tagStatusWords words = StatusWords(status);
  std::string text;
  const auto line = [&](const std::string& name, const std::string& value) {
    text += name + std::string(name.size() < 9 ? 9 - name.size() : 1, ' ') + value + "\n";
  };
  line("kind", chosen.is_network ? "network" : "USB, or chosen by the port library");
  for (const auto& [name, value] :
       {std::pair("port", &chosen.port), {"device", &chosen.device}, {"address", &chosen.address}}) {
    line(name, value->empty() ? "-" : MakeVisible(*value));
  }
  line("status", std::string(words.name) + " (" + words.meaning + ")");
  for (const std::int32_t id : kIdentity) {
    if (status != TVMGR_STATUS_UNKNOWN) {
      line(KeyOf(id), ValueCell(session.Value(id)).shown);
    }
  }
  WriteOutput(text);
}

void PrintAsJson(const tagChosenPrinter& chosen, std::uint32_t status, const CManagerSession& session) {
  Json settings = Json::object();
  for (const std::int32_t id : kIdentity) {
    const std::optional<std::string> value = session.Value(id);
    settings[KeyOf(id)] = value ? Json(FromAnsi(*value).value_or(EscapeBytes(*value))) : Json();
  }
  SetJsonResult({{"printer", PrinterJson(tagPrinterChoice{chosen.port, chosen.device, chosen.address})},
                 {"port", TextOrNull(chosen.port)},
                 {"device", TextOrNull(chosen.device)},
                 {"address", TextOrNull(chosen.address)},
                 {"status", status},
                 {"status_name", StatusWords(status).name},
                 {"settings", settings}});
}

}  // namespace

int RunInfo(const tagGlobalOptions& global) {
  const CManagerSession session(global);
  const tagChosenPrinter chosen = ReadChosen(session);
  const std::uint32_t status = session.Status();
  if (status != TVMGR_STATUS_UNKNOWN) {
    session.LoadAll();
  }
  global.json ? PrintAsJson(chosen, status, session) : Print(chosen, status, session);
  return status == TVMGR_STATUS_UNKNOWN ? kExitUnreachable : kExitDone;
}

}  // namespace tvmgr

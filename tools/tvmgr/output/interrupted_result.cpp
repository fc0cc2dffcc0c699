#include "output/interrupted_result.h"

#include <algorithm>

#include "output/json_output.h"
#include "output/record_output.h"

namespace tvmgr {

void TellInterruptedResult(const std::string& found, bool json) {
  Json members = Json::parse(found, nullptr, false);
  if (!members.is_object()) {
    return;
  }
  if (json) {
    SetJsonResult(std::move(members));
    return;
  }
  const Json settings = members.value("settings", Json::array());
  const bool was_sent = std::any_of(settings.begin(), settings.end(), [](const Json& setting) {
    return setting.value("verdict", "") == "sent, not proved";
  });
  CRecordOutput output({{"", "KEY"}, {"", "WANTED"}, {"", "VERDICT"}});
  for (const Json& setting : was_sent ? settings : Json::array()) {
    output.Add({tagCell::Text(setting.value("key", "")), tagCell::Text(setting.value("wanted", "")),
                tagCell::Verdict(setting.value("verdict", ""), ETone::kOpen)});
  }
  output.PrintTable();
}

}  // namespace tvmgr

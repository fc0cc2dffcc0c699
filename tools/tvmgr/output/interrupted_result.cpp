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
  const Json rows = settings.empty() ? members.value("files", Json::array()) : settings;
  const bool was_sent = std::any_of(rows.begin(), rows.end(), [](const Json& row) {
    return row.value("verdict", "") == "sent, not proved";
  });
  CRecordOutput output({{"", settings.empty() ? "NAME" : "KEY"}, {"", "VERDICT"}});
  for (const Json& row : was_sent ? rows : Json::array()) {
    output.Add({tagCell::Text(row.value(settings.empty() ? "name" : "key", "")),
                tagCell::Verdict(row.value("verdict", ""), ETone::kOpen)});
  }
  output.PrintTable();
}

}  // namespace tvmgr

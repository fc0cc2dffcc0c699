#include "printer/answers.h"

#include "names/setting_names.h"
#include "output/command_error.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {

std::string UnansweredSettings(const CManagerSession& session) {
  std::string keys;
  for (const tagSettingName& setting : AllSettings()) {
    const bool is_readable = setting.id != TVMGR_SETTING_ST && setting.id != TVMGR_SETTING_BACKGROUND;
    if (is_readable && !session.Value(setting.id)) {
      keys += (keys.empty() ? "" : " ") + std::string(setting.key);
    }
  }
  return keys;
}

bool IsAnswerCut(const CManagerSession& session) {
  return !session.Value(TVMGR_SETTING_INU_P);
}

bool HasDefaultPrefix(const CManagerSession& session) {
  std::uint8_t is_default = 0;
  session.Require("TVMGR_IsDefaultPrefix", "asking for the prefix characters", limit::kShortExchange,
                  [&] { return TVMGR_IsDefaultPrefix(&is_default); });
  return is_default != 0;
}

void RequireStillAnswering(const CManagerSession& session, const std::string& what) {
  if (session.Status() == TVMGR_STATUS_UNKNOWN) {
    throw CUnreachable(what + ", but the printer no longer answers: what it took is not known");
  }
}

}  // namespace tvmgr

#include "profile/settings_writer.h"

#include <algorithm>

#include "names/ascii_text.h"
#include "output/command_error.h"
#include "profile/required_settings.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {

void RefusePrefixCharacters(const CManagerSession& session, const std::vector<tagSettingValue>& settings) {
  for (const std::int32_t id : {TVMGR_SETTING_CCC_T, TVMGR_SETTING_CCC_C}) {
    const std::string digits = session.Value(id).value_or("");
    for (const tagSettingValue& setting : settings) {
      const bool holds = std::any_of(setting.value.begin(), setting.value.end(), [&](const char& c) {
        return EqualsIgnoreCase(ToHex({&c, 1}), digits);
      });
      if (holds) {
        throw CFailure(
            "nothing was written: the value of " +
            std::string(RequireSetting(std::to_string(setting.id)).key) +
            " holds a prefix character of this printer, which begins commands there (tvmgr prefix)");
      }
    }
  }
}

std::int32_t WriteSettings(const CManagerSession& session, const std::vector<tagSettingValue>& settings,
                           bool keep_resolution, const std::function<void()>& before_sending) {
  session.Require("TVMGR_ClearUpdateList", "preparing the update", 0, [] { return TVMGR_ClearUpdateList(); });
  for (const tagSettingValue& setting : settings) {
    session.Require("TVMGR_SetUpdateList", "preparing the update", 0, [&] {
      return TVMGR_SetUpdateList(static_cast<std::uint32_t>(setting.id),
                                 reinterpret_cast<const std::uint8_t*>(setting.value.data()),
                                 static_cast<std::int32_t>(setting.value.size()));
    });
  }
  if (before_sending) {
    before_sending();
  }
  constexpr char kWhat[] = "writing and verifying the settings";
  return keep_resolution ? session.Call("TVMGR_UpdatePrinterSettingNoChangeDPI", kWhat, limit::kUpdate,
                                        [] { return TVMGR_UpdatePrinterSettingNoChangeDPI(); })
                         : session.Call("TVMGR_UpdatePrinterSetting", kWhat, limit::kUpdate,
                                        [] { return TVMGR_UpdatePrinterSetting(); });
}

}  // namespace tvmgr

#include "profile/settings_writer.h"

#include "tavira/TaviraManager.h"

namespace tvmgr {

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

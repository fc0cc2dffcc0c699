#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "printer/manager_session.h"

namespace tvmgr {

struct tagSettingValue {
  std::int32_t id = 0;
  std::string value; /**< bytes as the printer takes them */
};

/**
 * Ends the command when a value holds one of this printer's own prefix characters, which would begin a command within it. Goes
 * by the settings as they were read last.
 */
void RefusePrefixCharacters(const CManagerSession& session, const std::vector<tagSettingValue>& settings);

/**
 * Writes settings in one transaction, has the printer save them, and reads everything back: the session's values are
 * the printer's afterwards.
 *
 * @param keep_resolution  the guard leaves settings 3, 4 and 5 alone
 * @param before_sending   called when the next step sends; may be empty
 * @return TVMGR_OK, TVMGR_NOT_CONFIRMED (also then everything was read), or another code: nothing is known then
 */
std::int32_t WriteSettings(const CManagerSession& session, const std::vector<tagSettingValue>& settings,
                           bool keep_resolution, const std::function<void()>& before_sending = {});

}  // namespace tvmgr

#include "settings/prefix_operations.h"

#include "command/fixed_commands.h"
#include "command/prefix.h"
#include "settings/ignore_outcome.h"

namespace tavira {

std::int32_t CPrefixOperations::Update(const tagPrefixCharacters& prefix) {
  if (!port_.HasLink()) {
    return TVMGR_NOT_INITIALIZED;
  }
  std::string& commands = port_.NewCommand();
  AppendPrefixChange(commands, prefix);
  commands.append(kAlternativeSaveCommand).append(kAlternativeClosingCommand);
  const std::int32_t result = port_.Exchange(kShortTimeoutMs);
  if (result != TVMGR_OK) {
    return result;
  }
  store_.ClearLoadList();
  for (const std::uint32_t id : {TVMGR_SETTING_CCC_T, TVMGR_SETTING_CCC_C, TVMGR_SETTING_CCC_D}) {
    store_.AppendToLoadList(id);
  }
  IgnoreOutcome([this] { loader_.LoadByList(false); });
  return TVMGR_OK;
}

std::int32_t CPrefixOperations::IsDefault(std::uint8_t* is_default) {
  if (is_default != nullptr) {
    *is_default = 1;
  }
  if (!port_.HasLink()) {
    return TVMGR_NOT_INITIALIZED;
  }
  port_.NewCommand().append(kPrefixQuery);
  const std::int32_t result = port_.Exchange(kShortTimeoutMs);
  if (result == TVMGR_OK && is_default != nullptr) {
    *is_default = IsDefaultPrefixAnswer(port_.Answer()) ? 1 : 0;
  }
  return result;
}

}  // namespace tavira

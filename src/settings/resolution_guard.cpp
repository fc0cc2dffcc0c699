#include "settings/resolution_guard.h"

#include <algorithm>

#include "command/answer_parser.h"
#include "command/command_builder.h"
#include "command/fixed_commands.h"
#include "command/text.h"
#include "settings/ignore_outcome.h"
#include "settings/resolution_settings.h"

namespace tavira {
namespace {

constexpr std::array<std::int32_t, 4> kKnownResolutions{150, 200, 300, 600};
constexpr std::int32_t kNeutralResolution = 600;
constexpr std::string_view kNeutralMode = "D";

}  // namespace

std::int32_t CResolutionGuard::Begin(bool no_resolution_change) {
  if (!valid_) {
    const std::int32_t result = Capture();
    if (result != TVMGR_OK) {
      return result;
    }
  }
  if (IsNeutral()) {
    return TVMGR_OK;
  }
  return Send(no_resolution_change, {kNeutralResolution, kNeutralResolution, kNeutralResolution},
              kNeutralMode);
}

std::int32_t CResolutionGuard::End(bool no_resolution_change) {
  if (!port_.HasLink()) {
    return TVMGR_NOT_INITIALIZED;
  }
  if (!valid_ || IsNeutral()) {
    return TVMGR_OK;
  }
  return Send(no_resolution_change, resolutions_, mode_);
}

std::int32_t CResolutionGuard::Capture() {
  std::string& commands = port_.NewCommand();
  for (const std::uint32_t id : kGuardedResolutions) {
    AppendQuery(commands, id);
  }
  AppendQuery(commands, TVMGR_SETTING_CMP_U);
  const std::int32_t result = port_.Exchange();
  if (result == TVMGR_OK) {
    TakeSnapshot(port_.Answer());
    valid_ = true;  // also when the printer left something out: it is not asked again for every operation
  }
  return result;
}

void CResolutionGuard::TakeSnapshot(std::string_view answer) {
  std::array<std::string, 3> resolutions;
  std::string mode;
  for (tagSettingRecord& record : ScanAnswers(answer)) {
    const auto known = std::find(kGuardedResolutions.begin(), kGuardedResolutions.end(), record.id);
    if (known != kGuardedResolutions.end()) {
      resolutions.at(static_cast<std::size_t>(known - kGuardedResolutions.begin())) = std::move(record.value);
    } else if (record.id == TVMGR_SETTING_CMP_U) {
      mode = std::move(record.value);
    }
  }
  if (mode.empty() ||
      std::any_of(resolutions.begin(), resolutions.end(), [](const auto& r) { return r.empty(); })) {
    return;
  }
  for (std::size_t i = 0; i < resolutions.size(); ++i) {
    const std::int32_t resolution = ParseStrictDecimal(resolutions[i]);
    if (std::find(kKnownResolutions.begin(), kKnownResolutions.end(), resolution) !=
        kKnownResolutions.end()) {
      resolutions_[i] = resolution;
    }
  }
  mode_ = std::move(mode);
}

bool CResolutionGuard::IsNeutral() const {
  return std::all_of(resolutions_.begin(), resolutions_.end(),
                     [](auto r) { return r == kNeutralResolution; }) &&
         EqualsIgnoringCase(mode_, kNeutralMode);
}

std::int32_t CResolutionGuard::Send(bool no_resolution_change, const std::array<std::int32_t, 3>& resolutions,
                                    std::string_view mode) {
  std::string& commands = port_.NewCommand();
  if (!no_resolution_change) {
    for (std::size_t i = 0; i < resolutions.size(); ++i) {
      AppendSetCommand(commands, kGuardedResolutions[i], std::to_string(resolutions[i]));
    }
  }
  AppendSetCommand(commands, TVMGR_SETTING_CMP_U, mode);
  commands.append(kSaveCommand).append(kClosingCommand);
  return port_.Exchange();
}

CGuardedScope::CGuardedScope(CResolutionGuard& guard, bool no_resolution_change)
    : guard_(guard), no_resolution_change_(no_resolution_change) {
  IgnoreOutcome([this] { guard_.Begin(no_resolution_change_); });
}

CGuardedScope::~CGuardedScope() {
  IgnoreOutcome([this] { guard_.End(no_resolution_change_); });
}

}  // namespace tavira

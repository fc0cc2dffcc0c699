#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "options/options.h"
#include "output/json_output.h"
#include "printer/manager_session.h"
#include "profile/host_profile.h"
#include "profile/setting_verdict.h"

namespace tvmgr {

/** A setting that is to have a value, and what became of it. */
struct tagWantedSetting {
  std::int32_t id = 0;
  std::string key;
  std::string wanted;                  /**< bytes */
  bool is_left_out = false;            /**< belongs to one device, and was not asked for */
  std::optional<std::string> now = {}; /**< before; none: not answered, or not read yet */
  std::optional<std::string> got = {}; /**< read back at the end */
  bool is_written = false;             /**< the module was told to send it */
  tagSettingVerdict verdict = {"not sent", "", EProof::kFailed};
};

struct tagApplication {
  std::vector<tagWantedSetting> settings;
  std::string printer; /**< for the question */
  bool yes = false;
  bool dry_run = false;
  Json members = Json::object(); /**< of the JSON result, in front of the settings */
};

/**
 * Notes that nothing was sent yet, for the JSON result of a run that ends before it comes to that, whatever ends it.
 */
void NoteNothingSent(const CLabels& labels, const tagApplication& application);

/**
 * Brings a printer whose settings have just been read to the wanted values: shows what it has, asks, writes what differs
 * (resolutions last, in a transaction of their own), reads everything back, and prints one verdict for each setting,
 * also when it ends early. Throws as commands do; see docs/profiles.md for the verdicts.
 */
int ApplySettings(const tagGlobalOptions& global, const CManagerSession& session, const CLabels& labels,
                  tagApplication application);

}  // namespace tvmgr

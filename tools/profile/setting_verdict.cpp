#include "profile/setting_verdict.h"

#include "names/ascii_text.h"
#include "profile/profile_settings.h"

namespace tvmgr {
namespace {

constexpr char kOtherForm[] = "the printer refused the value or stores it in another form";

// While the module reads from a printer that is not neutral, its guard holds the mode at D, and puts the mode
// of before back afterwards. So a D that is read says nothing, neither of the mode nor of the write.
tagSettingVerdict JudgeMode(std::string_view asked, const std::string& shown, const std::string& got) {
  if (!EqualsIgnoreCase(got, "D")) {
    return EqualsIgnoreCase(asked, got) ? tagSettingVerdict{"written", "", EProof::kProved}
                                        : tagSettingVerdict{"differs", kOtherForm};
  }
  return {
      "cannot be proved here",
      "on a printer whose resolutions were not all 600 or whose mode was not D, the resolution guard puts "
      "the earlier mode back and shows D meanwhile; this writes it past the guard: tvmgr op send-data "
      "--text \"^XA^S(CMP,U," +
          shown + "^XZ^XA^JUS^XZ\"",
      EProof::kOpen};
}

}  // namespace

tagSettingVerdict JudgeWritten(std::int32_t id, std::string_view asked, const std::string& shown,
                               const std::optional<std::string>& got, bool keep_resolution) {
  if (id == TVMGR_SETTING_ST) {
    return {"not readable", "sent; the printer has no query for this setting", EProof::kOpen};
  }
  if (!got) {
    return {"not readable", "sent; the printer does not answer for this setting"};
  }
  if (id == TVMGR_SETTING_CMP_U) {
    return JudgeMode(asked, shown, *got);
  }
  if (EqualsIgnoreCase(asked, *got)) {
    return {"written", "", EProof::kProved};
  }
  if (id == TVMGR_SETTING_CPC_Y) {
    return {"not readable", "sent; what the printer reports for this setting need not be what was written",
            EProof::kOpen};
  }
  if (!keep_resolution && IsResolution(id)) {
    return {
        "differs",
        "the resolution guard may have put the earlier value back: it does so on a printer whose "
        "resolutions were not all 600 or whose mode was not D; --keep-resolution leaves 3, 4 and 5 alone"};
  }
  return {"differs", kOtherForm};
}

}  // namespace tvmgr

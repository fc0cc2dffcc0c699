#include <algorithm>
#include <charconv>

#include "commands/commands.h"
#include "output/command_error.h"
#include "output/console.h"
#include "output/record_output.h"
#include "output/text_encoding.h"
#include "printer/answers.h"
#include "printer/manager_session.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

struct tagPrefix {
  std::uint8_t control = '~';
  std::uint8_t format = '^';
  std::uint8_t delimiter = ',';
};

constexpr std::int32_t kPrefixSettings[] = {TVMGR_SETTING_CCC_T, TVMGR_SETTING_CCC_C, TVMGR_SETTING_CCC_D};

bool IsPunctuation(std::uint8_t c) {
  const bool alphanumeric = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
  return c > 0x20 && c < 0x7F && !alphanumeric;
}

// The module sends whatever it is given; an unsuitable character would leave a printer that nobody can read.
std::uint8_t ParseCharacter(const std::string& text) {
  unsigned int byte = 0;
  if (text.size() == 1) {
    byte = static_cast<unsigned char>(text.front());
  } else if (text.size() == 4 && text.starts_with("0x")) {
    const char* const end = text.data() + text.size();
    if (std::from_chars(text.data() + 2, end, byte, 16).ptr != end) {
      byte = 0;
    }
  }
  const auto character = static_cast<std::uint8_t>(byte);
  if (!IsPunctuation(character)) {
    throw CUsageError("\"" + text +
                      "\" cannot be a prefix character: give one punctuation character, or 0xNN");
  }
  return character;
}

tagPrefix ParsePrefix(const std::vector<std::string>& texts) {
  const tagPrefix prefix{ParseCharacter(texts.at(0)), ParseCharacter(texts.at(1)),
                         ParseCharacter(texts.at(2))};
  if (prefix.control == prefix.format || prefix.format == prefix.delimiter ||
      prefix.control == prefix.delimiter) {
    throw CUsageError("the three prefix characters have to differ from one another");
  }
  return prefix;
}

std::string Shown(const tagPrefix& prefix) {
  const auto text = [](std::uint8_t c) { return std::string(1, static_cast<char>(c)); };
  return text(prefix.control) + " " + text(prefix.format) + " " + text(prefix.delimiter);
}

// The printer reports each character as two hexadecimal digits.
tagCell CharacterCell(const CManagerSession& session, std::int32_t id) {
  const std::optional<std::string> value = session.Value(id);
  unsigned int byte = 0;
  if (!value || value->size() != 2 ||
      std::from_chars(value->data(), value->data() + 2, byte, 16).ec != std::errc()) {
    return tagCell::Null("not answered");
  }
  const auto character = static_cast<char>(byte);
  return {EscapeBytes(std::string_view(&character, 1)) + "  (0x" + UpperAscii(*value) + ")",
          std::string(FromAnsi(std::string_view(&character, 1)).value_or("0x" + *value))};
}

void Print(const tagGlobalOptions& global, bool is_default, const std::vector<tagCell>& characters) {
  if (global.json) {
    CRecordOutput output({{"default", ""}, {"control", ""}, {"format", ""}, {"delimiter", ""}});
    output.Add({{"", is_default}, characters[0], characters[1], characters[2]});
    output.SetAsJson();
    return;
  }
  WriteOutput(std::string(is_default ? "default prefix characters" : "changed prefix characters") +
              "\n  control    " + characters[0].shown + "\n  format     " + characters[1].shown +
              "\n  delimiter  " + characters[2].shown + "\n");
}

int Show(const tagGlobalOptions& global, const CManagerSession& session) {
  const bool is_default = HasDefaultPrefix(session);  // of an answering printer only that counts
  std::vector<tagCell> characters(3, tagCell::Null("not answered"));
  if (session.Status() != TVMGR_STATUS_UNKNOWN) {
    session.LoadAll();
    std::transform(std::begin(kPrefixSettings), std::end(kPrefixSettings), characters.begin(),
                   [&](std::int32_t id) { return CharacterCell(session, id); });
  } else if (is_default) {
    throw CUnreachable(
        "the printer did not answer: check that it is switched on and connected and that --port, --device or "
        "--address names it");
  }
  Print(global, is_default, characters);
  if (!is_default) {
    session.Remark(
        "remark: a printer that no longer understands the default characters cannot be read or set; "
        "\"tvmgr prefix --default\" puts them back");
  }
  return kExitDone;
}

int Change(const CManagerSession& session, const tagPrefix& prefix) {
  // The change reads the three settings back, but only into values that a full load has stored before. A
  // printer that cannot be read at the moment is set all the same: that is how it is made readable again.
  const bool readable = session.Status() != TVMGR_STATUS_UNKNOWN;
  if (readable) {
    session.LoadAll();
  }
  session.Require("TVMGR_UpdatePrefix", "changing the prefix characters", limit::kPrefixChange,
                  [&] { return TVMGR_UpdatePrefix(prefix.control, prefix.format, prefix.delimiter); });
  const std::uint8_t asked[] = {prefix.control, prefix.format, prefix.delimiter};
  bool confirmed = readable;
  for (std::size_t i = 0; i < 3 && confirmed; ++i) {
    const char character = static_cast<char>(asked[i]);
    confirmed = EqualsIgnoreCase(session.Value(kPrefixSettings[i]).value_or(""), ToHex({&character, 1}));
  }
  if (!confirmed) {
    // The values may be those of before: the printer has perhaps become readable, or unreadable, just now.
    const bool wants_default = prefix.control == '~' && prefix.format == '^' && prefix.delimiter == ',';
    const bool is_default = HasDefaultPrefix(session);
    confirmed = wants_default ? is_default && session.Status() != TVMGR_STATUS_UNKNOWN : !is_default;
  }
  if (!confirmed) {
    throw CFailure("the prefix characters were sent, but the printer does not show them");
  }
  return kExitDone;
}

}  // namespace

int RunPrefix(const tagGlobalOptions& global, const tagPrefixOptions& options) {
  if (options.to_default && !options.characters.empty()) {
    throw CUsageError("--set and --default exclude each other");
  }
  const bool change = options.to_default || !options.characters.empty();
  const tagPrefix wanted = options.characters.empty() ? tagPrefix{} : ParsePrefix(options.characters);
  const tagPrinterChoice choice = change ? RequireChoice(global) : ChoiceInForce(global);
  if (change) {
    Confirm("change the prefix characters of " + Describe(choice) + " to " + Shown(wanted), options.yes);
  }
  const CManagerSession session(global, choice);
  if (change) {
    Change(session, wanted);
    if (global.quiet && !global.json) {
      return kExitDone;
    }
  }
  return Show(global, session);
}

}  // namespace tvmgr

#include "commands/commands.h"
#include "output/command_error.h"
#include "output/record_output.h"
#include "output/result_words.h"

namespace tvmgr {
namespace {

// Whole sentences do not fit into the columns of a terminal.
std::string Paragraph(const std::string& code, const tagResultWords& words) {
  std::string text = code + "  " + std::string(words.name) + "\n    " + std::string(words.meaning) + "\n";
  if (!words.advice.empty()) {
    text += "    -> " + std::string(words.advice) + "\n";
  }
  return text;
}

}  // namespace

int RunCodes(const tagGlobalOptions& global) {
  CRecordOutput output({{"code", ""}, {"name", ""}, {"meaning", ""}, {"advice", ""}});
  std::string text;
  const auto add = [&](const tagResultWords& words, const tagCell& code) {
    output.Add({code, tagCell::TextOrNull(std::string(words.name)), tagCell::Text(std::string(words.meaning)),
                tagCell::TextOrNull(std::string(words.advice))});
    text += Paragraph(code.shown, words);
  };
  for (const tagResultWords& words : AllResults()) {
    add(words, tagCell::Number(words.code));
  }
  add(PortLibraryResult(), tagCell::Null("other"));
  if (global.json) {
    output.SetAsJson("codes");
  } else {
    WriteOutput(text);
  }
  return kExitDone;
}

}  // namespace tvmgr

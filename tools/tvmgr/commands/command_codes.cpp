#include "commands/commands.h"
#include "output/command_error.h"
#include "output/record_output.h"
#include "output/result_words.h"

namespace tvmgr {
namespace {

// Whole sentences do not fit into the columns of a terminal.
std::string Paragraph(const std::string& code, const tagResultWords& words, const std::string& meaning) {
  std::string text = code + "  " + std::string(words.name) + "\n    " + meaning + "\n";
  if (!words.advice.empty()) {
    text += "    -> " + std::string(words.advice) + "\n";
  }
  return text;
}

}  // namespace

int RunCodes(const tagGlobalOptions& global, const tagCodesOptions& options) {
  CRecordOutput output({{"code", ""}, {"name", ""}, {"meaning", ""}, {"advice", ""}});
  std::string text;
  const auto add = [&](const tagResultWords& words, const tagCell& code, const std::string& meaning) {
    output.Add({code, tagCell::TextOrNull(std::string(words.name)), tagCell::Text(meaning),
                tagCell::TextOrNull(std::string(words.advice))});
    text += Paragraph(code.shown, words, meaning);
  };
  if (options.code) {
    add(WordsOf(*options.code), tagCell::Number(*options.code), MeaningOf(*options.code));
  } else {
    for (const tagResultWords& words : AllResults()) {
      add(words, tagCell::Number(words.code), std::string(words.meaning));
    }
    add(PortLibraryResult(), tagCell::Null("other"), std::string(PortLibraryResult().meaning));
  }
  if (global.json) {
    output.SetAsJson("codes");
  } else {
    WriteOutput(text);
  }
  return kExitDone;
}

}  // namespace tvmgr

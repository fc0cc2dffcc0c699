#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "output/command_error.h"

namespace tvmgr {

/** A result code in words. */
struct tagResultWords {
  std::int32_t code;
  std::string_view name; /**< as in enum TvmgrResult; empty for a code of the port library */
  std::string_view meaning;
  std::string_view advice; /**< what to do about it; empty for success */
};

/** Every result code of the module itself, success first. */
std::span<const tagResultWords> AllResults();

/** What any other code is: the port library's own. */
const tagResultWords& PortLibraryResult();

/** The program's exit code for a call that ended with this code: a code of the port library means no printer. */
int ExitCodeOf(std::int32_t code);

/** The words of a code: the module's, or those for every code of the port library. */
const tagResultWords& WordsOf(std::int32_t code);

/** What a code means; for a code of the port library also what the emulated printer's one means by it. */
std::string MeaningOf(std::int32_t code);

/** "code: meaning: advice", for codes of the module and of the port library. */
std::string ExplainResult(std::int32_t code);

/** What to do about a printer that does not answer. */
inline constexpr char kSilentAdvice[] =
    "check that it is switched on and connected, that --port, --device or --address names it, and that its "
    "prefix "
    "characters are the default ones (tvmgr prefix)";

/** What to do about an error: its own advice, else that of its result code or kind; empty: the text says it all. */
std::string AdviceFor(const CCommandError& error);

/** The error for a call that ended with this code: "TEXT: code: meaning: advice". `step` is what it did, in words. */
CFailure CallFailure(const std::string& text, const std::string& step, std::int32_t code);

}  // namespace tvmgr

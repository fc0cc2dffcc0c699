#include <string>
#include <vector>

#include "options/command_line.h"
#include "output/console.h"
#include "output/text_encoding.h"

// The start-up code would otherwise replace arguments with * and ? by the files of the folder that match.
extern "C" int _dowildcard;  // NOLINT(bugprone-reserved-identifier): the start-up code looks for this name
int _dowildcard = 0;

extern "C" int wmain(int count, wchar_t** texts) {
  const tvmgr::CConsoleSetup console;
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) {
    arguments.push_back(tvmgr::ToUtf8(texts[i]));
  }
  return tvmgr::RunCommandLine(std::move(arguments));
}

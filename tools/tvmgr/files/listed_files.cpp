#include "files/listed_files.h"

#include "names/name_pattern.h"
#include "output/command_error.h"
#include "output/text_encoding.h"
#include "printer/answers.h"

namespace tvmgr {

std::string WithoutDevice(const std::string& name) {
  const std::size_t colon = name.find(':');
  if (colon == std::string::npos) {
    return name;
  }
  if (!EqualsIgnoreCase(name.substr(0, colon), "E")) {
    throw CUsageError("\"" + name + "\": the printer lists the files of device E: only");
  }
  return name.substr(colon + 1);
}

std::vector<tagListedFile> MatchingFiles(const CManagerSession& session, std::string_view pattern) {
  std::vector<tagListedFile> files;
  for (const tagFileKind& kind : AllFileKinds()) {
    for (std::string& name : session.FileNames(kind.list)) {
      if (MatchesPattern(pattern, name)) {
        files.push_back({std::move(name), &kind});
      }
    }
  }
  return files;
}

void RefuseUnmatched(const CManagerSession& session, const std::string& pattern) {
  RequireStillAnswering(session, "the lists were read");
  if (IsAnswerCut(session)) {
    throw CUnproved("no file in the printer's lists matches \"" + pattern +
                    "\", but they were cut off: there may be more");
  }
  throw CFailure("no stored file matches \"" + pattern + "\" (\"tvmgr files\" lists them)");
}

}  // namespace tvmgr

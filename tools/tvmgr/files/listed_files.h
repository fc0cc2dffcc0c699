#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "files/file_kinds.h"
#include "printer/manager_session.h"

namespace tvmgr {

/** The name without "E:", the device whose files the printer lists; any other device ends the command (usage). */
std::string WithoutDevice(const std::string& name);

struct tagListedFile {
  std::string name; /**< as the printer lists it, UTF-8 */
  const tagFileKind* kind;
};

/** The files in the lists, as last refreshed, whose names match the pattern ("*.PNG"). */
std::vector<tagListedFile> MatchingFiles(const CManagerSession& session, std::string_view pattern);

/** Ends the command: no stored file matches. A printer that has fallen silent is told so. */
[[noreturn]] void RefuseUnmatched(const CManagerSession& session, const std::string& pattern);

}  // namespace tvmgr

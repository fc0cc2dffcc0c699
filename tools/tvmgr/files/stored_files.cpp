#include "files/stored_files.h"

#include <algorithm>

#include "output/text_encoding.h"

namespace tvmgr {

bool IsStored(const CManagerSession& session, const tagFileKind& kind, std::string_view name) {
  const std::vector<std::string> names = session.FileNames(kind.list);
  return std::any_of(names.begin(), names.end(),
                     [&](const std::string& stored) { return EqualsIgnoreCase(stored, name); });
}

}  // namespace tvmgr

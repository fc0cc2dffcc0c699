#pragma once

#include <string_view>

#include "files/file_kinds.h"
#include "printer/manager_session.h"

namespace tvmgr {

/** True when the kind's list, as last refreshed, holds the name; letter case does not count. */
bool IsStored(const CManagerSession& session, const tagFileKind& kind, std::string_view name);

}  // namespace tvmgr

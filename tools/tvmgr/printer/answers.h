#pragma once

#include <string>

#include "printer/manager_session.h"

namespace tvmgr {

/** The keys of the readable settings to which the last full load brought no answer, "CLM,P CLM,S"; else empty. */
std::string UnansweredSettings(const CManagerSession& session);

/**
 * True when the answer to the last full load was cut off: it brought nothing for the setting asked for last.
 * The lists of files may be cut then, too.
 */
bool IsAnswerCut(const CManagerSession& session);

/** True as long as the printer does not say that its prefix characters are others; a silent one reads so, too. */
bool HasDefaultPrefix(const CManagerSession& session);

/** Asks for the status; ends the command when the printer does not answer. `what` was done until then. */
void RequireStillAnswering(const CManagerSession& session, const std::string& what);

}  // namespace tvmgr

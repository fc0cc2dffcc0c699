#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "options/options.h"

namespace tvmgr {

// The file of --trace: a line for each call of the module (docs/trace.md). One for a process. What cannot be written, as
// on a full disk, is counted and told at the end; no call notices it.

/**
 * Begins a trace when the options ask for one: appended to a file that is a trace, else a new file. Ends the command when that
 * cannot be written, or is a file of another kind.
 *
 * @param command  what runs, "backup check"
 */
void OpenTrace(const tagGlobalOptions& options, const std::string& command);

bool IsTracing();

/** True when contents of files are to be shown, too. */
bool TracesContents();

/**
 * Ends it: adds what the recorder, if there is one, has written of this process, and tells how much is missing.
 *
 * @param is_stuck  a DLL may be in the middle of being loaded: no question about DLLs would come back
 */
void CloseTrace(int exit_code, bool is_stuck = false);

/** Adds a line to the trace of a process that was ended; no trace, no file: nothing happens. */
void AppendToTrace(const tagGlobalOptions& options, const std::string& text);

/** Bytes of the user's that the trace does not show: what the recorder has written of them is left out, too. */
void LeaveOutOfTrace(std::string_view bytes);

/** A call begins: what is known of it is with the system before it runs. The result goes to EndTracedCall. */
std::uint64_t BeginTracedCall(const std::string& call);
void EndTracedCall(std::uint64_t number, const char* function, const std::string& result);

}  // namespace tvmgr

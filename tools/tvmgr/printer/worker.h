#pragma once

#include <optional>
#include <string>
#include <vector>

#include "options/options.h"

namespace tvmgr {

/** Which part of a command this process has. */
enum class ERole {
  kUser,   /**< started by somebody: watches a worker, or works itself where no printer is involved */
  kWorker, /**< works with the printer, watched by the process that started it */
  kProbe   /**< asks for the printer's status and ends */
};

/** The role that the first argument assigns; takes that argument away. */
ERole TakeRole(std::vector<std::string>& arguments);

/** How long a command may take before the printer is asked whether it is there, and what its end may leave. */
struct tagWatch {
  double timeout_s = 0; /**< without --timeout; 0: never asked */
  std::string left;     /**< what the printer may be left with when the work is ended; UTF-8 */
};

/**
 * Runs the command line once more in a process of its own, with the same streams, and waits for it. When
 * the time is over and the printer does not answer two questions for its status in a row, or when a call
 * takes longer than it can, the process is ended: no other way leads out of a port library that hangs.
 *
 * @return its exit code; none when no process could be started
 */
std::optional<int> RunInWorker(const tagGlobalOptions& options, const tagWatch& watch);

/**
 * Asks for the status of the printer in force, in a process of its own; at most 12 s, also when the port library hangs.
 *
 * @return 0: it answers; 4: it does not, or cannot be reached; other: it cannot be asked; none: no process
 */
std::optional<int> AskForStatus();

/** The work of a probe. Exit code 0: the printer answers. */
int RunProbe(const tagGlobalOptions& options);

}  // namespace tvmgr

#pragma once

namespace tvmgr {

/**
 * A job object (HANDLE): the processes that are put into it end when it is closed, and so with this process, however this one
 * ends. Null when the system makes none; to be closed by the caller.
 */
void* MakeProcessJob();

}  // namespace tvmgr

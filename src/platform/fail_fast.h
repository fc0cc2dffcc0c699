#pragma once

namespace tavira {

/**
 * Ends the process at once after a misuse that would otherwise corrupt the host's memory. Not an exception: a
 * host must not be able to swallow it.
 */
[[noreturn]] void FailFast();

}  // namespace tavira

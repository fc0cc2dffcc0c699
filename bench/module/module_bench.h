#pragma once

#include <string>

#include "bench/support/measure.h"

namespace tavira::bench {

/** Behind the name of a row, where it was measured; and the time that counts there: under Wine files are the work
 * of another process. */
#ifdef _WIN32
inline const std::string kWhere = ", Wine";
inline constexpr ETime kFileTime = ETime::kWall;
#else
inline const std::string kWhere;
inline constexpr ETime kFileTime = ETime::kCpu;
#endif

/** Throws std::runtime_error when an operation of the module failed. */
void Require(std::int32_t result);

// Each prints its rows and throws std::runtime_error when an operation fails.
void MeasureBackupPiece();
void MeasurePort();
void MeasureTransfers();

}  // namespace tavira::bench

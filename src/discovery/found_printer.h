#pragma once

#include <cstdint>

#include "platform/wide_string.h"

namespace tavira {

/** The module's own copy of a found-printer record. */
struct tagFoundPrinter {
  std::int32_t kind = TVMGR_SEARCH_USB;
  WideString text1; /**< USB: model. Network: first name. Device info: port name */
  WideString text2; /**< USB: device ID. Network: second name */
  WideString text3; /**< USB: device path */
  std::int32_t value1 = 0;
  std::int32_t value2 = 0;
  WideString text4; /**< USB: product name */
  WideString text5; /**< network: address */
};

/** Copies a host's record; its texts may point at any zero-terminated text. Throws std::bad_alloc. */
tagFoundPrinter ReadHostRecord(const TvmgrFoundPrinter& record);

/**
 * Writes a host's record; what its texts held is released. Throws std::bad_alloc and then changes nothing.
 */
void WriteHostRecord(const tagFoundPrinter& printer, TvmgrFoundPrinter& record);

}  // namespace tavira

#pragma once

#include <cstdint>

namespace tvmgr {

struct tagStatusWords {
  const char* name;
  const char* meaning;
};

/** A printer's state (enum TvmgrStatus) in words. */
tagStatusWords StatusWords(std::uint32_t status);

}  // namespace tvmgr

#include "output/status_words.h"

#include "tavira/TaviraManager.h"

namespace tvmgr {

tagStatusWords StatusWords(std::uint32_t status) {
  switch (status) {
    case TVMGR_STATUS_IDLE:
      return {"idle", "ready"};
    case TVMGR_STATUS_BUSY:
      return {"busy", "printing, in a maintenance routine, or off-line by its own panel"};
    case TVMGR_STATUS_UNKNOWN:
      return {"unknown", "the printer did not answer: off-line or not reachable"};
    default:
      return {"other", "the printer reports a state that has no name here"};
  }
}

}  // namespace tvmgr

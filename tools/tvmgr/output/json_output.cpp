#include "output/json_output.h"

#include "output/record_output.h"

namespace tvmgr {

void PrintJson(const Json& json, bool compact) {
  WriteOutput(json.dump(compact ? -1 : 2, ' ', false, Json::error_handler_t::replace) + "\n");
}

}  // namespace tvmgr

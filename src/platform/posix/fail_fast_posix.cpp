#include "platform/fail_fast.h"

#include <cstdlib>

namespace tavira {

void FailFast() {
  std::abort();
}

}  // namespace tavira

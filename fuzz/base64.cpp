#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "storage/base64.h"
#include "tests/unit/storage/base64_reference.h"

// The fast decoder must agree with the plain one on any input: clean, broken into lines, or junk.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  if (tavira::DecodeBase64(text) != tavira::test::DecodeBase64OneByOne(text)) {
    std::abort();
  }
  return 0;
}

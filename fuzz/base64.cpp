#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "storage/base64.h"
#include "tests/unit/storage/base64_reference.h"

// The fast decoder must agree with the plain one on any input: clean, broken into lines, or junk.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const std::string expected = tavira::test::DecodeBase64OneByOne(text);
  // In one piece, and in two, cut where the last byte says.
  const std::size_t cut = size == 0 ? 0 : data[size - 1] * size / 255;
  std::string in_two = "before";
  tavira::CBase64Decoder decoder;
  decoder.Append(text.substr(0, cut), in_two);
  decoder.Append(text.substr(cut), in_two);
  decoder.Finish(in_two);
  if (tavira::DecodeBase64(text) != expected || in_two != "before" + expected) {
    std::abort();
  }
  return 0;
}

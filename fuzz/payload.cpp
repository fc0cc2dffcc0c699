#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "storage/payload.h"
#include "tests/unit/storage/base64_reference.h"

namespace {

void Require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

/** Behind a whole header: what no marker announces comes back as it is, what one announces decoded. */
void CheckDataField(const std::string& field) {
  std::string data;
  Require(tavira::ExtractPayload("~DYE:A.PNG,B,P,1,0," + field, data) == 0);
  const bool has_marker = field.find(":Z64:") != field.npos || field.find(":B64:") != field.npos;
  Require(has_marker ? data.size() <= field.size() : data == field);
  // A ":" of the field itself would close the payload, and "Z64" between two would be another marker.
  if (field.find(':') == field.npos && field != "Z64") {
    for (const char* marker : {":Z64:", ":B64:"}) {
      Require(tavira::ExtractPayload("~DYE:A.PNG,B,P,1,0," + std::string(marker) + field + ":1234", data) ==
              0);
      Require(data == tavira::test::DecodeBase64OneByOne(field));
    }
  }
}

/** Only a device and an extension are put in, and only once. */
void CheckFormatName(const std::string& format, std::string_view requested) {
  std::string completed = format;
  tavira::CompleteFormatName(completed, requested);
  Require(completed.size() <= format.size() + 6);
  auto original = format.begin();
  for (const char byte : completed) {
    original += original != format.end() && *original == byte ? 1 : 0;
  }
  Require(original == format.end());
  Require(format.find("^DF") != format.npos || completed == format);
  std::string again = completed;
  tavira::CompleteFormatName(again, requested);
  Require(again == completed);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string answer(reinterpret_cast<const char*>(data), size);
  std::string extracted = "old";
  Require(tavira::ExtractPayload(answer, extracted) == 0);
  Require(extracted.size() <= answer.size());
  Require(answer.find("~DY") != answer.npos || extracted == answer);
  CheckDataField(answer);
  CheckFormatName(answer, "A.ZPL");
  CheckFormatName("^XA^DF" + answer, "A.FMT");
  return 0;
}

#include "settings/background_file.h"

#include <new>

namespace tavira {
namespace {

constexpr std::string_view kBackgroundFile = "KORVDEF.BGD";

}  // namespace

std::int32_t CBackgroundFile::Load() {
  std::string bytes;
  const WideString name = WidenAscii(kBackgroundFile);
  if (files_.IsListed({TVMGR_LIST_BACKGROUND}, name)) {
    const std::int32_t result = stored_data_.Load(name.c_str(), kObjectMode, kDefaultTimeoutMs);
    if (result != TVMGR_OK) {
      return result;
    }
    bytes = stored_data_.Data();
  }
  try {
    store_.PutValue(TVMGR_SETTING_BACKGROUND, std::move(bytes));
  } catch (const std::bad_alloc&) {  // everything else is loaded: the host finds no value under 37
  }
  return TVMGR_OK;
}

}  // namespace tavira

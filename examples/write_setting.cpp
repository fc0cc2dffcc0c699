// Writes one setting, has the printer save it, and says whether the printer confirms it.
//
//   write_setting NUMBER VALUE [PORT]     for example: write_setting 6 12 USB001
#include <tavira/TaviraManager.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

// The module lives as long as this object.
class CModule {
 public:
  CModule() : result_(TVMGR_Initialize()) {}
  ~CModule() { TVMGR_Terminate(); }
  CModule(const CModule&) = delete;
  CModule& operator=(const CModule&) = delete;
  std::int32_t Result() const { return result_; }

 private:
  std::int32_t result_;
};

std::string StoredValue(std::int32_t id) {
  std::int32_t length = 0;
  if (!TVMGR_GetSettingValue(id, nullptr, &length) || length <= 0) {
    return {};
  }
  std::string value(static_cast<std::size_t>(length), '\0');
  TVMGR_GetSettingValue(id, reinterpret_cast<std::uint8_t*>(value.data()), &length);
  return value;
}

// Whether it answers is found out in 3 s; every later wait for a silent printer would last a minute.
std::int32_t AskForStatus(const wchar_t* port, std::uint32_t* status) {
  const std::int32_t result = TVMGR_UpdatePortComInfo(nullptr, port);
  return result == TVMGR_OK ? TVMGR_GetPrinterStatus(status) : result;
}

std::int32_t Write(std::int32_t id, const std::string& value) {
  std::int32_t result = TVMGR_ClearUpdateList();
  if (result == TVMGR_OK) {
    result = TVMGR_SetUpdateList(static_cast<std::uint32_t>(id),
                                 reinterpret_cast<const std::uint8_t*>(value.data()),
                                 static_cast<std::int32_t>(value.size()));
  }
  return result == TVMGR_OK ? TVMGR_UpdatePrinterSetting() : result;
}

}  // namespace

int main(int count, char** arguments) {
  const bool is_number = count >= 3 && arguments[1][std::strspn(arguments[1], "0123456789")] == '\0';
  const std::int32_t id = is_number ? std::atoi(arguments[1]) : 0;
  if (id <= 0) {
    std::fputs("usage: write_setting NUMBER VALUE [PORT]\n", stderr);
    return 2;
  }
  const std::string value = arguments[2];
  // Port names are ASCII, so each character becomes one of UTF-16.
  const std::string port = count > 3 ? arguments[3] : "";
  const std::wstring wide_port(port.begin(), port.end());

  const CModule module;
  if (module.Result() != TVMGR_OK) {
    std::fprintf(stderr, "TVMGR_Initialize: %d (-5: Ferrolink.dll is missing or incomplete)\n",
                 static_cast<int>(module.Result()));
    return 1;
  }
  std::uint32_t status = TVMGR_STATUS_UNKNOWN;
  std::int32_t result = AskForStatus(port.empty() ? nullptr : wide_port.c_str(), &status);
  if (result != TVMGR_OK) {
    std::fprintf(stderr, "asking for the status failed: %d\n", static_cast<int>(result));
    return 1;
  }
  if (status == TVMGR_STATUS_UNKNOWN) {
    std::fputs("the printer does not answer\n", stderr);
    return 1;
  }
  result = Write(id, value);
  switch (result) {
    case TVMGR_OK:
      std::printf("setting %d is %s\n", static_cast<int>(id), value.c_str());
      return 0;
    case TVMGR_NOT_CONFIRMED:
      std::printf("setting %d was sent as %s, the printer shows %s\n", static_cast<int>(id), value.c_str(),
                  StoredValue(id).c_str());
      return 1;
    default:
      std::fprintf(stderr, "writing setting %d failed: %d\n", static_cast<int>(id), static_cast<int>(result));
      return 1;
  }
}

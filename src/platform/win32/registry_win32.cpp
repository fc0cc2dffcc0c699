#include "platform/registry.h"

#include <array>
#include <utility>

#include "platform/win32/registry_key_win32.h"

namespace tavira {
namespace {

/** The longest name of a key, with its terminator. */
constexpr std::size_t kNameSize = 256;
/** Room for most values, in bytes. */
constexpr DWORD kUsualTextSize = 512;

class CWin32RegistryKey final : public IRegistryKey {
 public:
  explicit CWin32RegistryKey(RegistryKeyHandle key) : key_(std::move(key)) {}

  std::unique_ptr<IRegistryKey> Open(const WideString& path) override {
    HKEY below = nullptr;
    if (::RegOpenKeyExW(key_.get(), path.c_str(), 0, KEY_READ, &below) != ERROR_SUCCESS) {
      return nullptr;
    }
    return MakeRegistryKey(RegistryKeyHandle(below));
  }

  std::vector<WideString> SubkeyNames() override {
    std::vector<WideString> names;
    std::array<wchar_t, kNameSize> name{};
    for (DWORD i = 0;; ++i) {
      DWORD length = name.size();
      const LSTATUS status =
          ::RegEnumKeyExW(key_.get(), i, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
      if (status != ERROR_SUCCESS) {
        return names;
      }
      names.emplace_back(name.data(), length);
    }
  }

  WideString ReadText(const WideString& value) override {
    WideString text;
    DWORD size = kUsualTextSize;
    LSTATUS status = ERROR_SUCCESS;
    do {  // until the room suffices, also when the value grows meanwhile
      text.resize(size / sizeof(wchar_t) + 1);
      size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
      status = Get(value, RRF_RT_REG_SZ, text.data(), size);
    } while (status == ERROR_MORE_DATA);
    return status == ERROR_SUCCESS ? WideString(text.c_str()) : WideString();
  }

  std::optional<std::uint32_t> ReadNumber(const WideString& value) override {
    DWORD number = 0;
    DWORD size = sizeof(number);
    const bool found = Get(value, RRF_RT_REG_DWORD, &number, size) == ERROR_SUCCESS;
    return found ? std::optional<std::uint32_t>(number) : std::nullopt;
  }

 private:
  LSTATUS Get(const WideString& value, DWORD type, void* data, DWORD& size) {
    return ::RegGetValueW(key_.get(), nullptr, value.c_str(), type, nullptr, data, &size);
  }

  RegistryKeyHandle key_;
};

}  // namespace

std::unique_ptr<IRegistryKey> MakeRegistryKey(RegistryKeyHandle key) {
  return std::make_unique<CWin32RegistryKey>(std::move(key));
}

std::unique_ptr<IRegistryKey> MakeLocalMachine() {
  return MakeRegistryKey(RegistryKeyHandle(HKEY_LOCAL_MACHINE));
}

}  // namespace tavira

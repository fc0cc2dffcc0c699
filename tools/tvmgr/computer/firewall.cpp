#include "computer/firewall.h"

#include <windows.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "computer/firewall_rule.h"
#include "output/text_encoding.h"
#include "output/text_layout.h"

namespace tvmgr {
namespace {

constexpr wchar_t kPolicy[] =
    L"SYSTEM\\CurrentControlSet\\Services\\SharedAccess\\Parameters\\FirewallPolicy";

class CKey {
 public:
  explicit CKey(const std::wstring& name) {
    is_open_ = RegOpenKeyExW(HKEY_LOCAL_MACHINE, name.c_str(), 0, KEY_READ, &key_) == ERROR_SUCCESS;
  }
  ~CKey() {
    if (is_open_) {
      RegCloseKey(key_);
    }
  }
  CKey(const CKey&) = delete;
  CKey& operator=(const CKey&) = delete;

  std::optional<DWORD> Number(const wchar_t* name) const {
    DWORD number = 0;
    DWORD size = sizeof number;
    return is_open_ && RegQueryValueExW(key_, name, nullptr, nullptr, reinterpret_cast<BYTE*>(&number),
                                        &size) == ERROR_SUCCESS
               ? std::optional(number)
               : std::nullopt;
  }

  /** The text of the value with this number; false behind the last one. Empty for other kinds of values. */
  bool TextAt(DWORD index, std::wstring& text) const {
    constexpr DWORD kCharacters = 16'384;
    std::wstring name(kCharacters, L'\0');
    text.assign(kCharacters, L'\0');
    DWORD name_size = kCharacters;
    DWORD size = kCharacters * sizeof(wchar_t);
    DWORD type = REG_NONE;
    const LSTATUS result = is_open_ ? RegEnumValueW(key_, index, name.data(), &name_size, nullptr, &type,
                                                    reinterpret_cast<BYTE*>(text.data()), &size)
                                    : ERROR_NO_MORE_ITEMS;
    text.resize(result == ERROR_SUCCESS && type == REG_SZ ? size / sizeof(wchar_t) : 0);
    text.resize(std::min(text.find(L'\0'), text.size()));
    return result == ERROR_SUCCESS || result == ERROR_MORE_DATA;
  }

 private:
  HKEY key_ = nullptr;
  bool is_open_ = false;
};

std::string Expanded(const std::string& path) {
  std::wstring text(32'768, L'\0');
  const DWORD size =
      ExpandEnvironmentStringsW(ToWide(path).c_str(), text.data(), static_cast<DWORD>(text.size()));
  text.resize(size == 0 || size > text.size() ? 0 : size - 1);
  return ToUtf8(text);
}

}  // namespace

tagFirewallFacts LookAtFirewall(const std::string& program) {
  tagFirewallFacts facts;
  const std::pair<const char*, const wchar_t*> profiles[] = {
      {"domain", L"\\DomainProfile"}, {"private", L"\\StandardProfile"}, {"public", L"\\PublicProfile"}};
  for (const auto& [name, key_name] : profiles) {
    const CKey key(std::wstring(kPolicy) + key_name);
    const std::optional<DWORD> is_on = key.Number(L"EnableFirewall");
    facts.is_known = facts.is_known || is_on;
    if (is_on.value_or(0) != 0) {
      facts.profiles.emplace_back(name);
    }
  }
  const CKey rules(std::wstring(kPolicy) + L"\\FirewallRules");
  std::wstring text;
  for (DWORD i = 0; rules.TextAt(i, text); ++i) {
    const tagFirewallRule rule = ParseFirewallRule(ToUtf8(text));
    if (rule.is_active && rule.is_block && rule.is_inbound && rule.is_udp && HoldsIn(rule, facts.profiles) &&
        !rule.program.empty() && EqualsIgnoreCase(Expanded(rule.program), program)) {
      facts.blocking.push_back(rule.name);
    }
  }
  return facts;
}

}  // namespace tvmgr

#include "platform/profile_file.h"

#include <dlfcn.h>

#include <filesystem>
#include <fstream>
#include <string_view>

namespace tavira {
namespace {

constexpr std::string_view kBlanks = " \t\r";

std::string_view Trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  return first == std::string_view::npos ? std::string_view()
                                         : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool IsSame(std::string_view left, std::string_view right) {
  return EqualsIgnoringCase(WidenAscii(left), WidenAscii(right));
}

std::string_view Unquote(std::string_view value) {
  const bool is_quoted =
      value.size() > 1 && value.front() == value.back() && (value.front() == '"' || value.front() == '\'');
  return is_quoted ? value.substr(1, value.size() - 2) : value;
}

/** Reads profile files by the rules of Windows: the first section and key of a name count, blanks do not. */
class CPosixProfileFile final : public IProfileFile {
 public:
  WideString ReadWide(const WideString& path, const char* section, const char* key,
                      std::size_t buffer_size) override {
    WideString value;
    const std::string bytes = Find(path, section, key);
    for (const char byte : std::string_view(bytes).substr(0, buffer_size == 0 ? 0 : buffer_size - 1)) {
      value.push_back(static_cast<TvmgrChar>(static_cast<unsigned char>(byte)));  // ISO 8859-1
    }
    return value;
  }

  WideString ModulePath() override {
    Dl_info module{};
    std::error_code error;
    if (::dladdr(reinterpret_cast<const void*>(&MakeProfileFile), &module) == 0 ||
        module.dli_fname == nullptr) {
      return {};
    }
    return std::filesystem::absolute(module.dli_fname, error).u16string();
  }

 private:
  static std::string Find(const WideString& path, std::string_view section, std::string_view key) {
    std::ifstream file{std::filesystem::path(path)};
    bool inside = false;
    for (std::string line; std::getline(file, line);) {
      const std::string_view text = Trim(line);
      if (text.starts_with('[')) {
        if (inside) {
          break;
        }
        inside = IsSame(text.substr(1, text.find(']') - 1), section);
        continue;
      }
      const std::size_t equals = text.find('=');
      if (inside && !text.starts_with(';') && equals != std::string_view::npos &&
          IsSame(Trim(text.substr(0, equals)), key)) {
        return std::string(Unquote(Trim(text.substr(equals + 1))));
      }
    }
    return {};
  }
};

}  // namespace

std::unique_ptr<IProfileFile> MakeProfileFile() {
  return std::make_unique<CPosixProfileFile>();
}

}  // namespace tavira

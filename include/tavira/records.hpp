/* Bytes, texts and records of the C++ layer; see manager.hpp. */
#ifndef TAVIRA_RECORDS_HPP_
#define TAVIRA_RECORDS_HPP_

#include <tavira/error.hpp>

#include <string_view>
#include <vector>

namespace tavira {

using Setting = TvmgrSetting;
using FileList = TvmgrFileList;
using Operation = TvmgrOperation;
using Request = TvmgrRequest;
using Status = TvmgrStatus;
using SearchKind = TvmgrSearchKind;

/** Bytes to hand over, where they lie: a string, a vector, or an address and a size. Owns nothing. */
class Bytes {
 public:
  Bytes() = default;
  Bytes(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
  Bytes(std::string_view text) : Bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()) {}
  Bytes(const std::string& text) : Bytes(std::string_view(text)) {}
  Bytes(const char* text) : Bytes(std::string_view(text)) {}
  Bytes(const std::vector<std::uint8_t>& bytes) : Bytes(bytes.data(), bytes.size()) {}

  const std::uint8_t* Data() const { return data_; }
  std::size_t Size() const { return size_; }

 private:
  const std::uint8_t* data_ = nullptr;
  std::size_t size_ = 0;
};

/** One printer: of a search, or to be chosen. Empty members say nothing. */
struct FoundPrinter {
  SearchKind kind = TVMGR_SEARCH_USB;
  std::wstring name;           /**< USB: model. Network: first name. Of Manager::Choice: the port name */
  std::wstring identification; /**< USB: IEEE 1284 device ID. Network: second name */
  std::wstring device_path;    /**< USB */
  std::int32_t vendor_id = 0;  /**< USB; 0 when not read */
  std::int32_t product_id = 0; /**< USB; 0 when not read */
  std::wstring product_name;   /**< USB */
  std::wstring address;        /**< Network */
};

/** What a backup is to hold. */
struct BackupSections {
  bool settings = true;
  bool section_p = true; /**< named in the header only */
  bool graphics = true;
  bool formats = true;
  bool fonts = true;
  bool section_c = true; /**< named in the header only */
  bool background = true;
};

namespace detail {

using Utf16 = std::basic_string<TvmgrChar>;

/** Lone surrogates stay as they are, here and in FromUtf16. */
inline Utf16 ToUtf16(const char* function, std::wstring_view text) {
  Utf16 units;
  units.reserve(text.size());
  for (const wchar_t character : text) {
    const auto code = static_cast<std::uint32_t>(character);
    if (code == 0 || code > 0x10FFFF) {
      throw Error(function, TVMGR_BAD_ARGUMENT, "a character inside a text that UTF-16 text cannot hold");
    }
    if constexpr (sizeof(wchar_t) > sizeof(TvmgrChar)) {
      if (code > 0xFFFF) {
        units.push_back(static_cast<TvmgrChar>(0xD7C0 + (code >> 10)));
        units.push_back(static_cast<TvmgrChar>(0xDC00 + (code & 0x3FF)));
        continue;
      }
    }
    units.push_back(static_cast<TvmgrChar>(code));
  }
  return units;
}

inline std::wstring FromUtf16(TvmgrText text) {
  const std::size_t length = TvmgrTextLength(text);
  std::wstring result;
  result.reserve(length);
  for (std::size_t i = 0; i < length; ++i) {
    const auto unit = static_cast<std::uint32_t>(text[i]);
    if constexpr (sizeof(wchar_t) > sizeof(TvmgrChar)) {
      const auto next = static_cast<std::uint32_t>(text[i + 1]);  // at the end: the terminator
      if ((unit & 0xFC00) == 0xD800 && (next & 0xFC00) == 0xDC00) {
        result.push_back(static_cast<wchar_t>(0x10000 + ((unit & 0x3FF) << 10) + (next & 0x3FF)));
        ++i;
        continue;
      }
    }
    result.push_back(static_cast<wchar_t>(unit));
  }
  return result;
}

/** A record whose texts the module writes; releases them. */
class ModuleRecord {
 public:
  ModuleRecord() = default;
  ~ModuleRecord() { TvmgrFoundPrinterRelease(&record_); }
  ModuleRecord(const ModuleRecord&) = delete;
  ModuleRecord& operator=(const ModuleRecord&) = delete;

  TvmgrFoundPrinter* Get() { return &record_; }
  FoundPrinter Read() const {
    return {static_cast<SearchKind>(record_.kind),
            FromUtf16(record_.text1),
            FromUtf16(record_.text2),
            FromUtf16(record_.text3),
            record_.value1,
            record_.value2,
            FromUtf16(record_.text4),
            FromUtf16(record_.text5)};
  }

 private:
  TvmgrFoundPrinter record_ = {};
};

}  // namespace detail

}  // namespace tavira

#endif /* TAVIRA_RECORDS_HPP_ */

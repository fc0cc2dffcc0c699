#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

#include "platform/wide_string.h"

namespace tavira::test {

/** The path of a file of the test's own, with a name beyond ASCII; the file is removed at the end. */
class CTemporaryFile {
 public:
  CTemporaryFile() {
    const auto unique = std::filesystem::path(u8"tavira_\u00e4\u00f6_" + Number(std::random_device()()) +
                                              u8"_" + Number(std::random_device()()) + u8".bak");
    path_ = std::filesystem::temp_directory_path() / unique;
    text_ = path_.string<TvmgrChar>();
    std::ofstream(path_, std::ios::binary | std::ios::app).close();
  }
  ~CTemporaryFile() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
  CTemporaryFile(const CTemporaryFile&) = delete;
  CTemporaryFile& operator=(const CTemporaryFile&) = delete;

  /** As a host hands it over. */
  const WideString& Path() const { return text_; }

  void Write(std::string_view contents) const {
    std::ofstream(path_, std::ios::binary | std::ios::trunc) << contents;
  }

  std::string Read() const {
    std::ifstream file(path_, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  static std::u8string Number(unsigned number) {
    const std::string digits = std::to_string(number);
    return {digits.begin(), digits.end()};
  }

  std::filesystem::path path_;
  WideString text_;
};

}  // namespace tavira::test

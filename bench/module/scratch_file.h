#pragma once

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

#include "bench/support/measure.h"
#include "platform/wide_string.h"

namespace tavira::bench {

/** A file in the system's folder for such, gone at the end of its life. */
class CScratchFile {
 public:
  explicit CScratchFile(const char* name) : path_(std::filesystem::temp_directory_path() / name) {}
  ~CScratchFile() { std::filesystem::remove(path_); }
  CScratchFile(const CScratchFile&) = delete;
  CScratchFile& operator=(const CScratchFile&) = delete;

  WideString Path() const { return path_.string<TvmgrChar>(); }

  void Write(std::string_view bytes) const {
    std::ofstream(path_, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }

  void Fill(std::size_t size) const {
    std::ofstream file(path_, std::ios::binary);
    const std::string block(std::size_t{1} << 20, 'x');
    for (std::size_t written = 0; written < size; written += block.size()) {
      file << block;
    }
  }

  /** One buffer, one read: `use` sees the bytes. */
  template <typename Use>
  void Read(Use use) const {
    const std::size_t size = std::filesystem::file_size(path_);
    const std::unique_ptr<char[]> buffer(new char[size]);
    std::ifstream file;
    file.rdbuf()->pubsetbuf(nullptr, 0);
    file.open(path_, std::ios::binary);
    file.read(buffer.get(), static_cast<std::streamsize>(size));
    use(std::string_view(buffer.get(), size));
  }

 private:
  std::filesystem::path path_;
};

}  // namespace tavira::bench

#include "platform/file_system.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <utility>

namespace tavira {
namespace {

class CPosixFile final : public IHostFile {
 public:
  explicit CPosixFile(std::filesystem::path path) : path_(std::move(path)) {}
  ~CPosixFile() override { Close(); }
  CPosixFile(const CPosixFile&) = delete;
  CPosixFile& operator=(const CPosixFile&) = delete;

  /** Not what is no file on a disk: the null device keeps nothing, and a pipe may wait for ever. */
  bool Open(int flags) {
    struct stat status {};
    return OpenAgain(flags) && ::fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode);
  }

  bool SeekToEnd(std::uint64_t& size) override {
    const off_t position = ::lseek(descriptor_, 0, SEEK_END);
    size = static_cast<std::uint64_t>(position);
    return position >= 0;
  }

  bool GetSize(std::uint64_t& size) override {
    struct stat status {};
    if (::fstat(descriptor_, &status) != 0) {
      return false;
    }
    size = static_cast<std::uint64_t>(status.st_size);
    return true;
  }

  bool Write(std::string_view bytes) override {
    while (!bytes.empty()) {
      const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
      if (written <= 0) {
        return false;
      }
      bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
  }

  bool Truncate(std::uint64_t size) override {
    return ::ftruncate(descriptor_, static_cast<off_t>(size)) == 0;
  }

  bool Read(std::span<char> buffer, std::size_t& got) override {
    got = 0;
    while (got < buffer.size()) {
      const ssize_t read = ::read(descriptor_, buffer.data() + got, buffer.size() - got);
      if (read < 0) {
        return false;
      }
      if (read == 0) {
        break;
      }
      got += static_cast<std::size_t>(read);
    }
    return true;
  }

  bool Close() override {
    const int descriptor = std::exchange(descriptor_, -1);
    return descriptor == -1 || ::close(descriptor) == 0;
  }

  bool Reopen() override { return OpenAgain(O_RDWR); }

 private:
  bool OpenAgain(int flags) {
    descriptor_ = ::open(path_.c_str(), flags | O_CLOEXEC | O_NONBLOCK, 0666);
    return descriptor_ >= 0;
  }

  std::filesystem::path path_;
  int descriptor_ = -1;
};

class CPosixFileSystem final : public IFileSystem {
 public:
  WideString FullPath(const WideString& path) override {
    try {
      return path.empty() ? WideString() : std::filesystem::absolute(path).u16string();
    } catch (const std::filesystem::filesystem_error&) {
      return {};  // no current directory, or no text
    }
  }
  std::unique_ptr<IHostFile> Create(const WideString& path) override {
    return Open(path, O_WRONLY | O_CREAT | O_TRUNC);
  }
  std::unique_ptr<IHostFile> OpenForReading(const WideString& path) override { return Open(path, O_RDONLY); }

 private:
  static std::unique_ptr<IHostFile> Open(const WideString& path, int flags) {
    auto file = std::make_unique<CPosixFile>(path);  // first: without memory for it, nothing is left open
    return file->Open(flags) ? std::move(file) : nullptr;
  }
};

}  // namespace

std::unique_ptr<IFileSystem> MakeFileSystem() {
  return std::make_unique<CPosixFileSystem>();
}

}  // namespace tavira

#include "platform/file_system.h"

#include <windows.h>

#include <algorithm>
#include <utility>

namespace tavira {
namespace {

constexpr std::size_t kLargestTransfer = std::size_t{1} << 30;

class CWin32File final : public IHostFile {
 public:
  explicit CWin32File(WideString path) : path_(std::move(path)) {}
  ~CWin32File() override { Close(); }
  CWin32File(const CWin32File&) = delete;
  CWin32File& operator=(const CWin32File&) = delete;

  /** Not what is no file on a disk: NUL takes everything and keeps nothing, a port or pipe may wait for ever. */
  bool Open(DWORD access, DWORD share, DWORD disposition) {
    return OpenAgain(access, share, disposition) && ::GetFileType(handle_) == FILE_TYPE_DISK;
  }

  bool SeekToEnd(std::uint64_t& size) override {
    LARGE_INTEGER position{};
    if (!::SetFilePointerEx(handle_, LARGE_INTEGER{}, &position, FILE_END)) {
      return false;
    }
    size = static_cast<std::uint64_t>(position.QuadPart);
    return true;
  }

  bool GetSize(std::uint64_t& size) override {
    LARGE_INTEGER length{};
    if (!::GetFileSizeEx(handle_, &length)) {
      return false;
    }
    size = static_cast<std::uint64_t>(length.QuadPart);
    return true;
  }

  bool Write(std::string_view bytes) override {
    while (!bytes.empty()) {
      DWORD written = 0;
      if (!::WriteFile(handle_, bytes.data(), Transfer(bytes.size()), &written, nullptr) || written == 0) {
        return false;
      }
      bytes.remove_prefix(written);
    }
    return true;
  }

  bool Truncate(std::uint64_t size) override {
    FILE_END_OF_FILE_INFO end{};
    end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
    return ::SetFileInformationByHandle(handle_, FileEndOfFileInfo, &end, sizeof(end)) != 0;
  }

  bool Read(std::span<char> buffer, std::size_t& got) override {
    got = 0;
    while (got < buffer.size()) {
      DWORD read = 0;
      if (!::ReadFile(handle_, buffer.data() + got, Transfer(buffer.size() - got), &read, nullptr)) {
        return false;
      }
      if (read == 0) {
        break;
      }
      got += read;
    }
    return true;
  }

  bool Close() override {
    const HANDLE handle = std::exchange(handle_, INVALID_HANDLE_VALUE);
    return handle == INVALID_HANDLE_VALUE || ::CloseHandle(handle) != 0;
  }

  bool Reopen() override { return OpenAgain(GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, OPEN_EXISTING); }

 private:
  bool OpenAgain(DWORD access, DWORD share, DWORD disposition) {
    handle_ =
        ::CreateFileW(path_.c_str(), access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    return handle_ != INVALID_HANDLE_VALUE;
  }

  static DWORD Transfer(std::size_t size) { return static_cast<DWORD>(std::min(size, kLargestTransfer)); }

  WideString path_;
  HANDLE handle_ = INVALID_HANDLE_VALUE;
};

class CWin32FileSystem final : public IFileSystem {
 public:
  WideString FullPath(const WideString& path) override {
    constexpr WideView kAsItStands = L"\\\\?\\";  // lifts the limit, and the system looks no further
    constexpr WideView kDevice = L"\\\\.\\";
    if (path.starts_with(kAsItStands)) {
      return path;
    }
    WideString full;
    DWORD length = MAX_PATH;
    do {  // once more when it is longer, or the current directory has just become so
      full.resize(length);
      length = ::GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    } while (length > full.size());
    full.resize(length);
    if (full.empty() || full.starts_with(kDevice) || full.starts_with(kAsItStands)) {
      return full;
    }
    return full.starts_with(L"\\\\") ? L"\\\\?\\UNC" + full.substr(1) : WideString(kAsItStands) + full;
  }
  std::unique_ptr<IHostFile> Create(const WideString& path) override {
    return Open(path, GENERIC_WRITE, FILE_SHARE_READ, CREATE_ALWAYS);
  }
  std::unique_ptr<IHostFile> OpenForReading(const WideString& path) override {
    return Open(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING);
  }

 private:
  static std::unique_ptr<IHostFile> Open(const WideString& path, DWORD access, DWORD share,
                                         DWORD disposition) {
    // First: without memory for it, nothing is left open.
    auto file = std::make_unique<CWin32File>(path);
    return file->Open(access, share, disposition) ? std::move(file) : nullptr;
  }
};

}  // namespace

std::unique_ptr<IFileSystem> MakeFileSystem() {
  return std::make_unique<CWin32FileSystem>();
}

}  // namespace tavira

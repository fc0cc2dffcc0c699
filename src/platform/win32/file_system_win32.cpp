#include "platform/file_system.h"

#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <utility>

namespace tavira {
namespace {

constexpr std::size_t kLargestTransfer = std::size_t{1} << 30;

class CWin32File final : public IHostFile {
 public:
  CWin32File() = default;
  ~CWin32File() override { Close(); }
  CWin32File(const CWin32File&) = delete;
  CWin32File& operator=(const CWin32File&) = delete;

  bool Open(const WideString& path, DWORD access, DWORD share, DWORD disposition) {
    handle_ =
        ::CreateFileW(path.c_str(), access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    return handle_ != INVALID_HANDLE_VALUE;
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

 private:
  static DWORD Transfer(std::size_t size) { return static_cast<DWORD>(std::min(size, kLargestTransfer)); }

  HANDLE handle_ = INVALID_HANDLE_VALUE;
};

/** The form of a path that the system takes at any length: absolute, with the prefix that lifts its limit. */
WideString UnlimitedPath(const WideString& path) {
  constexpr std::size_t kShortEnough = MAX_PATH - 12;
  if (path.size() < kShortEnough || path.starts_with(L"\\\\?\\")) {
    return path;
  }
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(path, error).make_preferred();
  if (error) {
    return path;
  }
  const WideString whole = absolute.wstring();
  return whole.starts_with(L"\\\\") ? L"\\\\?\\UNC" + whole.substr(1) : L"\\\\?\\" + whole;
}

class CWin32FileSystem final : public IFileSystem {
 public:
  std::unique_ptr<IHostFile> Create(const WideString& path) override {
    return Open(path, GENERIC_WRITE, FILE_SHARE_READ, CREATE_ALWAYS);
  }
  std::unique_ptr<IHostFile> OpenForWriting(const WideString& path) override {
    return Open(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, OPEN_EXISTING);
  }
  std::unique_ptr<IHostFile> OpenForReading(const WideString& path) override {
    return Open(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING);
  }

 private:
  static std::unique_ptr<IHostFile> Open(const WideString& path, DWORD access, DWORD share,
                                         DWORD disposition) {
    auto file = std::make_unique<CWin32File>();  // first: without memory for it, nothing is left open
    return file->Open(UnlimitedPath(path), access, share, disposition) ? std::move(file) : nullptr;
  }
};

}  // namespace

std::unique_ptr<IFileSystem> MakeFileSystem() {
  return std::make_unique<CWin32FileSystem>();
}

}  // namespace tavira

#include "platform/platform.h"

#include <windows.h>

#include <limits>
#include <stdexcept>

#include "platform/win32/library_loading.h"

namespace tavira {
namespace {

class CWin32Clock final : public IClock {
 public:
  std::uint32_t TickCount() override { return ::GetTickCount(); }
  void Sleep(std::uint32_t ms) override { ::Sleep(ms); }

  std::tm LocalTime() override {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_s(&local, &now);
    return local;
  }
};

class CWin32ModuleLoader final : public IModuleLoader {
 public:
  void* Load(const char* file_name) override { return LoadLibraryQuietly(WidenAscii(file_name).c_str()); }

  void* FindSymbol(void* module, const char* name) override {
    return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(module), name));
  }
};

int CheckedSize(std::size_t size) {
  if (size > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    throw std::length_error("text");
  }
  return static_cast<int>(size);
}

class CWin32TextCodec final : public ITextCodec {
 public:
  std::string ToAnsi(WideView text) override {
    // A best fit would turn a full-width "＾" into the "^" that opens a command. UTF-8 needs none, and refuses the flag.
    const DWORD flags = ::GetACP() == CP_UTF8 ? 0 : WC_NO_BEST_FIT_CHARS;
    const int chars = CheckedSize(text.size());
    const int bytes = ::WideCharToMultiByte(CP_ACP, flags, text.data(), chars, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(bytes), '\0');
    ::WideCharToMultiByte(CP_ACP, flags, text.data(), chars, result.data(), bytes, nullptr, nullptr);
    return result;
  }

  WideString FromAnsi(std::string_view bytes) override {
    const int size = CheckedSize(bytes.size());
    const int chars = ::MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, nullptr, 0);
    WideString result(static_cast<std::size_t>(chars), L'\0');
    ::MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, result.data(), chars);
    return result;
  }

  CLeadBytes LeadBytes() override {
    return CLeadBytes([](unsigned char byte) { return ::IsDBCSLeadByteEx(CP_ACP, byte) != FALSE; });
  }
};

class CWin32Platform final : public IPlatform {
 public:
  IClock& Clock() override { return clock_; }
  IModuleLoader& Modules() override { return modules_; }
  ITextCodec& Text() override { return text_; }
  IFileSystem& Files() override { return *files_; }
  ISockets& Sockets() override { return *sockets_; }
  IThreads& Threads() override { return *threads_; }
  IUsbTree& Usb() override { return *usb_; }
  IRegistryKey& LocalMachine() override { return *local_machine_; }
  IProfileFile& Profiles() override { return *profiles_; }

 private:
  CWin32Clock clock_;
  CWin32ModuleLoader modules_;
  CWin32TextCodec text_;
  std::unique_ptr<IFileSystem> files_ = MakeFileSystem();
  std::unique_ptr<ISockets> sockets_ = MakeSockets();
  std::unique_ptr<IThreads> threads_ = MakeThreads();
  std::unique_ptr<IUsbTree> usb_ = MakeUsbTree();
  std::unique_ptr<IRegistryKey> local_machine_ = MakeLocalMachine();
  std::unique_ptr<IProfileFile> profiles_ = MakeProfileFile();
};

}  // namespace

std::unique_ptr<IPlatform> MakePlatform() {
  return std::make_unique<CWin32Platform>();
}

}  // namespace tavira

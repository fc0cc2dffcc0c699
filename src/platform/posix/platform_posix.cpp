#include "platform/platform.h"

#include <dlfcn.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>
#include <thread>

namespace tavira {
namespace {

class CPosixClock final : public IClock {
 public:
  std::uint32_t TickCount() override {
    const auto since_start = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(
        std::chrono::duration_cast<std::chrono::milliseconds>(since_start).count());
  }
  void Sleep(std::uint32_t ms) override { std::this_thread::sleep_for(std::chrono::milliseconds(ms)); }

  std::tm LocalTime() override {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    return local;
  }
};

/** "Name.dll" of Windows is "libName.so" here; other names stand as they are. */
std::string LibraryFileName(std::string_view name) {
  constexpr std::string_view kSuffix = ".dll";
  return name.ends_with(kSuffix) ? "lib" + std::string(name.substr(0, name.size() - kSuffix.size())) + ".so"
                                 : std::string(name);
}

class CPosixModuleLoader final : public IModuleLoader {
 public:
  // Beside the program that this code is part of, as on Windows; else where the system looks.
  void* Load(const char* file_name) override {
    const std::string name = LibraryFileName(file_name);
    Dl_info own{};
    if (::dladdr(reinterpret_cast<const void*>(&MakePlatform), &own) != 0 && own.dli_fname != nullptr) {
      const auto beside = std::filesystem::path(own.dli_fname).replace_filename(name);
      if (void* module = ::dlopen(beside.c_str(), RTLD_NOW | RTLD_LOCAL)) {
        return module;
      }
    }
    return ::dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
  }
  void* FindSymbol(void* module, const char* name) override { return ::dlsym(module, name); }
};

/**
 * ISO 8859-1 stands in for the ANSI code page: one byte a character, like the code pages of Western Europe.
 */
class CLatin1TextCodec final : public ITextCodec {
 public:
  std::string ToAnsi(WideView text) override {
    std::string result;
    result.reserve(text.size());
    for (const TvmgrChar character : text) {
      result.push_back(character < 0x100 ? static_cast<char>(character) : '?');
    }
    return result;
  }

  WideString FromAnsi(std::string_view bytes) override {
    WideString result;
    result.reserve(bytes.size());
    for (const char byte : bytes) {
      result.push_back(static_cast<TvmgrChar>(static_cast<unsigned char>(byte)));
    }
    return result;
  }
};

class CPosixPlatform final : public IPlatform {
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
  CPosixClock clock_;
  CPosixModuleLoader modules_;
  CLatin1TextCodec text_;
  std::unique_ptr<IFileSystem> files_ = MakeFileSystem();
  std::unique_ptr<ISockets> sockets_ = MakeSockets();
  std::unique_ptr<IThreads> threads_ = MakeThreads();
  std::unique_ptr<IUsbTree> usb_ = MakeUsbTree();
  std::unique_ptr<IRegistryKey> local_machine_ = MakeLocalMachine();
  std::unique_ptr<IProfileFile> profiles_ = MakeProfileFile();
};

}  // namespace

std::unique_ptr<IPlatform> MakePlatform() {
  return std::make_unique<CPosixPlatform>();
}

}  // namespace tavira

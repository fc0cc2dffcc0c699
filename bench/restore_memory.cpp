// Restores a file of 1 GiB through a port library that takes everything and answers nothing, and prints what
// it cost.
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "manager/tavira_manager.h"

namespace {

std::uint64_t bytes_sent = 0;

std::int32_t Initialize(const void*) {
  return 0;
}
std::int32_t Terminate() {
  return 0;
}
std::int32_t SendData(const std::uint8_t*, std::uint32_t size) {
  bytes_sent += size;
  return 0;
}
std::int32_t ReceiveData(std::uint8_t*, std::uint32_t* size) {
  *size = 0;
  return 0;
}

/** Waits cost no time. */
class CInstantClock final : public tavira::IClock {
 public:
  std::uint32_t TickCount() override { return now_; }
  void Sleep(std::uint32_t ms) override { now_ += ms; }
  std::tm LocalTime() override { return {}; }

 private:
  std::uint32_t now_ = 0;
};

class CDiscardingPort final : public tavira::IModuleLoader {
 public:
  void* Load(const char*) override { return this; }
  void* FindSymbol(void*, const char* name) override {
    const std::string_view symbol = name;
    if (symbol == "Initialize") {
      return reinterpret_cast<void*>(&Initialize);
    }
    if (symbol == "SendData") {
      return reinterpret_cast<void*>(&SendData);
    }
    return symbol == "ReceiveData" ? reinterpret_cast<void*>(&ReceiveData)
                                   : reinterpret_cast<void*>(&Terminate);
  }
};

class CBenchPlatform final : public tavira::IPlatform {
 public:
  tavira::IClock& Clock() override { return clock_; }
  tavira::IModuleLoader& Modules() override { return modules_; }
  tavira::ITextCodec& Text() override { return real_->Text(); }
  tavira::IFileSystem& Files() override { return real_->Files(); }
  tavira::ISockets& Sockets() override { return real_->Sockets(); }
  tavira::IUsbTree& Usb() override { return real_->Usb(); }
  tavira::IRegistryKey& LocalMachine() override { return real_->LocalMachine(); }
  tavira::IProfileFile& Profiles() override { return real_->Profiles(); }

 private:
  CInstantClock clock_;
  CDiscardingPort modules_;
  std::unique_ptr<tavira::IPlatform> real_ = tavira::MakePlatform();
};

long PeakKilobytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

}  // namespace

int main() {
  constexpr std::size_t kMebibyte = std::size_t{1} << 20;
  constexpr std::size_t kSize = 1024 * kMebibyte;
  const std::filesystem::path path = std::filesystem::temp_directory_path() / "tavira_restore_memory.bak";
  {
    std::ofstream file(path, std::ios::binary);
    const std::string block(kMebibyte, 'x');
    for (std::size_t written = 0; written < kSize; written += block.size()) {
      file << block;
    }
  }
  tavira::CTaviraManager manager(std::make_unique<CBenchPlatform>());
  std::int32_t result = manager.Start();
  const long before = PeakKilobytes();
  const auto start = std::chrono::steady_clock::now();
  if (result == TVMGR_OK) {
    result = manager.Restore(path.string<TvmgrChar>().c_str());
  }
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
  std::filesystem::remove(path);
  std::printf(
      "restore of 1024 MiB: result %d, %llu bytes sent, %.2f s, peak memory %ld KiB (%ld KiB before)\n",
      result, static_cast<unsigned long long>(bytes_sent), seconds.count(), PeakKilobytes(), before);
  return result == TVMGR_OK && bytes_sent > kSize ? 0 : 1;
}

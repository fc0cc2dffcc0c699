#include "bench/module/bench_platform.h"

#include <string_view>

namespace tavira::bench {
namespace {

IBenchPort* current = nullptr;
int loads = 0;

std::int32_t Initialize(const void* description) {
  return current->Initialize(description);
}
std::int32_t Terminate() {
  return current->Terminate();
}
std::int32_t SendData(const std::uint8_t* data, std::uint32_t size) {
  return current->SendData(data, size);
}
std::int32_t ReceiveData(std::uint8_t* buffer, std::uint32_t* size) {
  return current->ReceiveData(buffer, size);
}

class CBenchModules final : public IModuleLoader {
 public:
  void* Load(const char*) override {
    ++loads;
    return this;
  }
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

class CBenchPlatform final : public IPlatform {
 public:
  explicit CBenchPlatform(IClock& clock) : clock_(clock) {}
  IClock& Clock() override { return clock_; }
  IModuleLoader& Modules() override { return modules_; }
  ITextCodec& Text() override { return real_->Text(); }
  IFileSystem& Files() override { return real_->Files(); }
  ISockets& Sockets() override { return real_->Sockets(); }
  IThreads& Threads() override { return real_->Threads(); }
  IUsbTree& Usb() override { return real_->Usb(); }
  IRegistryKey& LocalMachine() override { return real_->LocalMachine(); }
  IProfileFile& Profiles() override { return real_->Profiles(); }

 private:
  IClock& clock_;
  CBenchModules modules_;
  std::unique_ptr<IPlatform> real_ = MakePlatform();
};

}  // namespace

IClock& RealClock() {
  static const std::unique_ptr<IPlatform> platform = MakePlatform();
  return platform->Clock();
}

int LibraryLoads() {
  return loads;
}

std::unique_ptr<IPlatform> MakeBenchPlatform(IClock& clock, IBenchPort& port) {
  current = &port;
  return std::make_unique<CBenchPlatform>(clock);
}

}  // namespace tavira::bench

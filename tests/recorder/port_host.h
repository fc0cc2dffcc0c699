#pragma once

#include <windows.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "scripted_port/scripted_port.h"

namespace recorder::test {

/// A port library that was loaded by its path, and its six entry points.
class CPortHost {
 public:
  explicit CPortHost(const std::filesystem::path& library) : module_(LoadLibraryW(library.c_str())) {
    Find(initialize, "Initialize");
    Find(terminate, "Terminate");
    Find(send, "SendData");
    Find(receive, "ReceiveData");
    Find(clear, "ClearReceiveData");
    Find(index, "GetPortComIndex");
  }
  ~CPortHost() {
    if (module_ != nullptr) {
      FreeLibrary(module_);
    }
  }
  CPortHost(const CPortHost&) = delete;
  CPortHost& operator=(const CPortHost&) = delete;

  bool IsLoaded() const { return module_ != nullptr; }

  std::int32_t Send(const std::string& bytes) const {
    return send(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                static_cast<std::uint32_t>(bytes.size()));
  }

  /// What waits; a result other than 0 as text.
  std::string Receive() const {
    std::uint32_t count = 0;
    std::int32_t code = receive(nullptr, &count);
    std::string answer(count, '\0');
    if (code == 0 && count > 0) {
      code = receive(reinterpret_cast<std::uint8_t*>(answer.data()), &count);
    }
    return code == 0 ? answer.substr(0, count) : std::to_string(code);
  }

  std::int32_t (*initialize)(const void*) = nullptr;
  std::int32_t (*terminate)() = nullptr;
  std::int32_t (*send)(const std::uint8_t*, std::uint32_t) = nullptr;
  std::int32_t (*receive)(std::uint8_t*, std::uint32_t*) = nullptr;
  double (*clear)(double, std::int64_t, float, const char*, std::int64_t, double, std::int8_t) = nullptr;
  tagManyResults (*index)(float, std::int64_t, double, std::int32_t*, tagManyResults, std::int32_t) = nullptr;

 private:
  template <typename Function>
  void Find(Function& function, const char* name) {
    if (module_ != nullptr) {
      function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
    }
  }

  HMODULE module_;
};

}  // namespace recorder::test

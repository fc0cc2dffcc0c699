#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

namespace lxemu {

struct tagDescription {
  std::int32_t port_type = 1;
  const wchar_t* strings[3] = {L"USB001", nullptr, L""};  // the third one: the address on the network
  char data[16] = {'^', 'F', 'X', '^', 'F', 'S'};
  std::int32_t data_used = 6;
};
static_assert(sizeof(tagDescription) == 56);

/// A host that has loaded the port library.
class CFerrolinkHost {
 public:
  CFerrolinkHost() : library_(LoadLibraryW(L"Ferrolink.dll")) {
    Find(initialize_, "Initialize");
    Find(terminate_, "Terminate");
    Find(send_, "SendData");
    Find(receive_, "ReceiveData");
    Find(clear_, "ClearReceiveData");
    Find(index_, "GetPortComIndex");
  }

  // Unloading closes the log, so that the folder can be removed.
  ~CFerrolinkHost() { FreeLibrary(library_); }
  CFerrolinkHost(const CFerrolinkHost&) = delete;
  CFerrolinkHost& operator=(const CFerrolinkHost&) = delete;

  bool IsComplete() const {
    return initialize_ != nullptr && terminate_ != nullptr && send_ != nullptr && receive_ != nullptr &&
           clear_ != nullptr && index_ != nullptr;
  }

  /// One exchange from opening to closing; an error code as text when a call fails.
  std::string Exchange(const std::string& commands, DWORD timeout_ms = 2000,
                       const std::wstring& address = {}) {
    tagDescription description;
    description.port_type = address.empty() ? 1 : 2;
    description.strings[2] = address.c_str();
    if (const std::int32_t code = initialize_(&description); code != 0) {
      terminate_();
      return "Initialize " + std::to_string(code);
    }
    const std::string answer = SendAndReceive(commands, timeout_ms);
    terminate_();
    return answer;
  }

  std::int32_t SendOnClosedPort() const {
    const std::uint8_t byte = 0;
    return send_(&byte, 1);
  }
  std::int32_t ClearOnClosedPort() const { return clear_(); }
  std::int32_t PortComIndex() const { return index_(); }

 private:
  template <typename Function>
  void Find(Function& function, const char* name) {
    function = library_ == nullptr
                   ? nullptr
                   : reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library_, name)));
  }

  std::string SendAndReceive(const std::string& commands, DWORD timeout_ms) {
    const std::string frame = "\x10\x1B\x1D\x1B\x1B" + commands + "\x10\x1B\x1D\x1B\x1C";
    if (const std::int32_t code = send_(reinterpret_cast<const std::uint8_t*>(frame.data()),
                                        static_cast<std::uint32_t>(frame.size()));
        code != 0) {
      return "SendData " + std::to_string(code);
    }
    for (DWORD waited = 0; waited < timeout_ms; waited += 10) {
      std::uint32_t count = 0;
      if (const std::int32_t code = receive_(nullptr, &count); code != 0) {
        return "ReceiveData " + std::to_string(code);
      }
      if (count > 0) {
        std::string answer(count, '\0');
        receive_(reinterpret_cast<std::uint8_t*>(answer.data()), &count);
        return answer.substr(0, count);
      }
      Sleep(10);
    }
    return "";
  }

  HMODULE library_;
  std::int32_t (*initialize_)(const void*) = nullptr;
  std::int32_t (*terminate_)() = nullptr;
  std::int32_t (*send_)(const std::uint8_t*, std::uint32_t) = nullptr;
  std::int32_t (*receive_)(std::uint8_t*, std::uint32_t*) = nullptr;
  std::int32_t (*clear_)() = nullptr;
  std::int32_t (*index_)() = nullptr;
};

}  // namespace lxemu

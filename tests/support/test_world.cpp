#include "test_world.h"

#include <algorithm>

#include "allocation_faults.h"
#include "faults.h"
#include "link/port_description.h"

namespace tavira::test {
namespace {

CTestWorld* current = nullptr;

/**
 * One call of the module into the port library: logged, perhaps failed, and outside the count of allocations.
 */
template <typename Action>
std::int32_t PortCall(EPortCall call, Action action) {
  const CAllocationPause pause;
  CTestWorld& world = CTestWorld::Current();
  world.calls.push_back(call);
  std::int32_t code = 0;
  return world.IsToFail(call, code) ? code : action(world.port);
}

std::int32_t Initialize(const tagPortDescription* description) {
  return PortCall(EPortCall::kInitialize, [&](auto& port) { return port.Initialize(description); });
}

std::int32_t Terminate() {
  return PortCall(EPortCall::kTerminate, [](auto& port) { return port.Terminate(); });
}

std::int32_t SendData(const std::uint8_t* data, std::uint32_t size) {
  return PortCall(EPortCall::kSend, [&](auto& port) {
    if (CTestWorld::Current().before_send) {
      CTestWorld::Current().before_send();
    }
    return port.SendData(data, size);
  });
}

std::int32_t ReceiveData(std::uint8_t* buffer, std::uint32_t* size) {
  return PortCall(buffer == nullptr ? EPortCall::kPoll : EPortCall::kRead, [&](auto& port) {
    const CTestWorld& world = CTestWorld::Current();
    if (world.leaves_counts_unwritten) {
      return lxemu::kPortOk;
    }
    if (!world.scripted_answer) {
      return port.ReceiveData(buffer, size);
    }
    const std::string& answer = *world.scripted_answer;
    if (buffer != nullptr) {
      std::copy(answer.begin(), answer.end(), buffer);
    }
    *size = static_cast<std::uint32_t>(answer.size()) + (buffer == nullptr ? world.announced_beyond : 0);
    return lxemu::kPortOk;
  });
}

void NeverCalled() {
  std::abort();
}

class CFakeModuleLoader final : public IModuleLoader {
 public:
  void* Load(const char* file_name) override {
    const bool known = WidenAscii(file_name) == WidenAscii("Ferrolink.dll");  // the system takes wide text
    return known && !CTestWorld::Current().library_is_missing ? this : nullptr;
  }

  void* FindSymbol(void*, const char* name) override {
    const CAllocationPause pause;
    CTestWorld& world = CTestWorld::Current();
    world.symbol_lookups.emplace_back(name);
    if (world.missing_symbols.contains(name)) {
      return nullptr;
    }
    const std::string_view symbol = name;
    if (symbol == "Initialize") {
      return reinterpret_cast<void*>(&Initialize);
    }
    if (symbol == "Terminate") {
      return reinterpret_cast<void*>(&Terminate);
    }
    if (symbol == "SendData") {
      return reinterpret_cast<void*>(&SendData);
    }
    if (symbol == "ReceiveData") {
      return reinterpret_cast<void*>(&ReceiveData);
    }
    return reinterpret_cast<void*>(&NeverCalled);
  }
};

/**
 * ISO 8859-1, one byte a character; or, when the world says so, the shape of the Japanese code page: two bytes
 * become the character that has both of them as its number, and a pair that does not exist becomes U+30FB.
 */
class CFakeTextCodec final : public ITextCodec {
 public:
  std::string ToAnsi(WideView text) override {
    std::string bytes;
    for (const TvmgrChar character : text) {
      const auto high = static_cast<unsigned char>(character >> 8);
      if (high != 0 && IsLead(high) && IsTrail(character & 0xFF)) {
        bytes.push_back(static_cast<char>(high));
      }
      const bool is_known = high == 0 || (IsLead(high) && IsTrail(character & 0xFF));
      bytes.push_back(is_known ? static_cast<char>(character) : '?');
    }
    return bytes;
  }
  WideString FromAnsi(std::string_view bytes) override {
    WideString text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      const auto byte = static_cast<unsigned char>(bytes[i]);
      if (!IsLead(byte)) {
        text.push_back(static_cast<TvmgrChar>(byte));
        continue;
      }
      const auto trail = static_cast<unsigned char>(++i < bytes.size() ? bytes[i] : 0);
      text.push_back(static_cast<TvmgrChar>(IsTrail(trail) ? byte << 8 | trail : 0x30FB));
    }
    return text;
  }
  CLeadBytes LeadBytes() override { return CLeadBytes(IsLead); }

 private:
  static bool IsLead(unsigned byte) {
    return CTestWorld::Current().double_byte_code_page &&
           ((byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC));
  }
  static bool IsTrail(unsigned byte) { return byte >= 0x40 && byte <= 0xFC && byte != 0x7F; }
};

class CFaultyFile final : public IHostFile, COpenObject {
 public:
  explicit CFaultyFile(std::unique_ptr<IHostFile> file) : file_(std::move(file)) {}
  bool SeekToEnd(std::uint64_t& size) override { return !Fails(EFileCall::kSeek) && file_->SeekToEnd(size); }
  bool GetSize(std::uint64_t& size) override { return !Fails(EFileCall::kSize) && file_->GetSize(size); }
  bool Write(std::string_view bytes) override {
    if (Fails(EFileCall::kWrite)) {
      file_->Write(bytes.substr(0, bytes.size() / 2));  // as a full disk does
      return false;
    }
    return file_->Write(bytes);
  }
  bool Truncate(std::uint64_t size) override { return !Fails(EFileCall::kTruncate) && file_->Truncate(size); }
  bool Read(std::span<char> buffer, std::size_t& got) override {
    const bool is_read = !Fails(EFileCall::kRead) && file_->Read(buffer, got);
    got -= is_read && got > 0 && CTestWorld::Current().files_end_early ? 1 : 0;
    return is_read;
  }
  bool Close() override {
    const bool fails = Fails(EFileCall::kClose);
    return file_->Close() && !fails;
  }
  bool Reopen() override { return !Fails(EFileCall::kOpen) && file_->Reopen(); }

 private:
  static bool Fails(EFileCall call) { return CTestWorld::Current().IsToFail(call); }

  std::unique_ptr<IHostFile> file_;
};

/** The real file system with the world's file faults. */
class CFaultyFileSystem final : public IFileSystem {
 public:
  WideString FullPath(const WideString& path) override {
    return CTestWorld::Current().IsToFail(EFileCall::kFullPath) ? WideString() : files_->FullPath(path);
  }
  std::unique_ptr<IHostFile> Create(const WideString& path) override {
    return Wrap(EFileCall::kCreate, [&] { return files_->Create(path); });
  }
  std::unique_ptr<IHostFile> OpenForReading(const WideString& path) override {
    return Wrap(EFileCall::kOpen, [&] { return files_->OpenForReading(path); });
  }

 private:
  template <typename Open>
  static std::unique_ptr<IHostFile> Wrap(EFileCall call, Open open) {
    if (CTestWorld::Current().IsToFail(call)) {
      return nullptr;
    }
    std::unique_ptr<IHostFile> file = open();
    return file == nullptr ? nullptr : std::make_unique<CFaultyFile>(std::move(file));
  }

  std::unique_ptr<IFileSystem> files_ = MakeFileSystem();
};

/** Real threads, as long as there are any to be had. */
class CFaultyThreads final : public IThreads {
 public:
  std::unique_ptr<IThread> Start(std::function<void()> body, std::uint32_t& error) override {
    error = 8;
    return CFaults::Strikes(EFault::kThreadStart) ? nullptr : threads_->Start(std::move(body), error);
  }

 private:
  std::unique_ptr<IThreads> threads_ = MakeThreads();
};

class CFakePlatform final : public IPlatform {
 public:
  IClock& Clock() override { return CTestWorld::Current().clock; }
  IModuleLoader& Modules() override { return modules_; }
  ITextCodec& Text() override { return text_; }
  IFileSystem& Files() override { return files_; }
  ISockets& Sockets() override {
    ISockets* of_the_world = CTestWorld::Current().sockets;
    return of_the_world != nullptr ? *of_the_world : *sockets_;
  }
  IThreads& Threads() override { return threads_; }
  IUsbTree& Usb() override { return CTestWorld::Current().usb; }
  IRegistryKey& LocalMachine() override { return local_machine_; }
  IProfileFile& Profiles() override { return CTestWorld::Current().profiles; }

 private:
  CFakeModuleLoader modules_;
  CFakeTextCodec text_;
  CFaultyFileSystem files_;
  std::unique_ptr<ISockets> sockets_ = MakeSockets();
  CFaultyThreads threads_;
  CMemoryRegistryKey local_machine_{CTestWorld::Current().machine};
};

}  // namespace

CTestWorld::CTestWorld()
    : printer([this] { return clock.Now(); }), port(printer, [this] { return clock.Now(); }) {
  current = this;
}

CTestWorld::~CTestWorld() {
  current = nullptr;
}

CTestWorld& CTestWorld::Current() {
  if (current == nullptr) {
    std::abort();  // the module outlived the test's world
  }
  return *current;
}

int CTestWorld::Count(EPortCall call) const {
  return static_cast<int>(std::count(calls.begin(), calls.end(), call));
}

std::vector<std::string> CTestWorld::Sent() const {
  std::vector<std::string> sent;
  for (const lxemu::tagExchange& exchange : port.Exchanges()) {
    sent.push_back(exchange.sent);
  }
  return sent;
}

void CTestWorld::ClearLog() {
  port.ClearLog();
  calls.clear();
  file_calls.clear();
}

void CTestWorld::FailCall(std::uint32_t nth, std::int32_t code) {
  fail_call = nth;
  fail_code_ = code;
  call_failed = false;
  countable_calls_ = 0;
}

bool CTestWorld::IsToFail(EPortCall call, std::int32_t& code) {
  if (call == EPortCall::kTerminate) {
    return false;
  }
  if (CFaults::Strikes(EFault::kPortCall)) {
    code = kInjectedPortCode;
    return true;
  }
  if (fail_call == 0 || ++countable_calls_ != fail_call) {
    return false;
  }
  code = fail_code_;
  call_failed = true;
  return true;
}

bool CTestWorld::IsToFail(EFileCall call) {
  const CAllocationPause pause;
  file_calls.push_back(call);
  if (before_file_call) {
    before_file_call();
  }
  return CFaults::Strikes(EFault::kFileCall) || (fail_file_call != 0 && file_calls.size() == fail_file_call);
}

std::string StoredValue(std::int32_t id) {
  std::int32_t length = 0;
  if (!TVMGR_GetSettingValue(id, nullptr, &length)) {
    return "(none)";
  }
  std::string value(static_cast<std::size_t>(length), '\0');
  if (length > 0) {
    TVMGR_GetSettingValue(id, reinterpret_cast<std::uint8_t*>(value.data()), &length);
  }
  return value;
}

void AppendUpdate(std::uint32_t id, std::string_view value) {
  TVMGR_SetUpdateList(id, reinterpret_cast<const std::uint8_t*>(value.data()),
                      static_cast<std::int32_t>(value.size()));
}

}  // namespace tavira::test

namespace tavira {

std::unique_ptr<IPlatform> MakePlatform() {
  return std::make_unique<test::CFakePlatform>();
}

}  // namespace tavira

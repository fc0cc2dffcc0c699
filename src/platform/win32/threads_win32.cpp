#include "platform/threads.h"

#include <windows.h>

#include <utility>

namespace tavira {
namespace {

/**
 * A thread of the system's own making. std::thread would not do: the thread library keeps two handles for each foreign
 * thread that starts or joins one, until that thread ends; and it returns into code that the host may have unloaded.
 */
class CWin32Thread final : public IThread {
 public:
  explicit CWin32Thread(std::function<void()> body) : body_(std::move(body)) {}
  ~CWin32Thread() override {
    if (thread_ != nullptr) {
      ::WaitForSingleObject(thread_, INFINITE);
      ::CloseHandle(thread_);
    }
  }
  CWin32Thread(const CWin32Thread&) = delete;
  CWin32Thread& operator=(const CWin32Thread&) = delete;

  bool Start(std::uint32_t& error) {
    // Given back by the thread, in its last step.
    if (!::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                              reinterpret_cast<const wchar_t*>(&CWin32Thread::Run), &module_)) {
      error = ::GetLastError();
      return false;
    }
    runs_ = ::CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const bool runs = runs_ != nullptr && Launch();
    if (!runs) {
      error = ::GetLastError();
      ::FreeLibrary(module_);
    }
    if (runs_ != nullptr) {
      ::CloseHandle(runs_);
    }
    return runs;
  }

 private:
  bool Launch() {
    thread_ = ::CreateThread(nullptr, 0, &CWin32Thread::Run, this, CREATE_SUSPENDED, nullptr);
    if (thread_ == nullptr) {
      return false;
    }
    if (::ResumeThread(thread_) == static_cast<DWORD>(-1)) {
      const DWORD error = ::GetLastError();
      ::TerminateThread(thread_, 0);  // it has not begun
      ::CloseHandle(std::exchange(thread_, nullptr));
      ::SetLastError(error);
      return false;
    }
    ::WaitForSingleObject(runs_, INFINITE);
    return true;
  }

  // Holds nothing that would need destruction: it does not return.
  static DWORD WINAPI Run(void* self) {
    const CWin32Thread& thread = *static_cast<CWin32Thread*>(self);
    ::SetEvent(thread.runs_);
    thread.body_();
    ::FreeLibraryAndExitThread(thread.module_, 0);
  }

  const std::function<void()> body_;
  HMODULE module_ = nullptr;
  HANDLE runs_ = nullptr;
  HANDLE thread_ = nullptr;
};

class CWin32Threads final : public IThreads {
 public:
  std::unique_ptr<IThread> Start(std::function<void()> body, std::uint32_t& error) override {
    auto thread = std::make_unique<CWin32Thread>(std::move(body));
    return thread->Start(error) ? std::move(thread) : nullptr;
  }
};

}  // namespace

std::unique_ptr<IThreads> MakeThreads() {
  return std::make_unique<CWin32Threads>();
}

}  // namespace tavira

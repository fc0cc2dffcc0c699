#include "printer/printer_lock.h"

#include <windows.h>

#include <cstdint>

#include "output/command_error.h"
#include "output/progress.h"
#include "output/text_encoding.h"
#include "output/work_report.h"

namespace tvmgr {
namespace {

constexpr std::uint64_t kLongestWaitMs = 600'000;
constexpr DWORD kSliceMs = 50;

// Device paths are longer than a name may be, and hold characters that it may not: a number made of the text.
std::wstring NameOf(const tagPrinterChoice& printer) {
  const std::string& text = !printer.address.empty()  ? printer.address
                            : !printer.device.empty() ? printer.device
                                                      : printer.port;
  std::uint64_t hash = 14'695'981'039'346'656'037ULL;
  for (const char c : UpperAscii(text)) {
    hash = (hash ^ static_cast<unsigned char>(c)) * 1'099'511'628'211ULL;
  }
  return L"tvmgr-" + std::to_wstring(hash);
}

HANDLE MakeMutex(const tagPrinterChoice& printer) {
  // Whoever works at this computer may wait for it, under whatever account.
  SECURITY_DESCRIPTOR everybody;
  InitializeSecurityDescriptor(&everybody, SECURITY_DESCRIPTOR_REVISION);
  SetSecurityDescriptorDacl(&everybody, TRUE, nullptr, FALSE);
  SECURITY_ATTRIBUTES attributes{sizeof(SECURITY_ATTRIBUTES), &everybody, FALSE};
  const std::wstring name = NameOf(printer);
  const HANDLE global = CreateMutexW(&attributes, FALSE, (L"Global\\" + name).c_str());
  return global != nullptr ? global : CreateMutexW(&attributes, FALSE, (L"Local\\" + name).c_str());
}

}  // namespace

CPrinterLock::CPrinterLock(const tagGlobalOptions& options, const tagPrinterChoice& printer,
                           const std::string& name, const CInterruptWait& interrupt)
    : mutex_(MakeMutex(printer)) {
  if (mutex_ == nullptr) {
    return;
  }
  DWORD result = WaitForSingleObject(mutex_, 0);
  if (result == WAIT_TIMEOUT) {
    const CWorkScope waiting(EWork::kNone);
    const CProgress progress("waiting for another tvmgr that works with " + name, kLongestWaitMs,
                             !options.quiet);
    while (result == WAIT_TIMEOUT && progress.ElapsedMs() < kLongestWaitMs && !interrupt.WasPressed()) {
      result = WaitForSingleObject(mutex_, kSliceMs);
    }
  }
  if (result == WAIT_OBJECT_0 || result == WAIT_ABANDONED) {
    if (result == WAIT_ABANDONED && !options.quiet) {
      WriteError(
          "remark: the tvmgr that worked with " + name +
          " before was ended in the middle; its resolutions and mode (3, 4, 5, 84) may not be its own\n");
    }
    return;
  }
  CloseHandle(mutex_);
  throw CFailure(interrupt.WasPressed()
                     ? "stopped by Ctrl-C while another tvmgr was at work; nothing was sent"
                     : "another tvmgr has been at work for 10 min; nothing was sent: wait until it is done");
}

CPrinterLock::~CPrinterLock() {
  if (mutex_ != nullptr) {
    ReleaseMutex(mutex_);
    CloseHandle(mutex_);
  }
}

}  // namespace tvmgr

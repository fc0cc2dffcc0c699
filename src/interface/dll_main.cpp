#include <windows.h>

#include <array>
#include <atomic>

namespace __gnu_cxx {
/** Of the C++ run-time library: gives back the memory it keeps for exceptions when no other is left. */
extern void __freeres() noexcept;
}  // namespace __gnu_cxx

// The thread library is linked into the module. It takes a thread-local slot when first used and
// never gives it back, so that a host which loads and unloads the module would run out of them. The
// linker leads its calls of TlsAlloc here (see the link options of the module), and the slots are
// freed when the module is unloaded.
namespace {

using SlotAllocator = DWORD(WINAPI*)();

std::array<std::atomic<DWORD>, 8> slots;
std::atomic<std::size_t> slot_count{0};

DWORD WINAPI AllocateSlot();

void FreeSlots() {
  for (std::size_t i = 0; i < slot_count && i < slots.size(); ++i) {
    ::TlsFree(slots[i]);
  }
}

}  // namespace

extern "C" {
extern SlotAllocator system_tls_alloc asm("__real___imp_TlsAlloc");
extern SlotAllocator module_tls_alloc asm("__wrap___imp_TlsAlloc");
SlotAllocator module_tls_alloc = &AllocateSlot;
}

namespace {

DWORD WINAPI AllocateSlot() {
  const DWORD slot = system_tls_alloc();
  if (slot != TLS_OUT_OF_INDEXES) {
    const std::size_t index = slot_count++;
    if (index < slots.size()) {
      slots[index] = slot;
    }
  }
  return slot;
}

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID process_ends) {
  if (reason == DLL_PROCESS_DETACH && process_ends == nullptr) {
    __gnu_cxx::__freeres();
    FreeSlots();
  }
  // The manager is not destroyed here: that may wait for a thread, which the loader lock forbids.
  return TRUE;
}

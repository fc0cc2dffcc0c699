#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace tavira::test {

/** The kinds of call that the module makes into what lies around it. Each kind is failed on its own. */
enum class EFault {
  kNone,
  kPortCall,
  kAllocation,
  kFileCall,
  kRegistryCall,
  kDeviceCall, /**< SetupAPI's, the device tree's, and requests to printers and hubs */
  kSocketCall,
  kThreadStart,
};

/** Makes the Nth call of one kind fail. Program-wide, any thread; one fault at a time. */
class CFaults {
 public:
  /** The `nth` call of this kind from now (1 is the next) fails; with `lasting`, all behind it too. */
  static void Arm(EFault kind, std::uint32_t nth, bool lasting = false);

  /** Ends the counting; true when the armed call was reached. */
  static bool Disarm();

  /** Counts one call that the module makes; true when it is to fail. */
  static bool Strikes(EFault kind);
};

/** Base of every object that the module opens and has to close: a file, a key, a list of devices, a device. */
class COpenObject {
 public:
  static int Count() { return count_; }

 protected:
  COpenObject() { ++count_; }
  ~COpenObject() { --count_; }

 private:
  inline static std::atomic<int> count_ = 0;
};

}  // namespace tavira::test

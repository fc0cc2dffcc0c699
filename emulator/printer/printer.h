#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "emulator/printer/printer_state.h"

namespace lxemu {

/// An LX-R4100 label printer in software: command bytes in, answer bytes out. Not synchronised; one thread at
/// a time. File names are device-qualified ("E:LOGO.PNG", 8.3, letter case ignored), setting keys as in
/// "CLR,Z".
class CPrinter {
 public:
  /// A printer as it leaves the factory, without files. The clock rules the end of busy times.
  explicit CPrinter(MillisecondClock now);

  /// Runs a command stream (without transmission frame marks) and returns the answers in the order of the
  /// questions; empty when nothing was asked.
  std::string Execute(std::string_view commands);

  /// The current value; of SMA,S the state text. Empty when unknown.
  std::string Setting(std::string_view key) const;
  /// Sets the current and the saved value. Unknown keys are ignored; SMA,S is SetState.
  void SetSetting(std::string_view key, std::string_view value);
  /// The value that ^JUF and FactoryReset put in force; the present values stay as they are.
  void SetFactorySetting(std::string_view key, std::string_view value);

  /// Stores or replaces a file, protected or not. False when the name is not one of a device R:, E: or Z:.
  bool PutFile(std::string_view qualified_name, std::string bytes, bool is_protected = false);
  std::optional<std::string> File(std::string_view qualified_name) const;
  void SetProtected(std::string_view qualified_name, bool on);
  bool IsProtected(std::string_view qualified_name) const;

  /// Reports this state ("IL", "PR", "OF" …) until it is changed. IL lets a running busy time show through.
  void SetState(std::string_view two_letters);
  /// Busy (PR) for so many ms from now, then idle again.
  void SetBusyFor(std::uint32_t ms);

  /// Off and on: saved settings come into force, device R: is empty, the printer is idle.
  void PowerCycle();
  /// As it leaves the factory: factory settings, current and saved, no files, idle. The quirks stay.
  void FactoryReset();

  tagQuirks& Quirks() { return state_.quirks; }
  const tagCommandCounts& Counts() const { return state_.counts; }
  /// What the host last sent with ^ST; empty when it never did.
  const std::string& ClockText() const { return state_.clock_text; }

  /// The whole state, for whoever keeps it beyond the life of this object.
  tagPrinterState& State() { return state_; }
  const tagPrinterState& State() const { return state_; }

 private:
  tagPrinterState state_;
};

}  // namespace lxemu

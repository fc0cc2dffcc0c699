#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace lxemu {

/// Milliseconds of a clock that never runs backwards.
using MillisecondClock = std::function<std::uint64_t()>;

/// What the printer reports as its state: IL idle, PR, SP and CL busy, OF off-line.
class CPrinterStatus {
 public:
  explicit CPrinterStatus(MillisecondClock now) : now_(std::move(now)) {}

  /// Holds this state until it is changed; IL lets a running busy time show through.
  void Hold(std::string_view two_letters) { held_ = two_letters; }
  /// Busy with this kind of work for so many ms from now; ends by itself, and replaces an earlier busy time.
  void BusyFor(std::uint32_t ms, std::string_view kind);
  void Reset();

  std::string Text() const;

 private:
  MillisecondClock now_;
  std::string held_ = "IL";
  std::string busy_kind_;
  std::uint64_t busy_until_ = 0;
};

}  // namespace lxemu

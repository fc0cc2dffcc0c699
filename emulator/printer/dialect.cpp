#include "emulator/printer/dialect.h"

namespace lxemu {

CDialects::CDialects(const tagPrefixes& in_force, bool is_strict)
    : in_force_(in_force), is_strict_(is_strict) {
  Mark(kAlternativePrefixes.format, FormatFlag(Dialect::kAlternative));
  Mark(kAlternativePrefixes.control, ControlFlag(Dialect::kAlternative));
  if (!is_strict) {
    Mark(kDefaultPrefixes.format, FormatFlag(Dialect::kDefault));
    Mark(kDefaultPrefixes.control, ControlFlag(Dialect::kDefault));
  }
  SetInForce(in_force);
}

void CDialects::SetInForce(const tagPrefixes& in_force) {
  Unmark(in_force_.format, kInForceStart);
  Unmark(in_force_.control, kInForceStart);
  in_force_ = in_force;
  Mark(in_force_.format, FormatFlag(Dialect::kInForce));
  Mark(in_force_.control, ControlFlag(Dialect::kInForce));
}

bool CDialects::IsDelimiter(char byte, Dialect dialect) const {
  if (byte == kAlternativePrefixes.delimiter) {
    return true;
  }
  switch (dialect) {
    case Dialect::kDefault:
      return byte == kDefaultPrefixes.delimiter;
    case Dialect::kInForce:
      return byte == in_force_.delimiter;
    case Dialect::kAlternative:
      return byte == in_force_.delimiter || (!is_strict_ && byte == kDefaultPrefixes.delimiter);
  }
  return false;
}

void CDialects::Mark(char byte, unsigned flag) {
  auto& flags = flags_[static_cast<unsigned char>(byte)];
  flags = static_cast<std::uint8_t>(flags | flag);
}

void CDialects::Unmark(char byte, unsigned flag) {
  auto& flags = flags_[static_cast<unsigned char>(byte)];
  flags = static_cast<std::uint8_t>(flags & ~flag);
}

}  // namespace lxemu

#pragma once

#include <array>
#include <cstdint>

namespace lxemu {

/// The three characters that commands are written with.
struct tagPrefixes {
  char control = '~';
  char format = '^';
  char delimiter = ',';
};

inline constexpr tagPrefixes kDefaultPrefixes{'~', '^', ','};
/// Understood always, whatever characters are in force.
inline constexpr tagPrefixes kAlternativePrefixes{'\x10', '\x1E', '\x1F'};

/// Which set of characters a command was written with.
enum class Dialect : std::uint8_t { kDefault, kInForce, kAlternative };

/// Tells which bytes start commands, end parameters and separate them, in each dialect that the printer
/// understands.
class CDialects {
 public:
  CDialects(const tagPrefixes& in_force, bool is_strict);

  void SetInForce(const tagPrefixes& in_force);

  /// Whether the byte starts a command in any dialect.
  bool StartsCommand(char byte) const { return (Flags(byte) & kAnyStart) != 0; }
  bool IsFormatPrefix(char byte, Dialect dialect) const { return (Flags(byte) & FormatFlag(dialect)) != 0; }
  bool IsFormatPrefix(char byte) const { return (Flags(byte) & kAnyFormat) != 0; }
  bool IsControlPrefix(char byte, Dialect dialect) const { return (Flags(byte) & ControlFlag(dialect)) != 0; }

  /// Whether the byte ends the parameters of a command of this dialect: the characters in force end only what
  /// was written with them, so that a letter in force does not break up commands of the other dialects.
  bool EndsParameters(char byte, Dialect dialect) const {
    const unsigned ends = dialect == Dialect::kInForce ? kAnyStart : kAnyStart & ~unsigned{kInForceStart};
    return (Flags(byte) & ends) != 0;
  }
  bool IsDelimiter(char byte, Dialect dialect) const;

  /// The characters that an answer to a command of this dialect is written with.
  const tagPrefixes& AnswerPrefixes(Dialect dialect) const {
    return dialect == Dialect::kDefault ? kDefaultPrefixes : in_force_;
  }

 private:
  // One bit for each dialect that the byte is the format prefix of, then one for each control prefix.
  static constexpr unsigned FormatFlag(Dialect dialect) { return 1u << static_cast<unsigned>(dialect); }
  static constexpr unsigned ControlFlag(Dialect dialect) { return 8u << static_cast<unsigned>(dialect); }
  static constexpr unsigned kInForceStart = 2 | 16;
  static constexpr unsigned kAnyFormat = 1 | 2 | 4;
  static constexpr unsigned kAnyStart = kAnyFormat | 8 | 16 | 32;

  unsigned Flags(char byte) const { return flags_[static_cast<unsigned char>(byte)]; }
  void Mark(char byte, unsigned flag);
  void Unmark(char byte, unsigned flag);

  std::array<std::uint8_t, 256> flags_{};
  tagPrefixes in_force_;
  bool is_strict_;
};

}  // namespace lxemu

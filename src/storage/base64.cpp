#include "storage/base64.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tavira {
namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kInvalid = 0x80;
constexpr std::uint32_t kInvalidGroup = 0x80000000;

/** The six bits of a character, or kInvalid. */
constexpr auto kSextets = [] {
  std::array<std::uint8_t, 256> table{};
  table.fill(kInvalid);
  for (std::size_t value = 0; value < kAlphabet.size(); ++value) {
    table[static_cast<std::uint8_t>(kAlphabet[value])] = static_cast<std::uint8_t>(value);
  }
  return table;
}();

/** The six bits of a character where they belong in a group of 24, or kInvalidGroup: one "or" tests four
 * characters. */
constexpr std::array<std::uint32_t, 256> MakeGroupTable(unsigned shift) {
  std::array<std::uint32_t, 256> table{};
  for (std::size_t byte = 0; byte < table.size(); ++byte) {
    table[byte] = kSextets[byte] == kInvalid ? kInvalidGroup : std::uint32_t{kSextets[byte]} << shift;
  }
  return table;
}

constexpr auto kFirst = MakeGroupTable(18);
constexpr auto kSecond = MakeGroupTable(12);
constexpr auto kThird = MakeGroupTable(6);
constexpr auto kFourth = MakeGroupTable(0);

/** How many characters a broken group may take one at a time before the input counts as junk. */
constexpr std::size_t kLoneGroupReach = 8;
constexpr std::size_t kCompactionBlock = 1024;

class CDecoder {
 public:
  CDecoder(std::string_view text, std::uint8_t* out)
      : in_(reinterpret_cast<const std::uint8_t*>(text.data())),
        end_(in_ + text.size()),
        begin_(out),
        out_(out) {}

  /** Returns the number of bytes written. */
  std::size_t Run() {
    while (in_ != end_) {
      DecodeCleanGroups();
      if (!FinishLoneGroup()) {
        CompactBlock();
      }
    }
    if (held_ >= 2) {
      Emit(Group(), held_ - 1);
    }
    return static_cast<std::size_t>(out_ - begin_);
  }

 private:
  void DecodeCleanGroups() {
    while (held_ == 0 && end_ - in_ >= 4) {
      const std::uint32_t group = kFirst[in_[0]] | kSecond[in_[1]] | kThird[in_[2]] | kFourth[in_[3]];
      if ((group & kInvalidGroup) != 0) {
        return;
      }
      Emit(group, 3);
      in_ += 4;
    }
  }

  /** Fills the held group character by character. False when that takes too long to be a line break. */
  bool FinishLoneGroup() {
    for (std::size_t taken = 0; taken < kLoneGroupReach && in_ != end_; ++taken) {
      pending_[held_] = kSextets[*in_++];
      held_ += pending_[held_] != kInvalid ? 1 : 0;
      if (held_ == 4) {
        Emit(Group(), 3);
        held_ = 0;
        return true;
      }
    }
    return in_ == end_;
  }

  /** Takes a block's sextets out of the junk without a branch on the data, then decodes the whole groups. */
  void CompactBlock() {
    const std::uint8_t* block_end =
        end_ - in_ > static_cast<std::ptrdiff_t>(kCompactionBlock) ? in_ + kCompactionBlock : end_;
    for (; in_ != block_end; ++in_) {
      const std::uint8_t sextet = kSextets[*in_];
      pending_[held_] = sextet;
      held_ += static_cast<std::size_t>(sextet >> 7 ^ 1);
    }
    std::size_t at = 0;
    for (; at + 4 <= held_; at += 4) {
      Emit(std::uint32_t{pending_[at]} << 18 | std::uint32_t{pending_[at + 1]} << 12 |
               std::uint32_t{pending_[at + 2]} << 6 | pending_[at + 3],
           3);
    }
    for (std::size_t left = 0; at + left < held_; ++left) {
      pending_[left] = pending_[at + left];
    }
    held_ -= at;
  }

  /** The held sextets, up to four of them, at the top of 24 bits. */
  std::uint32_t Group() const {
    std::uint32_t group = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      group = group << 6 | (i < held_ ? pending_[i] : 0U);
    }
    return group;
  }

  void Emit(std::uint32_t group, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      *out_++ = static_cast<std::uint8_t>(group >> (16 - 8 * i));
    }
  }

  const std::uint8_t* in_;
  const std::uint8_t* end_;
  std::uint8_t* begin_;
  std::uint8_t* out_;
  /** Sextets of an incomplete group; one slot more than a block, because an invalid one is written and not
   * counted. */
  std::array<std::uint8_t, 4 + kCompactionBlock> pending_{};
  std::size_t held_ = 0;
};

}  // namespace

std::string DecodeBase64(std::string_view text) {
  std::string bytes(text.size() / 4 * 3 + 3, '\0');
  bytes.resize(CDecoder(text, reinterpret_cast<std::uint8_t*>(bytes.data())).Run());
  return bytes;
}

}  // namespace tavira

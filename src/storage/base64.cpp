#include "storage/base64.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace tavira {
namespace {

// How it works. Four characters of the alphabet, a group, give three bytes: four table entries, each with the
// character's bits where they belong in these bytes, are put together and stored at once (DecodeCleanGroups).
// At a group with a foreign character a span is squeezed: its alphabet characters are moved together, without
// a branch on the data, and decoded as clean groups (DecodeSpan). A span is one group, unless the one before
// held more foreign characters than a line break has: then it is a long one, because among junk every branch
// on a character is guessed wrong half of the time.

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::size_t kGroup = 4;
constexpr std::size_t kGroupBytes = 3;
constexpr std::size_t kLongSpan = 128;
constexpr std::size_t kLineBreak = 2;
constexpr std::size_t kMostInLongSpan = 4;

/** After how many characters the bytes go to the caller. The last span of a block may reach beyond it. */
constexpr std::size_t kBlock = 4096;
constexpr std::size_t kLargestBlock = kBlock + kLongSpan + kGroup;

constexpr std::uint32_t kForeign = 0x80000000;

/** What each character gives at one place of a group: its six bits in the group's three bytes, in the order
 * in which they are stored; kForeign outside the alphabet. */
constexpr auto kGroupTables = [] {
  static_assert(std::endian::native == std::endian::little);
  std::array<std::array<std::uint32_t, 256>, kGroup> tables{};
  for (std::size_t place = 0; place < kGroup; ++place) {
    tables[place].fill(kForeign);
    for (std::size_t value = 0; value < kAlphabet.size(); ++value) {
      const std::size_t bits = value << (18 - 6 * place);
      tables[place][static_cast<std::uint8_t>(kAlphabet[value])] =
          static_cast<std::uint32_t>(bits >> 16 | (bits & 0xFF00) | (bits & 0xFF) << 16);
    }
  }
  return tables;
}();

/** 1 for a character of the alphabet, else 0. As wide as the counter that it is added to. */
constexpr auto kBelongs = [] {
  std::array<std::size_t, 256> table{};
  for (const char character : kAlphabet) {
    table[static_cast<std::uint8_t>(character)] = 1;
  }
  return table;
}();

/** The bytes of a group in its lowest 24 bits; kForeign tells of a foreign character. */
inline std::uint32_t GroupBits(const std::uint8_t* in) {
  return kGroupTables[0][in[0]] | kGroupTables[1][in[1]] | kGroupTables[2][in[2]] | kGroupTables[3][in[3]];
}

/** Writes four bytes, of which three count: what follows is written over the fourth. */
inline void StoreGroup(std::uint8_t* out, std::uint32_t bits) {
  std::memcpy(out, &bits, sizeof bits);
}

inline std::size_t CountBelonging(const std::uint8_t* in, std::size_t size) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < size; ++i) {
    count += kBelongs[in[i]];
  }
  return count;
}

/** Where the decoder stands. Its functions are inlined, so that all of it stays in registers: a store through
 * `out` could change anything that lies in memory. */
struct tagCursor {
  const std::uint8_t* in;
  const std::uint8_t* end;
  std::uint8_t* out;

  std::size_t Left() const { return static_cast<std::size_t>(end - in); }
};

/** Decodes groups that begin before `stop`, up to one that a foreign character is in. */
[[gnu::always_inline]] inline void DecodeCleanGroups(tagCursor& at, const std::uint8_t* stop) {
  while (at.in < stop) {
    const std::uint32_t bits = GroupBits(at.in);
    if ((bits & kForeign) != 0) {
      break;
    }
    StoreGroup(at.out, bits);
    at.in += kGroup;
    at.out += kGroupBytes;
  }
}

/** As DecodeCleanGroups; a line break in front of a group is passed over. */
[[gnu::always_inline]] inline void DecodeCleanLines(tagCursor& at, const std::uint8_t* stop) {
  stop = at.Left() < kGroup ? at.in : std::min(stop, at.end - kGroup + 1);
  for (;;) {
    DecodeCleanGroups(at, stop);
    // Branches and not sums: most lines are equally long, so the processor guesses right, and goes on.
    if (at.in >= stop) {
      return;
    }
    if (at.in[0] == '\r' && at.in[1] == '\n') {
      at.in += 2;
    } else if (at.in[0] == '\n') {
      at.in += 1;
    } else {
      return;
    }
  }
}

/** Decodes `size` characters, at most kLongSpan, whatever they are, behind the `held` ones; then holds those
 * of an incomplete group. Returns how many did not belong. */
[[gnu::always_inline]] inline std::size_t DecodeSpan(tagCursor& at, std::size_t size, tagBase64Group& held) {
  std::array<std::uint8_t, kGroup + kLongSpan + kGroup> squeezed;
  std::size_t kept = held.count;
  if (kept != 0) {
    std::copy(held.characters.begin(), held.characters.end(), squeezed.begin());
  }
  for (std::size_t i = 0; i < size; ++i) {
    squeezed[kept] = at.in[i];
    kept += kBelongs[at.in[i]];
  }
  const std::size_t foreign = held.count + size - kept;
  at.in += size;
  // The next characters complete the last group, if they are clean: then clean groups can follow.
  if (at.Left() >= kGroup && CountBelonging(at.in, kGroup) == kGroup) {
    const std::size_t missing = (0 - kept) % kGroup;
    std::memcpy(&squeezed[kept], at.in, kGroup);
    kept += missing;
    at.in += missing;
  }
  std::size_t done = 0;
  for (; kept - done >= kGroup; done += kGroup, at.out += kGroupBytes) {
    StoreGroup(at.out, GroupBits(&squeezed[done]));
  }
  held.count = kept - done;
  if (held.count != 0) {
    std::copy_n(&squeezed[done], kGroup, held.characters.begin());
  }
  return foreign;
}

inline void SkipForeign(tagCursor& at) {
  constexpr std::size_t kStep = 8;
  while (at.Left() >= kStep && CountBelonging(at.in, kStep) == 0) {
    at.in += kStep;
  }
}

/** Decodes about kBlock characters, or what is left. `among_junk`: a long span comes next. */
[[gnu::always_inline]] inline void DecodeBlock(tagCursor& at, tagBase64Group& held, bool& among_junk) {
  const std::uint8_t* const stop = at.in + std::min(at.Left(), kBlock);
  while (at.in < stop) {
    if (among_junk) {
      const std::size_t foreign = DecodeSpan(at, std::min(at.Left(), kLongSpan), held);
      if (foreign == kLongSpan) {
        SkipForeign(at);
      }
      among_junk = foreign > kMostInLongSpan;
      continue;
    }
    if (held.count == 0) {
      DecodeCleanLines(at, stop);
    }
    if (at.in < stop) {
      among_junk = DecodeSpan(at, std::min(at.Left(), kGroup), held) > kLineBreak;
    }
  }
}

}  // namespace

void CBase64Decoder::Append(std::string_view text, std::string& bytes) {
  std::array<std::uint8_t, LargestDecodedSize(kLargestBlock) + kGroup> block;
  const auto* in = reinterpret_cast<const std::uint8_t*>(text.data());
  tagCursor at{in, in + text.size(), block.data()};
  tagBase64Group held = held_;
  bool among_junk = false;
  while (at.in != at.end) {
    DecodeBlock(at, held, among_junk);
    bytes.append(reinterpret_cast<const char*>(block.data()),
                 static_cast<std::size_t>(at.out - block.data()));
    at.out = block.data();
  }
  held_ = held;
}

void CBase64Decoder::Finish(std::string& bytes) {
  // Characters that are not there have no part in the bytes that are.
  const std::uint32_t bits = GroupBits(held_.characters.data());
  for (std::size_t byte = 0; byte + 1 < held_.count; ++byte) {
    bytes.push_back(static_cast<char>(bits >> (8 * byte)));
  }
  held_.count = 0;
}

std::string DecodeBase64(std::string_view text) {
  std::string bytes;
  bytes.reserve(LargestDecodedSize(text.size()));
  CBase64Decoder decoder;
  decoder.Append(text, bytes);
  decoder.Finish(bytes);
  return bytes;
}

}  // namespace tavira

#include "command/answer_parser.h"

#include <algorithm>
#include <array>

#include "command/byte_words.h"
#include "command/frame_bytes.h"
#include "command/setting_table.h"

namespace tavira {
namespace {

constexpr std::string_view kAnswerOpening = "^S(";
constexpr std::size_t kHeadSize = sizeof(ByteWord);
static_assert(kHeadSize == kAnswerOpening.size() + kSettingKeySize);

/** A head as one number: as LoadWord reads it from an answer. */
constexpr ByteWord PackHead(std::string_view head) {
  ByteWord packed = 0;
  for (std::size_t i = 0; i < head.size(); ++i) {
    packed |= ByteWord{static_cast<std::uint8_t>(head[i])} << 8 * i;
  }
  return packed;
}

/** The answer heads in table order; 0 where a row has none. */
constexpr auto kHeads = [] {
  std::array<ByteWord, kSettingTable.size()> heads{};
  std::transform(kSettingTable.begin(), kSettingTable.end(), heads.begin(),
                 [](const tagSettingRow& row) { return PackHead(row.answer_head.View()); });
  return heads;
}();

/** Finds a row by its head without a search: the top bits of the head times a number that gives each head a
 * slot of its own. */
class CHeadIndex {
 public:
  constexpr CHeadIndex() {
    while (!Fill()) {
      multiplier_ += 2;
    }
  }

  /** The only row that can have this head. */
  constexpr std::size_t Candidate(ByteWord head) const { return rows_[Slot(head)]; }

 private:
  static constexpr unsigned kSlotBits = 10;

  constexpr std::size_t Slot(ByteWord head) const {
    return static_cast<std::size_t>(head * multiplier_ >> (64 - kSlotBits));
  }

  constexpr bool Fill() {
    std::array<bool, 1 << kSlotBits> taken{};
    for (std::size_t row = 0; row < kHeads.size(); ++row) {
      const std::size_t slot = Slot(kHeads[row]);
      if (kHeads[row] != 0 && taken[slot]) {
        return false;
      }
      if (kHeads[row] != 0) {
        taken[slot] = true;
        rows_[slot] = static_cast<std::uint8_t>(row);
      }
    }
    return true;
  }

  std::array<std::uint8_t, 1 << kSlotBits> rows_{};
  ByteWord multiplier_ = 0x9E3779B97F4A7C15;
};

constexpr CHeadIndex kHeadIndex;
constexpr std::size_t kNoRow = kSettingTable.size();

/** The row whose answer head stands at `text`, of which kHeadSize bytes are there; or kNoRow. */
inline std::size_t FindRow(const char* text) {
  const ByteWord head = LoadWord(text);
  const std::size_t row = kHeadIndex.Candidate(head);
  return kHeads[row] == head ? row : kNoRow;
}

/** What stands behind a head, without the "," that separates the two. */
std::string_view StripComma(std::string_view remainder) {
  return remainder.starts_with(',') ? remainder.substr(1) : remainder;
}

struct tagFrameEnd {
  std::size_t at = std::string_view::npos; /**< the ETX; npos: there is none */
  bool passed_caret = false;               /**< there is a "^" before it, where another head could begin */
};

/** Looks at `text` from `at` on. */
inline tagFrameEnd FindFrameEnd(std::string_view text, std::size_t at) {
  bool passed_caret = false;
  for (; text.size() - at >= sizeof(ByteWord); at += sizeof(ByteWord)) {
    const ByteWord word = LoadWord(text.data() + at);
    const ByteWord ends = MarkEqualBytes(word, kEtx);
    const ByteWord carets = MarkEqualBytes(word, kAnswerOpening.front());
    if (ends != 0) {
      const ByteWord before_end = (ends & (0 - ends)) - 1;
      return {at + FirstMark(ends), passed_caret || (carets & before_end) != 0};
    }
    passed_caret = passed_caret || carets != 0;
  }
  for (; at < text.size(); ++at) {
    if (text[at] == kEtx) {
      return {at, passed_caret};
    }
    passed_caret = passed_caret || text[at] == kAnswerOpening.front();
  }
  return {};
}

}  // namespace

std::optional<std::string_view> CAnswerFrames::Next() {
  const std::size_t stx = rest_.find(kStx);
  const std::size_t etx = stx == std::string_view::npos ? stx : rest_.find(kEtx, stx + 1);
  if (etx == std::string_view::npos) {
    rest_ = {};
    return std::nullopt;
  }
  const std::string_view frame = rest_.substr(stx + 1, etx - stx - 1);
  rest_.remove_prefix(etx + 1);
  return frame;
}

bool MatchAnswerFrame(std::string_view frame, std::uint32_t& id, std::string_view& value) {
  // One walk over the frame instead of one search for each row: heads cannot overlap, and the first
  // occurrence of a head has something behind it unless it ends the frame, so the lowest row met on the way
  // is the one to credit.
  std::size_t best_row = kNoRow;
  std::size_t at = frame.find(kAnswerOpening);
  while (at != std::string_view::npos && at + kHeadSize < frame.size()) {
    const std::size_t row = FindRow(frame.data() + at);
    if (row < best_row) {
      best_row = row;
      value = StripComma(frame.substr(at + kHeadSize));
    }
    at = frame.find(kAnswerOpening, at + 1);
  }
  if (best_row == kNoRow) {
    return false;
  }
  id = static_cast<std::uint32_t>(kSettingTable[best_row].id);
  return true;
}

std::optional<tagSettingAnswer> CSettingAnswers::Next() {
  for (;;) {
    const std::size_t stx = rest_.find(kStx);
    if (stx == std::string_view::npos) {
      return std::nullopt;
    }
    rest_.remove_prefix(stx + 1);
    // Nearly every frame is one head and its value. Then only the value is looked at, once.
    const std::size_t row = rest_.size() > kHeadSize ? FindRow(rest_.data()) : kNoRow;
    const tagFrameEnd end = FindFrameEnd(rest_, row == kNoRow ? 0 : kHeadSize);
    if (end.at == std::string_view::npos) {
      rest_ = {};
      return std::nullopt;
    }
    const std::string_view frame = rest_.substr(0, end.at);
    rest_.remove_prefix(end.at + 1);
    if (row != kNoRow && !end.passed_caret && frame.size() > kHeadSize) {
      return tagSettingAnswer{static_cast<std::uint32_t>(kSettingTable[row].id),
                              StripComma(frame.substr(kHeadSize))};
    }
    tagSettingAnswer answer;
    if (end.passed_caret && MatchAnswerFrame(frame, answer.id, answer.value)) {
      return answer;
    }
  }
}

std::vector<tagSettingRecord> ScanAnswers(std::string_view answer) {
  constexpr std::size_t kShortestFrame = kHeadSize + 3;
  std::vector<tagSettingRecord> records;
  records.reserve(std::min(answer.size() / kShortestFrame, kSettingTable.size()));
  CSettingAnswers answers(answer);
  while (const auto found = answers.Next()) {
    records.push_back({found->id, std::string(found->value)});
  }
  return records;
}

std::string_view FindAnswerValue(std::string_view answer, std::string_view head) {
  CAnswerFrames frames(answer);
  while (const auto frame = frames.Next()) {
    const std::size_t at = frame->find(head);
    if (at != std::string_view::npos) {
      return StripComma(frame->substr(at + head.size()));
    }
  }
  return {};
}

}  // namespace tavira

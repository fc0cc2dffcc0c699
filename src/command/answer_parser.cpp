#include "command/answer_parser.h"

#include <algorithm>
#include <array>

#include "command/frame_bytes.h"
#include "command/setting_table.h"

namespace tavira {
namespace {

constexpr std::string_view kAnswerOpening = "^S(";
constexpr std::size_t kHeadSize = kAnswerOpening.size() + kSettingKeySize;

/** The key of an answer head as one number, for a search by comparison of numbers. */
constexpr std::uint64_t PackKey(std::string_view key) {
  std::uint64_t packed = 0;
  for (const char byte : key.substr(0, kSettingKeySize)) {
    packed = packed << 8 | static_cast<std::uint8_t>(byte);
  }
  return packed;
}

struct tagKeyedRow {
  std::uint64_t key = 0;
  std::size_t row = 0;
};

constexpr std::size_t CountReadableRows() {
  return static_cast<std::size_t>(
      std::count_if(kSettingTable.begin(), kSettingTable.end(),
                    [](const tagSettingRow& row) { return !row.answer_head.IsEmpty(); }));
}

/** The rows that have an answer head, sorted by key. */
constexpr auto SortRowsByKey() {
  std::array<tagKeyedRow, CountReadableRows()> rows{};
  std::size_t count = 0;
  for (std::size_t row = 0; row < kSettingTable.size(); ++row) {
    const std::string_view head = kSettingTable[row].answer_head.View();
    if (!head.empty()) {
      rows[count++] = {PackKey(head.substr(kAnswerOpening.size())), row};
    }
  }
  std::sort(rows.begin(), rows.end(),
            [](const tagKeyedRow& a, const tagKeyedRow& b) { return a.key < b.key; });
  return rows;
}

constexpr auto kRowsByKey = SortRowsByKey();
static_assert(kRowsByKey.size() == 76);
static_assert(std::adjacent_find(kRowsByKey.begin(), kRowsByKey.end(), [](const auto& a, const auto& b) {
                return a.key == b.key;
              }) == kRowsByKey.end());

/** The index of the row whose answer head carries `key`; the table's size when none does. */
std::size_t FindRow(std::string_view key) {
  const std::uint64_t packed = PackKey(key);
  const auto found =
      std::lower_bound(kRowsByKey.begin(), kRowsByKey.end(), packed,
                       [](const tagKeyedRow& row, std::uint64_t wanted) { return row.key < wanted; });
  return found != kRowsByKey.end() && found->key == packed ? found->row : kSettingTable.size();
}

/** What stands behind a head, without the "," that separates the two. */
std::string_view StripComma(std::string_view remainder) {
  return remainder.starts_with(',') ? remainder.substr(1) : remainder;
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
  std::size_t best_row = kSettingTable.size();
  std::size_t at = frame.find(kAnswerOpening);
  while (at != std::string_view::npos && at + kHeadSize < frame.size()) {
    const std::size_t row = FindRow(frame.substr(at + kAnswerOpening.size(), kSettingKeySize));
    if (row < best_row) {
      best_row = row;
      value = StripComma(frame.substr(at + kHeadSize));
    }
    at = frame.find(kAnswerOpening, at + 1);
  }
  if (best_row == kSettingTable.size()) {
    return false;
  }
  id = static_cast<std::uint32_t>(kSettingTable[best_row].id);
  return true;
}

std::vector<tagSettingRecord> ScanAnswers(std::string_view answer) {
  std::vector<tagSettingRecord> records;
  CAnswerFrames frames(answer);
  while (const auto frame = frames.Next()) {
    std::uint32_t id = 0;
    std::string_view value;
    if (MatchAnswerFrame(*frame, id, value)) {
      records.push_back({id, std::string(value)});
    }
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

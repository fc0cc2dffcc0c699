#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "command/answer_parser.h"
#include "command/setting_table.h"

// The one-walk scanner must credit every frame as the stated rule does: rows in table order, first occurrence
// of the head, something behind it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view answer(reinterpret_cast<const char*>(data), size);
  const auto records = tavira::ScanAnswers(answer);
  std::size_t next = 0;
  tavira::CAnswerFrames frames(answer);
  while (const auto frame = frames.Next()) {
    for (const tavira::tagSettingRow& row : tavira::kSettingTable) {
      const std::string_view head = row.answer_head.View();
      const std::size_t at = head.empty() ? std::string_view::npos : frame->find(head);
      if (at == std::string_view::npos || at + head.size() == frame->size()) {
        continue;
      }
      std::string_view value = frame->substr(at + head.size());
      value.remove_prefix(value.front() == ',' ? 1 : 0);
      if (next == records.size() || records[next].id != static_cast<std::uint32_t>(row.id) ||
          records[next].value != value) {
        std::abort();
      }
      ++next;
      break;
    }
  }
  if (next != records.size()) {
    std::abort();
  }
  return 0;
}

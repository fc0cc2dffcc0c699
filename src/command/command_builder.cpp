#include "command/command_builder.h"

#include "command/fixed_commands.h"
#include "command/frame_bytes.h"
#include "command/setting_table.h"

namespace tavira {

void AppendQuery(std::string& commands, std::uint32_t id) {
  if (const tagSettingRow* row = FindSetting(static_cast<std::int32_t>(id))) {
    commands.append(row->query_head.View());
  }
}

void AppendAllQueries(std::string& commands) {
  for (const tagSettingRow& row : kSettingTable) {
    commands.append(row.query_head.View());
  }
}

void AppendSetCommand(std::string& commands, std::uint32_t id, std::string_view value) {
  const tagSettingRow* row = FindSetting(static_cast<std::int32_t>(id));
  if (row == nullptr) {
    return;
  }
  commands.append(kOpenFormat).append(row->set_head.View());
  if (row->comma) {
    commands.push_back(',');
  }
  commands.append(value).append(kCloseFormat);
}

void AppendPrefixChange(std::string& commands, const tagPrefixCharacters& prefix) {
  const auto append = [&commands](std::string_view name, std::uint8_t character) {
    commands.push_back(kAlternativeFormat);
    commands.append(name).push_back(static_cast<char>(character));
  };
  commands.push_back(kStx);
  append("CT", prefix.control);
  append("CC", prefix.format);
  append("CD", prefix.delimiter);
  commands.push_back(kEtx);
}

}  // namespace tavira

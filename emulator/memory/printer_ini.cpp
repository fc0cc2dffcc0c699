#include "emulator/memory/printer_ini.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

#include "emulator/printer/text_escape.h"

namespace lxemu {
namespace {

constexpr std::uint32_t kDefaultLatency = 20;

using Fields = std::vector<std::string_view>;

/// The parts between the separators, empty ones left out.
Fields Split(std::string_view text, std::string_view separators) {
  Fields fields;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of(separators), text.size());
    if (end > 0) {
      fields.push_back(text.substr(0, end));
    }
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return fields;
}

template <typename T>
bool ReadNumber(std::string_view text, T& number) {
  T value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || end != text.data() + text.size()) {
    return false;
  }
  number = value;
  return true;
}

template <typename T>
bool ReadNumber(std::string_view text, std::optional<T>& number) {
  T value{};
  if (!ReadNumber(text, value)) {
    return false;
  }
  number = value;
  return true;
}

bool ReadSwitch(std::string_view text, bool& is_on) {
  if (text != "0" && text != "1") {
    return false;
  }
  is_on = text == "1";
  return true;
}

bool IsKey(std::string_view key) {
  return key == kStatusKey || CSettingMemory::Knows(key);
}

bool ReadKeys(std::string_view text, std::set<std::string, std::less<>>& keys) {
  const Fields fields = Split(text, "; ");
  keys.insert(fields.begin(), fields.end());
  return std::all_of(fields.begin(), fields.end(), IsKey);
}

bool ReadPadding(std::string_view text, tagQuirks& quirks) {
  constexpr unsigned kMaximumDigits = 64;
  for (const std::string_view item : Split(text, "; ")) {
    const Fields parts = Split(item, ":");
    unsigned digits = 0;
    if (parts.size() != 2 || !IsKey(parts[0]) || !ReadNumber(parts[1], digits) || digits > kMaximumDigits) {
      return false;
    }
    quirks.padded_keys[std::string(parts[0])] = digits;
  }
  return true;
}

bool ReadCallFaults(std::string_view text, tagFaultPlan& faults) {
  struct tagCallName {
    std::string_view name;
    PortCall call;
  };
  constexpr std::array kCalls = std::to_array<tagCallName>({{"Initialize", PortCall::kInitialize},
                                                            {"SendData", PortCall::kSendData},
                                                            {"Poll", PortCall::kPoll},
                                                            {"Read", PortCall::kRead}});
  for (const std::string_view item : Split(text, "; ")) {
    const Fields parts = Split(item, ":");
    const auto call = std::find_if(kCalls.begin(), kCalls.end(), [&](const tagCallName& entry) {
      return !parts.empty() && entry.name == parts[0];
    });
    tagCallFault fault;
    if (parts.size() != 3 || call == kCalls.end() || !ReadNumber(parts[1], fault.nth) ||
        !ReadNumber(parts[2], fault.code)) {
      return false;
    }
    fault.call = call->call;
    faults.call_faults.push_back(fault);
  }
  return true;
}

bool ReadGarbage(std::string_view text, tagQuirks& quirks) {
  const std::optional<std::string> bytes = Unescaped(text);
  quirks.garbage_between_frames = bytes.value_or(std::string());
  return bytes.has_value();
}

bool ReadPrinterLine(std::string_view key, std::string_view value, tagPrinterIni& ini) {
  struct tagSwitch {
    std::string_view key;
    bool tagQuirks::*member;
  };
  constexpr std::array kSwitches = std::to_array<tagSwitch>({
      {"strict_prefix", &tagQuirks::strict_prefix},
      {"short_format_names", &tagQuirks::short_format_names},
      {"compressed_downloads", &tagQuirks::compressed_downloads},
      {"ignore_sets", &tagQuirks::ignore_sets},
      {"off_line", &tagQuirks::off_line},
      {"upper_case_values", &tagQuirks::upper_case_values},
  });
  for (const tagSwitch& entry : kSwitches) {
    if (entry.key == key) {
      return ReadSwitch(value, ini.quirks.*entry.member);
    }
  }
  if (key == "state") {
    ini.state = value;
    return true;
  }
  return (key == "busy_ms" && ReadNumber(value, ini.busy_ms)) ||
         (key == "maintenance_ms" && ReadNumber(value, ini.quirks.maintenance_ms)) ||
         (key == "device_capacity" && ReadNumber(value, ini.quirks.device_capacity)) ||
         (key == "unanswered" && ReadKeys(value, ini.quirks.unanswered_keys)) ||
         (key == "refused" && ReadKeys(value, ini.quirks.refused_keys)) ||
         (key == "padded" && ReadPadding(value, ini.quirks)) ||
         (key == "garbage" && ReadGarbage(value, ini.quirks));
}

bool ReadFaultLine(std::string_view key, std::string_view value, tagFaultPlan& faults) {
  return (key == "cut_at" && ReadNumber(value, faults.cut_answer_at)) ||
         (key == "cut_from" && ReadNumber(value, faults.cut_from)) ||
         (key == "hang_up_at" && ReadNumber(value, faults.hang_up_at)) ||
         (key == "latency_ms" && ReadNumber(value, faults.latency_ms)) ||
         (key == "silent" && ReadSwitch(value, faults.silent)) ||
         (key == "silent_from" && ReadNumber(value, faults.silent_from)) ||
         (key == "fail" && ReadCallFaults(value, faults));
}

bool ReadMessages(std::string_view text, tagSearchMessages& messages) {
  for (const std::string_view item : Split(text, "; ")) {
    if (item == "announcement") {
      messages.Add(SearchMessage::kAnnouncement);
    } else if (item == "state") {
      messages.Add(SearchMessage::kState);
    } else if (item == "names") {
      messages.Add(SearchMessage::kNames);
    } else {
      return false;
    }
  }
  return true;
}

bool ReadTimes(std::string_view text, tagSearchTimes& times) {
  const Fields items = Split(text, "; ");
  return std::all_of(items.begin(), items.end(), [&](std::string_view item) {
    const Fields parts = Split(item, ":");
    return parts.size() == 2 &&
           ((parts[0] == "announcement" && ReadNumber(parts[1], times.announcement_ms)) ||
            (parts[0] == "state" && ReadNumber(parts[1], times.state_ms)) ||
            (parts[0] == "names" && ReadNumber(parts[1], times.names_ms)));
  });
}

bool ReadSearchLine(std::string_view key, std::string_view value, tagSearchPlan& search) {
  struct tagFault {
    std::string_view key;
    tagSearchMessages tagSearchPlan::*member;
  };
  constexpr std::array kFaults = std::to_array<tagFault>({
      {"silent", &tagSearchPlan::silent},
      {"wrong_letter", &tagSearchPlan::wrong_letter},
      {"rejected", &tagSearchPlan::rejected},
      {"short", &tagSearchPlan::cut_short},
      {"twice", &tagSearchPlan::twice},
      {"other_port", &tagSearchPlan::other_port},
  });
  for (const tagFault& entry : kFaults) {
    if (entry.key == key) {
      return ReadMessages(value, search.*entry.member);
    }
  }
  if (key == "first_name") {
    search.first_name = value;
    return true;
  }
  if (key == "second_name") {
    search.second_name = value;
    return true;
  }
  return (key == "no_capability" && ReadSwitch(value, search.no_capability)) ||
         (key == "delay_ms" && ReadNumber(value, search.delay_ms)) ||
         (key == "late" && ReadTimes(value, search.late)) ||
         (key == "again" && ReadTimes(value, search.again));
}

bool ReadLine(std::string_view section, std::string_view key, std::string_view value, tagPrinterIni& ini) {
  if (section == "printer") {
    return ReadPrinterLine(key, value, ini);
  }
  if (section == "faults") {
    return ReadFaultLine(key, value, ini.faults);
  }
  if (section == "search") {
    return ReadSearchLine(key, value, ini.search);
  }
  if (section == "factory" && CSettingMemory::Knows(key)) {
    ini.factory.insert_or_assign(std::string(key), std::string(value));
    return true;
  }
  if (section == "answers" && IsKey(key)) {
    ini.quirks.fixed_answers.insert_or_assign(std::string(key), std::string(value));
    return true;
  }
  return false;
}

}  // namespace

tagPrinterIni ReadPrinterIni(std::string_view text) {
  tagPrinterIni ini;
  ini.faults.latency_ms = kDefaultLatency;
  std::string_view section;
  for (std::string_view line : Split(text, "\r\n")) {
    line = Trim(line);
    if (line.empty() || line.front() == ';' || line.front() == '#') {
      continue;
    }
    if (line.front() == '[' && line.back() == ']') {
      section = line.substr(1, line.size() - 2);
      continue;
    }
    const std::size_t equals = line.find('=');
    if (equals == line.npos ||
        !ReadLine(section, Trim(line.substr(0, equals)), Trim(line.substr(equals + 1)), ini)) {
      ini.problems.push_back("not understood in [" + std::string(section) + "]: " + std::string(line));
    }
  }
  return ini;
}

void ApplyIni(const tagPrinterIni& ini, CPrinter& printer) {
  printer.Quirks() = ini.quirks;
  for (const auto& [key, value] : ini.factory) {
    printer.SetFactorySetting(key, value);
  }
  printer.SetState(ini.state);
  if (ini.busy_ms > 0) {
    printer.SetBusyFor(ini.busy_ms);
  }
}

}  // namespace lxemu

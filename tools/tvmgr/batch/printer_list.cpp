#include "batch/printer_list.h"

#include <algorithm>
#include <map>
#include <optional>

#include "names/ascii_text.h"
#include "output/command_error.h"
#include "output/text_layout.h"
#include "printer/printer_kind.h"

namespace tvmgr {
namespace {

constexpr std::string_view kBlanks = " \t\r";

std::string_view Trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  return first == std::string_view::npos ? std::string_view()
                                         : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/** What is wrong with an entry; empty: nothing. */
std::string ProblemOf(std::string_view entry, const tagListedPrinter& printer) {
  const std::string shown = "\"" + MakeVisible(printer.value) + "\"";
  if (printer.value.empty()) {
    return "names no printer";
  }
  if (MakeVisible(printer.value) != printer.value) {
    return shown + " holds characters that no printer's name has";
  }
  if (entry == "found") {
    return "\"found\" stands alone, for all that a search finds; a host of this name is address=found";
  }
  if (entry.find_first_not_of("0123456789") == std::string_view::npos) {
    return shown + " is a number: numbers belong to \"tvmgr use\", name the printer itself";
  }
  if (printer.kind != "device" && !entry.starts_with("name=") &&
      printer.value.find_first_of(",;\"") != std::string::npos) {
    return shown + " reads like several printers, or has quotation marks; a name with them is name=" +
           MakeVisible(printer.value);
  }
  return {};
}

tagListedPrinter ReadEntry(std::string_view text, std::string where) {
  tagListedPrinter printer;
  printer.where = std::move(where);
  for (const std::string_view kind : kPrinterKinds) {
    if (text.starts_with(kind) && text.substr(kind.size()).starts_with('=')) {
      printer.kind = kind;
      printer.value = Trim(text.substr(kind.size() + 1));
      return printer;
    }
  }
  printer.value = text;
  printer.kind = KindByLook(text);
  if (printer.kind == "address" && text.find_first_of(" \t") != std::string_view::npos) {
    printer.kind = "name";  // no host is called so
  }
  return printer;
}

void AppendUtf8(std::string& text, char32_t value) {
  if (value < 0x80) {
    text += static_cast<char>(value);
    return;
  }
  const int following = value < 0x800 ? 1 : value < 0x10000 ? 2 : 3;
  constexpr unsigned char kLead[] = {0, 0xC0, 0xE0, 0xF0};
  text += static_cast<char>(kLead[following] | (value >> (6 * following)));
  for (int i = following - 1; i >= 0; --i) {
    text += static_cast<char>(0x80 | ((value >> (6 * i)) & 0x3F));
  }
}

// What "command > file" writes in an older PowerShell. Half a pair becomes U+FFFD.
std::string FromUtf16(std::string_view bytes, bool is_little) {
  const auto unit = [&](std::size_t at) {
    const auto first = static_cast<unsigned char>(bytes[at]);
    const auto second = static_cast<unsigned char>(bytes[at + 1]);
    return static_cast<char32_t>(is_little ? first | second << 8 : first << 8 | second);
  };
  std::string text;
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
    char32_t value = unit(at);
    if ((value & 0xFC00) == 0xD800 && at + 3 < bytes.size() && (unit(at + 2) & 0xFC00) == 0xDC00) {
      value = 0x10000 + ((value & 0x3FF) << 10) + (unit(at + 2) & 0x3FF);
      at += 2;
    } else if ((value & 0xF800) == 0xD800) {
      value = 0xFFFD;
    }
    AppendUtf8(text, value);
  }
  return text;
}

std::string FileText(std::string_view bytes) {
  if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")) {
    return FromUtf16(bytes.substr(2), bytes.front() == '\xFF');
  }
  bytes.remove_prefix(bytes.starts_with("\xEF\xBB\xBF") ? 3 : 0);
  return std::string(bytes);
}

std::string_view WithoutComment(std::string_view line) {
  for (std::size_t at = line.find('#'); at != std::string_view::npos; at = line.find('#', at + 1)) {
    // Device paths have it in their middle.
    if (at == 0 || kBlanks.find(line[at - 1]) != std::string_view::npos) {
      return line.substr(0, at);
    }
  }
  return line;
}

std::string TextOf(const nlohmann::ordered_json& json, const char* member) {
  const auto found = json.find(member);
  return found != json.end() && found->is_string() ? found->get<std::string>() : std::string();
}

}  // namespace

std::string LabelOf(const tagListedPrinter& printer) {
  return printer.name.empty() || printer.name == printer.value ? printer.value
                                                               : printer.value + " (" + printer.name + ")";
}

std::vector<tagListedPrinter> ParsePrinterText(std::string_view text) {
  std::vector<tagListedPrinter> printers;
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::size_t end = std::min(text.find(','), text.size());
    const std::string_view entry = Trim(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    if (entry.empty()) {
      continue;
    }
    printers.push_back(ReadEntry(entry, "entry " + std::to_string(number)));
    if (const std::string problem = ProblemOf(entry, printers.back()); !problem.empty()) {
      throw CUsageError("--printers, " + printers.back().where + ": " + problem);
    }
  }
  if (printers.empty()) {
    throw CUsageError("--printers names no printer");
  }
  return printers;
}

std::vector<tagListedPrinter> ParsePrinterFile(std::string_view bytes, const std::string& path) {
  const std::string text = FileText(bytes);
  std::vector<tagListedPrinter> printers;
  std::string_view rest = text;
  for (std::size_t number = 1; !rest.empty(); ++number) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    const std::string_view entry = Trim(WithoutComment(rest.substr(0, end)));
    rest.remove_prefix(std::min(end + 1, rest.size()));
    if (entry.empty()) {
      continue;
    }
    printers.push_back(ReadEntry(entry, "line " + std::to_string(number)));
    if (const std::string problem = ProblemOf(entry, printers.back()); !problem.empty()) {
      throw CInputFileError("\"" + path + "\", " + printers.back().where + ": " + problem +
                            " (one address, port or name a line, in UTF-8; # begins a comment)");
    }
  }
  if (printers.empty()) {
    throw CInputFileError("\"" + path + "\" names no printer: one address, port or name a line");
  }
  return printers;
}

std::vector<tagListedPrinter> PrintersOfSearch(const nlohmann::ordered_json& document) {
  std::vector<tagListedPrinter> printers;
  const auto found = document.find("printers");
  if (found == document.end() || !found->is_array()) {
    return printers;
  }
  for (const auto& json : *found) {
    const std::string own = TextOf(json, "second_name");
    tagListedPrinter printer{TextOf(json, "kind"), TextOf(json, "value"),
                             own.empty() ? TextOf(json, "name") : own,
                             "number " + std::to_string(printers.size() + 1) + " of the search"};
    if (!printer.kind.empty() && !printer.value.empty()) {
      printers.push_back(std::move(printer));
    }
  }
  return printers;
}

void FindNames(std::vector<tagListedPrinter>& printers, const std::vector<tagListedPrinter>& found,
               std::vector<std::string>& problems) {
  problems.assign(printers.size(), {});
  for (std::size_t i = 0; i < printers.size(); ++i) {
    tagListedPrinter& printer = printers[i];
    if (printer.kind != "name") {
      continue;
    }
    std::string values;
    const tagListedPrinter* match = nullptr;
    for (const tagListedPrinter& one : found) {
      if (EqualsIgnoreCase(one.name, printer.value)) {
        values += (values.empty() ? "" : ", ") + one.value;
        match = &one;
      }
    }
    if (match == nullptr) {
      problems[i] = "the search found no printer of this name";
    } else if (match->value != values) {
      problems[i] = "several printers have this name: " + values;
    } else {
      printer = {match->kind, match->value, match->name, printer.where};
    }
  }
}

std::vector<std::string> MergeDuplicates(std::vector<tagListedPrinter>& printers,
                                         std::vector<std::string>& problems) {
  std::vector<std::string> remarks;
  std::map<std::string, std::string> seen;
  std::size_t kept = 0;
  for (std::size_t i = 0; i < printers.size(); ++i) {
    std::string key = printers[i].kind + "=" + UpperAscii(printers[i].value);
    // "LPT1:" is LPT1, "host." is host.
    key.resize(key.find_last_not_of(":.") + 1);
    const auto [earlier, is_new] = seen.emplace(std::move(key), printers[i].where);
    if (!is_new) {
      remarks.push_back(LabelOf(printers[i]) + " is named twice, in " + earlier->second + " and " +
                        printers[i].where + ": it is taken once");
      continue;
    }
    std::swap(printers[kept], printers[i]);
    std::swap(problems[kept], problems[i]);
    ++kept;
  }
  printers.resize(kept);
  problems.resize(kept);
  return remarks;
}

}  // namespace tvmgr

#include "batch/file_pattern.h"

#include <algorithm>
#include <map>

#include "names/ascii_text.h"
#include "names/host_name.h"
#include "output/command_error.h"

namespace tvmgr {
namespace {

std::string MakeFileName(std::string_view text) {
  std::string name(text);
  for (char& c : name) {
    if (static_cast<unsigned char>(c) < 0x20 ||
        std::string_view("<>:\"/\\|?*").find(c) != std::string_view::npos) {
      c = '_';
    }
  }
  return name;
}

// "COM1.bak" would be the port, in whatever folder.
std::string AvoidDevices(std::string path) {
  const std::size_t separator = path.find_last_of("/\\");
  const std::size_t name = separator == std::string::npos ? 0 : separator + 1;
  const std::size_t dot = std::min(path.find('.', name), path.size());
  const std::string stem = path.substr(name, dot - name);
  if (!stem.empty() && !IsHostFileName(stem) && IsHostFileName("_" + stem)) {
    path.insert(name, "_");
  }
  return path;
}

/** The same text for names of one file. */
std::string KeyOf(std::string path) {
  path = UpperAscii(path);
  std::replace(path.begin(), path.end(), '/', '\\');
  path.resize(path.find_last_not_of(" .") + 1);
  return path;
}

class CPattern {
 public:
  CPattern(std::string_view pattern, const std::string& option) : pattern_(pattern), option_(option) {}

  std::string Expand(const std::map<std::string, std::string, std::less<>>& words) const {
    std::string path;
    for (std::size_t at = 0; at < pattern_.size(); ++at) {
      const std::string_view rest = pattern_.substr(at);
      if (rest.starts_with("{{") || rest.starts_with("}}")) {
        path += rest.front();
        ++at;
      } else if (rest.front() == '{') {
        const std::size_t end = rest.find('}');
        const auto word = end == std::string_view::npos ? words.end() : words.find(rest.substr(1, end - 1));
        if (word == words.end()) {
          throw CUsageError(option_ + ": in \"" + std::string(pattern_) +
                            "\" braces hold printer, name, number, date or time; {{ is a brace");
        }
        path += word->second;
        at += end;
      } else {
        path += rest.front();
      }
    }
    return AvoidDevices(std::move(path));
  }

 private:
  std::string_view pattern_;
  const std::string& option_;
};

}  // namespace

std::vector<std::string> ExpandPattern(std::string_view pattern, const std::string& option,
                                       const std::vector<tagListedPrinter>& printers, const tagRunTime& now) {
  std::vector<std::string> paths;
  std::map<std::string, std::string> owners;
  for (const tagListedPrinter& printer : printers) {
    paths.push_back(CPattern(pattern, option)
                        .Expand({{"printer", MakeFileName(printer.value)},
                                 {"name", MakeFileName(printer.name.empty() ? printer.value : printer.name)},
                                 {"number", std::to_string(paths.size() + 1)},
                                 {"date", now.date},
                                 {"time", now.time}}));
    const auto [owner, is_new] = owners.emplace(KeyOf(paths.back()), LabelOf(printer));
    if (!is_new) {
      throw CUsageError(option + ": " + owner->second + " and " + LabelOf(printer) + " would both get \"" +
                        paths.back() + "\": put {printer} or {number} into the name");
    }
  }
  return paths;
}

}  // namespace tvmgr

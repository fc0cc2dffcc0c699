#include "backup_file/backup_parser.h"

#include <algorithm>
#include <set>

#include "backup_file/settings_order.h"
#include "backup_file/stored_download.h"

namespace tvmgr {
namespace {

constexpr std::string_view kFirstLine = "^FXLX-R4100SeriesTavira^FS\r\n";
constexpr std::string_view kCommentHead = "^FX";
constexpr std::string_view kCommentEnd = "^FS\r\n";
constexpr std::string_view kSeparatorLine = "^FX^FS\r\n";
constexpr std::string_view kSetHead = "^XA^S(";
constexpr std::string_view kCommandEnd = "^XZ\r\n";
constexpr std::string_view kSaveLine = "^XA^JUS^XZ\r\n";
constexpr std::string_view kAttributeHead = "^XA^F(AE:";
constexpr std::string_view kTrailer = "^XA^H(E^XZ\r\n";
constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kAllSections = "SITFBCP";
constexpr std::string_view kPrefixHead = "\x02";
constexpr std::size_t kKeySize = 5;
// What begins a command, whatever the prefix characters of the printer are, and what ends an answer.
constexpr std::string_view kNeverInValues = "^~\x1E\x10\x03";
// A file made of nothing but damage must not need many times its size in memory.
constexpr std::size_t kMaxProblems = 50;
constexpr std::size_t kMaxSettings = 255;
constexpr std::size_t kLongestName = 12;
constexpr std::size_t kLongestBaseName = 8;

bool IsKeyCharacter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool IsKey(std::string_view text) {
  return text.size() == kKeySize && std::all_of(text.begin(), text.begin() + 3, IsKeyCharacter) &&
         text[3] == ',' && IsKeyCharacter(text[4]);
}

/** A name as the printer lists it: up to 8 characters, a dot, up to 3 more. */
bool IsFileName(std::string_view name) {
  const std::size_t dot = name.find('.');
  return dot != std::string_view::npos && dot > 0 && dot <= kLongestBaseName && dot + 1 < name.size() &&
         name.size() <= kLongestName && name.find('.', dot + 1) == std::string_view::npos &&
         std::none_of(name.begin(), name.end(), [](char c) {
           return static_cast<unsigned char>(c) <= 0x20 || c == 0x7F ||
                  std::string_view("^~,:*?").find(c) != std::string_view::npos;
         });
}

/** "^XA^F(AE:NAME,Y^XZ" and its line end. */
struct tagAttributeLine {
  std::string_view name;
  bool is_set = false;
  std::size_t end = 0; /**< behind the line end */
};

/** Where the data of a file ends and what follows it. */
struct tagFileEnd {
  std::size_t data_end = 0;
  std::size_t next = 0;
  bool is_closed = false; /**< an attribute command with the same name follows the data */
  bool is_protected = false;
};

class CBackupParser {
 public:
  explicit CBackupParser(std::string_view bytes) : bytes_(bytes) {}

  tagBackupContents Run() {
    contents_.is_backup = Take(kFirstLine);
    if (!contents_.is_backup) {
      AddProblem("it does not begin as a backup does: this is no backup file");
    } else if (ParseTimeStamp() && ParseSections()) {
      ParseBlocks();
    }
    return std::move(contents_);
  }

 private:
  std::string_view Rest() const { return bytes_.substr(position_); }

  bool Take(std::string_view text) {
    const bool is_there = Rest().starts_with(text);
    position_ += is_there ? text.size() : 0;
    return is_there;
  }

  void AddProblemAt(std::size_t offset, std::string_view subject, std::string_view text,
                    bool is_gap = false) {
    contents_.gap_count += is_gap ? 1U : 0U;
    if (++contents_.problem_count <= kMaxProblems) {
      contents_.problems.push_back({offset, std::string(subject), std::string(text), is_gap});
    }
  }
  void AddGapAt(std::size_t offset, std::string_view subject, std::string_view text) {
    AddProblemAt(offset, subject, text, true);
  }
  void AddProblem(std::string_view text) { AddProblemAt(position_, {}, text); }

  // The text of a comment line of the header, which is short.
  std::optional<std::string_view> TakeComment() {
    constexpr std::size_t kLongestComment = 64;
    const std::string_view line = Rest().substr(0, kLongestComment);
    const std::size_t end = line.find(kCommentEnd);
    if (!line.starts_with(kCommentHead) || end == std::string_view::npos) {
      AddProblem("the header is damaged or cut off");
      return std::nullopt;
    }
    position_ += end + kCommentEnd.size();
    return line.substr(kCommentHead.size(), end - kCommentHead.size());
  }

  bool ParseTimeStamp() {
    const std::size_t begin = position_;
    const std::optional<std::string_view> text = TakeComment();
    if (text && ReadableTime(*text).empty()) {
      AddProblemAt(begin, {}, "the time stamp in the header is none");
    } else if (text) {
      contents_.time_stamp = *text;
    }
    return text.has_value();
  }

  bool ParseSections() {
    const std::size_t begin = position_;
    const std::optional<std::string_view> text = TakeComment();
    std::size_t next = 0;
    for (std::size_t i = 0; text && i < text->size() && next != std::string_view::npos; ++i) {
      const std::size_t place = kAllSections.find((*text)[i], next);
      next = place == std::string_view::npos ? place : place + 1;
    }
    if (text && (text->empty() || next == std::string_view::npos)) {
      AddProblemAt(begin, {}, "the section letters in the header are none");
    } else if (text) {
      contents_.sections = *text;
    }
    return text.has_value();
  }

  void ParseBlocks() {
    while (!Rest().starts_with(kTrailer) && !Rest().empty()) {
      if (Take(kSeparatorLine)) {
        ParseBlock();
      } else {
        AddProblem("something other than a block begins here");
        SkipToNextBlock();
      }
    }
    if (!Take(kTrailer)) {
      AddProblem("the trailer is missing: the backup was cut off");
    } else if (!Rest().empty()) {
      AddProblem("something follows the trailer");
    }
    if (has_settings_ != (contents_.sections.find('S') != std::string::npos)) {
      AddProblem(has_settings_ ? "there are settings, but the header does not name them"
                               : "the settings that the header names are missing");
    }
  }

  void ParseBlock() {
    const bool is_settings =
        Rest().starts_with(kSetHead) || Rest().starts_with(kPrefixHead) || Rest().starts_with(kSaveLine);
    if (is_settings && !has_settings_) {
      if (!contents_.files.empty()) {
        AddProblem("the settings stand behind a file");
      }
      has_settings_ = true;
      ParseSettings();
    } else if (Rest().starts_with(kAttributeHead)) {
      ParseFile();
    } else if (Rest().starts_with(kSeparatorLine) || Rest().starts_with(kTrailer)) {
      AddGapAt(position_, {}, "a stored file is missing: the printer sent nothing for it");
    } else if (!Rest().empty()) {
      AddProblem("a block that holds neither settings nor a file");
      SkipToNextBlock();
    }
  }

  void SkipToNextBlock() {
    if (Rest().starts_with(kSeparatorLine)) {
      return;
    }
    constexpr std::string_view kNextBlock = "\r\n^FX^FS\r\n";
    const std::size_t found = bytes_.find(kNextBlock, position_);
    position_ = found == std::string_view::npos ? LastTrailer(position_) : found + kLineEnd.size();
  }

  // The trailer that ends the file, unless it begins before `from`; the end of the file when there is none.
  std::size_t LastTrailer(std::size_t from) const {
    const bool is_there = bytes_.size() >= from + kTrailer.size() && bytes_.ends_with(kTrailer);
    return bytes_.size() - (is_there ? kTrailer.size() : 0);
  }

  void ParseSettings() {
    const std::size_t begin = position_;
    while (Rest().starts_with(kSetHead)) {
      if (contents_.settings.size() == kMaxSettings) {
        AddProblem("more settings than any printer has");
        return SkipToNextBlock();
      }
      if (!TakeSetting()) {
        AddProblem("a setting is damaged or cut off");
        return SkipToNextBlock();
      }
    }
    if (const std::string missing = order_.Missing(); !missing.empty()) {
      AddProblemAt(begin, {}, "settings are missing: " + missing);
    }
    if (const std::string empty = order_.WithoutValue(); !empty.empty()) {
      AddGapAt(begin, {}, "settings without a value in this backup: " + empty);
    }
    if (!Rest().starts_with(kPrefixHead)) {
      AddGapAt(position_, {}, "the prefix characters are missing");
    } else if (!TakePrefix()) {
      AddProblem("the change of the prefix characters is damaged or cut off");
      return SkipToNextBlock();
    }
    if (!Take(kSaveLine)) {
      AddProblem("the settings are cut off: the command that saves them is missing");
      SkipToNextBlock();
    }
  }

  // "^XA^S(CLM,P,12^XZ". A value has no end of its own, so whatever begins a command ends it.
  bool TakeSetting() {
    const std::size_t begin = position_;
    const std::string_view line = Rest().substr(kSetHead.size());
    const std::string_view key = line.substr(0, kKeySize);
    if (!IsKey(key) || !line.substr(kKeySize).starts_with(',')) {
      return false;
    }
    const std::string_view value = line.substr(kKeySize + 1);
    std::size_t size = std::min(value.find_first_of(kNeverInValues), value.size());
    if (!value.substr(size).starts_with(kCommandEnd)) {
      size = value.find(kCommandEnd);
      if (size == std::string_view::npos) {
        return false;
      }
      AddProblemAt(begin, key,
                   "its value holds a command or an end mark: a restore would not write it as it stands");
    }
    contents_.settings.push_back({std::string(key), std::string(value.substr(0, size))});
    position_ = begin + kSetHead.size() + kKeySize + 1 + size + kCommandEnd.size();
    const std::string_view problem = order_.Take(key, size != 0);
    if (!problem.empty()) {
      AddProblemAt(begin, key, problem);
    }
    return true;
  }

  bool TakePrefix() {
    // Three commands of a name of two letters and a raw byte each, in a frame.
    constexpr std::string_view kShape =
        "\x02\x1E"
        "CT?\x1E"
        "CC?\x1E"
        "CD?\x03";
    const std::string_view text = Rest().substr(0, kShape.size());
    const bool fits = std::equal(kShape.begin(), kShape.end(), text.begin(), text.end(),
                                 [](char shape, char c) { return shape == '?' || shape == c; });
    if (fits) {
      const tagBackupPrefix prefix{text[4], text[8], text[12]};
      contents_.prefix = prefix;
      position_ += kShape.size();
      if (prefix.control == prefix.format || prefix.format == prefix.delimiter ||
          prefix.control == prefix.delimiter || prefix.control == 0 || prefix.format == 0 ||
          prefix.delimiter == 0) {
        AddProblem("the prefix characters are not three different ones");
      }
    }
    return fits;
  }

  std::optional<tagAttributeLine> ReadAttributeLine(std::size_t at) const {
    if (!bytes_.substr(at).starts_with(kAttributeHead)) {
      return std::nullopt;
    }
    at += kAttributeHead.size();
    const std::string_view text = bytes_.substr(at, kLongestName + kCommandEnd.size() + 2);
    const std::size_t comma = text.find(',');
    if (comma == std::string_view::npos || comma == 0) {
      return std::nullopt;
    }
    const std::string_view name = text.substr(0, comma);
    const std::string_view letter = text.substr(comma + 1, 1);
    if ((letter != "Y" && letter != "N") || !text.substr(comma + 2).starts_with(kCommandEnd) ||
        !IsFileName(name)) {
      return std::nullopt;
    }
    return tagAttributeLine{name, letter == "Y", at + comma + 2 + kCommandEnd.size()};
  }

  void ParseFile() {
    const std::size_t begin = position_;
    const std::optional<tagAttributeLine> opening = ReadAttributeLine(begin);
    if (!opening || opening->is_set) {
      AddProblem("the attribute command in front of a file is damaged or cut off");
      return SkipToNextBlock();
    }
    const tagStoredDownload download = ReadStoredDownload(opening->name, bytes_.substr(opening->end));
    std::string_view problem = download.problem;
    std::optional<tagFileEnd> end;
    if (problem.empty()) {
      end = EndBehind(opening->name, opening->end + download.size);
      problem = end ? "" : "its data is not followed by the attribute command behind it";
    }
    if (!end) {
      end = FindFileEnd(opening->name, opening->end);
      problem = end->is_closed ? problem : "it is cut off: the attribute command behind it is missing";
    }
    position_ = end->next;
    contents_.files.push_back(
        {opening->name, bytes_.substr(opening->end, end->data_end - opening->end), end->is_protected});
    JudgeFile(begin, opening->name);
    if (!problem.empty()) {
      AddProblemAt(begin, opening->name, problem);
    }
  }

  void JudgeFile(std::size_t begin, std::string_view name) {
    const tagKindOfFile kind = KindOfBackupFile(name);
    if (kind.section == 0 || contents_.sections.find(kind.section) == std::string::npos) {
      AddProblemAt(begin, name, "it belongs to no section that the header names");
    }
    if (kind.place < last_kind_) {
      AddProblemAt(begin, name, "it stands behind files that follow it in a backup");
    }
    last_kind_ = std::max(last_kind_, kind.place);
    if (!names_.insert(name).second) {
      AddProblemAt(begin, name, "it stands there more than once");
    }
  }

  // The attribute command with its line end in front, which follows a file's data.
  std::optional<tagFileEnd> EndBehind(std::string_view name, std::size_t at) const {
    const std::optional<tagAttributeLine> line =
        bytes_.substr(at).starts_with(kLineEnd) ? ReadAttributeLine(at + kLineEnd.size()) : std::nullopt;
    return line && line->name == name ? std::optional(tagFileEnd{at, line->end, true, line->is_set})
                                      : std::nullopt;
  }

  // The end of damaged data, which may hold what looks like it. It is taken for one where a block or the
  // trailer follows; elsewhere only when there is no better one.
  tagFileEnd FindFileEnd(std::string_view name, std::size_t begin) const {
    constexpr std::string_view kNextAttribute = "\r\n^XA^F(AE:";
    std::optional<tagFileEnd> doubtful;
    // Data of no bytes has its line end all the same.
    for (std::size_t at = bytes_.find(kNextAttribute, begin); at != std::string_view::npos;
         at = bytes_.find(kNextAttribute, at + kLineEnd.size())) {
      const std::optional<tagAttributeLine> line = ReadAttributeLine(at + kLineEnd.size());
      if (line && !line->is_set && IsBehindSeparator(begin, at)) {
        const std::size_t separator = at + kLineEnd.size() - kSeparatorLine.size();
        return doubtful.value_or(tagFileEnd{separator, separator, false, false});
      }
      if (line && line->name == name) {
        const tagFileEnd end{at, line->end, true, line->is_set};
        if (IsEndOfBlock(line->end)) {
          return end;
        }
        doubtful = doubtful.value_or(end);
      }
    }
    const std::size_t last = LastTrailer(begin);
    return doubtful.value_or(tagFileEnd{last, last, false, false});
  }

  bool IsBehindSeparator(std::size_t data_begin, std::size_t line_end) const {
    const std::size_t size = kSeparatorLine.size() - kLineEnd.size();
    if (line_end - data_begin < size || !bytes_.substr(line_end - size).starts_with(kSeparatorLine)) {
      return false;
    }
    const std::size_t separator = line_end - size;
    return separator == data_begin || (separator - data_begin >= kLineEnd.size() &&
                                       bytes_.substr(separator - kLineEnd.size()).starts_with(kLineEnd));
  }

  bool IsEndOfBlock(std::size_t at) const {
    const std::string_view rest = bytes_.substr(at);
    return rest.empty() || rest.starts_with(kSeparatorLine) || rest.starts_with(kTrailer);
  }

  std::string_view bytes_;
  std::size_t position_ = 0;
  bool has_settings_ = false;
  CSettingsOrder order_;
  int last_kind_ = 0;
  std::set<std::string_view> names_;
  tagBackupContents contents_;
};

}  // namespace

tagBackupContents ParseBackup(std::string_view bytes) {
  return CBackupParser(bytes).Run();
}

}  // namespace tvmgr

#include "storage/file_registration.h"

#include <algorithm>

#include "command/fixed_commands.h"
#include "command/text.h"

namespace tavira {
namespace {

constexpr std::string_view kObjectCommand = "~DY";
constexpr std::string_view kFormatCommand = "^DF";

constexpr std::uint64_t kBytesPerExtraMinute = std::uint64_t{20} << 20;
constexpr std::uint64_t kMsPerMinute = 60000;
constexpr std::uint64_t kLongestTimeoutMs = 50 * kMsPerMinute;

std::string_view Trim(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(kWhitespace);
  if (begin == std::string_view::npos) {
    return {};
  }
  return text.substr(begin, text.find_last_not_of(kWhitespace) - begin + 1);
}

std::string_view WithoutDevice(std::string_view name) {
  return name.size() >= 2 && name[1] == ':' ? name.substr(2) : name;
}

std::string_view ExtensionOf(char letter) {
  switch (FoldCase(letter)) {
    case 'P':
      return ".PNG";
    case 'G':
      return ".GRF";
    case 'T':
      return ".TTF";
    case 'E':
      return ".TTE";
    default:
      return {};
  }
}

/** The field that begins at the front of `text`, cut off together with the "," behind it. */
std::string_view TakeField(std::string_view& text, const CLeadBytes& leads) {
  const std::size_t comma = leads.Find(text, ",");
  const std::string_view field = text.substr(0, comma);
  text.remove_prefix(comma == std::string_view::npos ? text.size() : comma + 1);
  return Trim(field);
}

std::uint32_t ChooseTimeout(const CPrinterPort& port, std::uint64_t size) {
  if (port.Link().ExchangeDescription().port_type != kPortTypeNetwork) {
    return kDefaultTimeoutMs;
  }
  const std::uint64_t begun = (size + kBytesPerExtraMinute - 1) / kBytesPerExtraMinute;
  return static_cast<std::uint32_t>(std::min(kDefaultTimeoutMs + begun * kMsPerMinute, kLongestTimeoutMs));
}

/** The lists that show whether a request took effect; empty for a kind that registers nothing. */
std::vector<std::int32_t> ConfirmingLists(std::uint32_t kind, std::string_view name) {
  switch (kind) {
    case TVMGR_REQUEST_REGISTER_GRAPHIC:
      // A GRF graphic never shows among the PNG ones.
      return {name.size() > 4 && EqualsIgnoringCase(name.substr(name.size() - 4), ".GRF") ? TVMGR_LIST_GRF
                                                                                          : TVMGR_LIST_PNG};
    case TVMGR_REQUEST_REGISTER_FORMAT:
      return {TVMGR_LIST_FMT, TVMGR_LIST_ZPL};
    case TVMGR_REQUEST_REGISTER_FONT:
      return {TVMGR_LIST_TTF, TVMGR_LIST_TTE};
    case TVMGR_REQUEST_BACKGROUND:
      return {TVMGR_LIST_BACKGROUND};
    default:
      return {};
  }
}

std::int32_t ConfirmPresence(CPrinterPort& port, CRegisteredFiles& files,
                             const std::vector<std::int32_t>& lists, std::string_view name,
                             bool search_decides) {
  for (int pass = 0; pass < kConfirmationPasses; ++pass) {
    port.Clock().Sleep(kConfirmationIntervalMs);
    bool listed = false;
    for (const std::int32_t list : lists) {
      const std::int32_t result = files.Refresh(list);
      if (result != TVMGR_OK) {
        return result;
      }
      listed = listed || files.IsListed({list}, name);
    }
    if (listed || !search_decides) {
      return TVMGR_OK;
    }
  }
  return TVMGR_NOT_CONFIRMED;
}

}  // namespace

std::string FindDownloadName(std::string_view command, const CLeadBytes& leads) {
  const std::size_t object = leads.Find(command, kObjectCommand);
  const std::size_t format = leads.Find(command, kFormatCommand);
  if (object < format) {
    std::string_view header = command.substr(object + kObjectCommand.size());
    std::string name(WithoutDevice(TakeField(header, leads)));
    TakeField(header, leads);  // the data format
    const std::string_view extension = TakeField(header, leads);
    if (!name.empty() && name.find('.') == std::string::npos && extension.size() == 1) {
      name.append(ExtensionOf(extension.front()));
    }
    return name;
  }
  if (format == std::string_view::npos) {
    return {};
  }
  const std::string_view field = command.substr(format + kFormatCommand.size());
  return std::string(WithoutDevice(Trim(field.substr(0, leads.FindFirstOf(field, ",^")))));
}

std::int32_t RegisterStoredFile(CPrinterPort& port, CRegisteredFiles& files, ITextCodec& text,
                                const tagFileRequest& request) {
  if (!port.HasLink()) {
    return TVMGR_NOT_INITIALIZED;
  }
  const std::string name = FindDownloadName(request.primary, text.LeadBytes());
  const std::vector<std::int32_t> lists = ConfirmingLists(request.kind, name);
  if (lists.empty() || name.empty()) {
    return TVMGR_BAD_ARGUMENT;
  }
  const bool is_format = request.kind == TVMGR_REQUEST_REGISTER_FORMAT;
  std::string& commands = port.NewCommand();
  commands.append(request.primary);
  if (is_format) {
    commands.append(request.secondary);
  }
  const std::uint32_t timeout_ms = ChooseTimeout(port, commands.size());
  commands.append(kClosingCommand);
  const std::int32_t result = port.Exchange(timeout_ms);
  return result == TVMGR_OK ? ConfirmPresence(port, files, lists, name, !is_format) : result;
}

}  // namespace tavira

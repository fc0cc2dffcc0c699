#include "storage/registered_files.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

#include "command/fixed_commands.h"
#include "platform/fail_fast.h"
#include "storage/directory_parser.h"
#include "storage/file_request.h"

namespace tavira {
namespace {

struct tagListCommand {
  std::int32_t list;
  std::string_view command;
};

/** In the order in which all lists are loaded. */
constexpr std::array<tagListCommand, 8> kListCommands{{{TVMGR_LIST_PNG, "^HWE:*.PNG,c"},
                                                       {TVMGR_LIST_TTF, "^HWE:*.TTF,c"},
                                                       {TVMGR_LIST_TTE, "^HWE:*.TTE,c"},
                                                       {TVMGR_LIST_FMT, "^HWE:*.FMT,c"},
                                                       {TVMGR_LIST_ZPL, "^HWE:*.ZPL,c"},
                                                       {TVMGR_LIST_BACKGROUND, "^HWE:KORVDEF.BGD"},
                                                       {TVMGR_LIST_CNV, "^HWZ:*.CNV,c"},
                                                       {TVMGR_LIST_GRF, "^HWE:*.GRF,c"}}};

constexpr std::size_t kNoList = kListCommands.size();

std::size_t IndexOf(std::int32_t list) {
  const auto found = std::find_if(kListCommands.begin(), kListCommands.end(),
                                  [list](const tagListCommand& candidate) { return candidate.list == list; });
  return static_cast<std::size_t>(found - kListCommands.begin());
}

/** `name` up to its first blank or zero byte. Cut as wide text: a blank byte may be half of a character. */
WideString CutName(WideString name) {
  constexpr TvmgrChar kEnds[] = {' ', 0};
  name.resize(std::min(name.find_first_of(kEnds, 0, std::size(kEnds)), name.size()));
  return name;
}

}  // namespace

std::int32_t CRegisteredFiles::Refresh(std::int32_t list) {
  if (!port_.HasLink()) {
    return TVMGR_NOT_INITIALIZED;
  }
  const std::size_t index = IndexOf(list);
  if (index == kNoList) {
    return TVMGR_BAD_ARGUMENT;
  }
  port_.NewCommand().append(kOpenFormat).append(kListCommands[index].command).append(kCloseFormat);
  const std::int32_t result = port_.Exchange();
  if (result != TVMGR_OK) {
    return result;
  }
  std::vector<tagDataFile> files;
  for (const tagDirectoryEntry& entry : ParseDirectory(port_.Answer())) {
    files.push_back(
        {CutName(text_.FromAnsi(entry.name_field)), static_cast<std::uint8_t>(entry.p_mark ? 1 : 0)});
  }
  files_[index] = std::move(files);
  return TVMGR_OK;
}

std::int32_t CRegisteredFiles::RefreshAll() {
  for (const tagListCommand& entry : kListCommands) {
    const std::int32_t result = Refresh(entry.list);
    if (result != TVMGR_OK) {
      return result;
    }
  }
  return TVMGR_OK;
}

bool CRegisteredFiles::IsListed(std::initializer_list<std::int32_t> lists, WideView name) const {
  return std::any_of(lists.begin(), lists.end(), [this, name](std::int32_t list) {
    const std::vector<tagDataFile>* files = Find(list);
    return files != nullptr && std::any_of(files->begin(), files->end(), [name](const tagDataFile& file) {
             return EqualsIgnoringCase(file.name, name);
           });
  });
}

bool CRegisteredFiles::IsListed(std::initializer_list<std::int32_t> lists, std::string_view ansi_name) const {
  return IsListed(lists, text_.FromAnsi(UpToTerminator(ansi_name)));
}

const std::vector<tagDataFile>* CRegisteredFiles::Find(std::int32_t list) const {
  const std::size_t index = IndexOf(list);
  return index == kNoList ? nullptr : &files_[index];
}

std::int32_t CRegisteredFiles::GetCount(std::int32_t list, std::uint32_t* count) const {
  const std::vector<tagDataFile>* files = Find(list);
  if (count == nullptr || files == nullptr) {
    return TVMGR_BAD_ARGUMENT;
  }
  *count = static_cast<std::uint32_t>(files->size());
  return TVMGR_OK;
}

std::int32_t CRegisteredFiles::GetName(std::int32_t list, std::int32_t index, TvmgrChar* name,
                                       std::uint32_t* length) const {
  const std::vector<tagDataFile>* files = Find(list);
  if (length == nullptr || files == nullptr || index >= static_cast<std::int64_t>(files->size())) {
    return TVMGR_BAD_ARGUMENT;
  }
  if (index < 0) {
    throw std::invalid_argument("negative file index");
  }
  const WideString& file_name = (*files)[static_cast<std::size_t>(index)].name;
  if (name == nullptr) {
    *length = static_cast<std::uint32_t>(file_name.size());
    return TVMGR_OK;
  }
  if (*length <= file_name.size()) {
    FailFast();  // a cut name would name another file
  }
  *std::copy(file_name.begin(), file_name.end(), name) = 0;
  return TVMGR_OK;
}

}  // namespace tavira

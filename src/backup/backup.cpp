#include "backup/backup.h"

#include <array>
#include <new>

#include "backup/backup_format.h"

namespace tavira {
namespace {

constexpr std::uint8_t kReload = 1;
constexpr std::uint8_t kSet = 1;

}  // namespace

void CBackup::SetInfo(const TvmgrBackupInfo* info) {
  if (info != nullptr) {
    info_ = {WideString(ViewHostText(info->path)),
             info->settings,
             info->section_p,
             info->section_i,
             info->section_t,
             info->section_f,
             info->section_c,
             info->section_b};
  }
}

std::int32_t CBackup::Run(std::uint8_t reload) {
  if (!port_.HasLink()) {
    return TVMGR_NOT_INITIALIZED;
  }
  if (info_.path.empty()) {
    return TVMGR_BAD_ARGUMENT;
  }
  CBackupFile file(file_system_, info_.path);  // before the load, which takes its time
  if (reload == kReload) {
    const std::int32_t loaded = full_load_.LoadEverything();
    if (loaded != TVMGR_OK) {
      return loaded;
    }
  }
  const std::int32_t created = file.Create();
  if (created != TVMGR_OK) {
    return created;
  }
  const std::string letters = SectionLetters();
  if (letters.empty()) {
    return TVMGR_BAD_ARGUMENT;
  }
  std::int32_t result = TVMGR_OUT_OF_MEMORY;
  try {
    result = WriteSections(file, letters);
  } catch (const std::bad_alloc&) {  // the trailer still closes what was written
  }
  const std::int32_t ended = file.AppendTrailer(kBackupTrailer);
  return result != TVMGR_OK ? result : ended;
}

std::string CBackup::SectionLetters() const {
  const std::array<std::pair<std::uint8_t, char>, 7> sections{{{info_.settings, 'S'},
                                                               {info_.section_i, 'I'},
                                                               {info_.section_t, 'T'},
                                                               {info_.section_f, 'F'},
                                                               {info_.section_b, 'B'},
                                                               {info_.section_c, 'C'},
                                                               {info_.section_p, 'P'}}};
  std::string letters;
  for (const auto& [flag, letter] : sections) {
    if (flag == kSet) {
      letters.push_back(letter);
    }
  }
  return letters;
}

std::int32_t CBackup::WriteSections(CBackupFile& file, std::string_view letters) {
  std::int32_t result = file.Append(FormatBackupHeader(clock_.LocalTime(), letters));
  if (result == TVMGR_OK && info_.settings == kSet) {
    result = file.Append(FormatSettingsBlock(store_));
  }
  const std::array<std::pair<std::uint8_t, std::int32_t>, 7> lists{
      {{info_.section_i, TVMGR_LIST_PNG},
       {info_.section_i, TVMGR_LIST_GRF},
       {info_.section_t, TVMGR_LIST_FMT},
       {info_.section_t, TVMGR_LIST_ZPL},
       {info_.section_f, TVMGR_LIST_TTF},
       {info_.section_f, TVMGR_LIST_TTE},
       {info_.section_b, TVMGR_LIST_BACKGROUND}}};
  for (const auto& [flag, list] : lists) {
    if (result == TVMGR_OK && flag == kSet) {
      result = WriteFiles(file, list);
    }
  }
  return result;
}

std::int32_t CBackup::WriteFiles(CBackupFile& file, std::int32_t list) {
  const bool is_format = list == TVMGR_LIST_FMT || list == TVMGR_LIST_ZPL;
  for (const tagDataFile& entry : *files_.Find(list)) {
    if (entry.name.empty()) {
      continue;
    }
    std::int32_t result =
        stored_data_.Load(entry.name.c_str(), is_format ? kFormatMode : kObjectMode, kDefaultTimeoutMs);
    if (result == TVMGR_OK) {
      result = file.Append(
          FormatFileBlock(text_.ToAnsi(entry.name), stored_data_.RawAnswer(), entry.p_mark == kSet));
    }
    if (result != TVMGR_OK) {
      return result;
    }
  }
  return TVMGR_OK;
}

}  // namespace tavira

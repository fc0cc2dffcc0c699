#pragma once

#include <cstdint>

#include "backup/backup_file.h"
#include "platform/platform.h"
#include "settings/full_load.h"
#include "settings/setting_store.h"
#include "storage/registered_files.h"
#include "storage/stored_data.h"

namespace tavira {

/** What a backup is to hold and where it goes; a flag counts only when it is 1. */
struct tagBackupInfo {
  WideString path;
  std::uint8_t settings = 0;
  std::uint8_t section_p = 0;
  std::uint8_t section_i = 0;
  std::uint8_t section_t = 0;
  std::uint8_t section_f = 0;
  std::uint8_t section_c = 0;
  std::uint8_t section_b = 0;
};

/** Writes the printer's settings and stored files to one file on the host. */
class CBackup {
 public:
  CBackup(CPrinterPort& port, const CSettingStore& store, CFullLoad& full_load, const CRegisteredFiles& files,
          CStoredData& stored_data, IPlatform& platform)
      : port_(port),
        store_(store),
        full_load_(full_load),
        files_(files),
        stored_data_(stored_data),
        clock_(platform.Clock()),
        text_(platform.Text()),
        file_system_(platform.Files()) {}

  /** Copies what the next backup is to hold; null changes nothing. Throws std::bad_alloc. */
  void SetInfo(const TvmgrBackupInfo* info);

  /**
   * Writes the backup. `reload` 1 loads everything from the printer first; every other value takes what is
   * loaded. 0, −2 without a link, −7 no path or no section, −63, 4, or the code of the load or fetch that
   * failed. A failure after the header leaves the finished pieces, closed by the trailer.
   */
  std::int32_t Run(std::uint8_t reload);

 private:
  std::string SectionLetters() const;
  std::int32_t WriteSections(CBackupFile& file, std::string_view letters);
  std::int32_t WriteFiles(CBackupFile& file, std::int32_t list);

  CPrinterPort& port_;
  const CSettingStore& store_;
  CFullLoad& full_load_;
  const CRegisteredFiles& files_;
  CStoredData& stored_data_;
  IClock& clock_;
  ITextCodec& text_;
  IFileSystem& file_system_;
  tagBackupInfo info_;
};

}  // namespace tavira

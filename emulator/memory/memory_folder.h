#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <utility>

#include "emulator/printer/printer.h"

namespace lxemu {

/// Keeps what a printer keeps without power in a folder: `settings.txt` (saved settings, and the prefix
/// characters in force), the folders `E` and `Z` with one host file for each file, `attributes.txt` (the
/// protected files). A file is written aside and then renamed, so that a reader never finds half of it, and
/// aside under a name of this object's own: several processes may use one folder, one at a time writes
/// (CFolderLock). Of the settings and the protection each writes what it has changed, and leaves the others as they
/// stand in the file.
class CMemoryFolder {
 public:
  explicit CMemoryFolder(std::filesystem::path folder);

  /// Makes the folder and tries it out. Empty, or what is wrong with it.
  std::string Prepare() const;

  /// Puts what the folder holds into a printer as it left the factory. A missing folder holds nothing.
  void Load(CPrinter& printer);

  /// Writes what became different since the last Load or Save. False when something could not be written; the
  /// next call tries again.
  bool Save(CPrinter& printer);

 private:
  void LoadSettings(CPrinter& printer);
  void LoadFiles(CPrinter& printer, char device);
  void LoadAttributes(CPrinter& printer);
  /// Writes the file, or removes it from the folder when there is none.
  bool SaveFile(char device, const std::string& name, const tagStoredFile* file) const;
  bool SaveFiles(CPrinter& printer);
  /// Writes the text merged with what another process has written since `last_text`, when it is another one.
  bool SaveText(const std::string& text, std::string_view file, std::string& last_text) const;
  bool Write(const std::filesystem::path& path, std::string_view bytes) const;

  std::filesystem::path folder_;
  std::string temporary_name_;
  std::set<std::pair<char, std::string>> unsaved_files_;
  std::string last_settings_;
  std::string last_attributes_;
};

/// The bytes of a host file; none when it cannot be read.
std::optional<std::string> ReadHostFile(const std::filesystem::path& path);

}  // namespace lxemu

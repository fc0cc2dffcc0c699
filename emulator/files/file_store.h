#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "emulator/files/file_name.h"

namespace lxemu {

/// One file in printer memory.
struct tagStoredFile {
  tagFileName name;  ///< as it was written when the file was made
  std::string bytes;
  bool is_protected = false;
};

/// The files on the memory devices, ordered by device and name. Names differing in case only are one file.
class CFileStore {
 public:
  /// What became different since the changes were last taken: files to write anew or remove, by device and
  /// name.
  struct tagChanges {
    std::set<std::pair<char, std::string>> files;
    bool attributes = false;
  };

  const tagStoredFile* Find(const tagFileName& name) const;
  /// Stores or replaces, keeping the attribute of a replaced file.
  void Put(const tagFileName& name, std::string bytes);
  void SetProtected(const tagFileName& name, bool on);
  /// Removes what matches; protected files stay unless forced. Returns the number of files that stayed.
  std::size_t Remove(char device, std::string_view pattern, bool is_forced = false);
  void EraseDevice(char device) { Remove(device, "*", true); }

  std::vector<const tagStoredFile*> Matching(char device, std::string_view pattern) const;
  std::uint64_t BytesOn(char device) const;  ///< sizes of all files of the device

  tagChanges TakeChanges() { return std::exchange(changes_, {}); }

 private:
  using Key = std::pair<char, std::string>;  // device and folded name

  using Files = std::map<Key, tagStoredFile>;

  static Key KeyOf(const tagFileName& name) { return {name.device, FoldCase(name.name)}; }
  /// The part of the map that can hold matches: one place for a plain name, so that long streams of single
  /// deletes do not walk through all files each time.
  std::pair<Files::const_iterator, Files::const_iterator> Candidates(char device,
                                                                     const std::string& folded_pattern) const;

  Files files_;
  std::map<char, std::uint64_t> bytes_on_;
  tagChanges changes_;
};

}  // namespace lxemu

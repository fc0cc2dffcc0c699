#include "emulator/files/file_store.h"

namespace lxemu {

const tagStoredFile* CFileStore::Find(const tagFileName& name) const {
  const auto found = files_.find(KeyOf(name));
  return found == files_.end() ? nullptr : &found->second;
}

void CFileStore::Put(const tagFileName& name, std::string bytes) {
  const auto [place, is_new] = files_.try_emplace(KeyOf(name), tagStoredFile{name, {}, false});
  std::uint64_t& total = bytes_on_[name.device];
  total = total - place->second.bytes.size() + bytes.size();
  place->second.bytes = std::move(bytes);
  changes_.files.emplace(name.device, place->second.name.name);
}

void CFileStore::SetProtected(const tagFileName& name, bool on) {
  const auto found = files_.find(KeyOf(name));
  if (found != files_.end() && found->second.is_protected != on) {
    found->second.is_protected = on;
    changes_.attributes = true;
  }
}

std::size_t CFileStore::Remove(char device, std::string_view pattern, bool is_forced) {
  const std::string folded = FoldCase(pattern);
  std::size_t kept = 0;
  auto [place, end] = Candidates(device, folded);
  while (place != end) {
    const tagStoredFile& file = place->second;
    if (!MatchesPattern(place->first.second, folded)) {
      ++place;
    } else if (file.is_protected && !is_forced) {
      ++kept;
      ++place;
    } else {
      bytes_on_[device] -= file.bytes.size();
      changes_.files.emplace(device, file.name.name);
      changes_.attributes = changes_.attributes || file.is_protected;
      place = files_.erase(place);
    }
  }
  return kept;
}

std::vector<const tagStoredFile*> CFileStore::Matching(char device, std::string_view pattern) const {
  const std::string folded = FoldCase(pattern);
  std::vector<const tagStoredFile*> matches;
  for (auto [place, end] = Candidates(device, folded); place != end; ++place) {
    if (MatchesPattern(place->first.second, folded)) {
      matches.push_back(&place->second);
    }
  }
  return matches;
}

std::uint64_t CFileStore::BytesOn(char device) const {
  const auto found = bytes_on_.find(device);
  return found == bytes_on_.end() ? 0 : found->second;
}

std::pair<CFileStore::Files::const_iterator, CFileStore::Files::const_iterator> CFileStore::Candidates(
    char device, const std::string& folded_pattern) const {
  if (folded_pattern.find_first_of("*?") == folded_pattern.npos) {
    return files_.equal_range({device, folded_pattern});
  }
  return {files_.lower_bound({device, {}}), files_.lower_bound({static_cast<char>(device + 1), {}})};
}

}  // namespace lxemu

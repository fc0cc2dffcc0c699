#pragma once

#include <windows.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "transcript/port_record.h"

namespace recorder {

/// The port library behind the recorder.
class CRealLibrary {
 public:
  std::int32_t (*initialize)(const tagRawPortRecord*) = nullptr;
  std::int32_t (*terminate)() = nullptr;
  std::int32_t (*send_data)(const std::uint8_t*, std::uint32_t) = nullptr;
  std::int32_t (*receive_data)(std::uint8_t*, std::uint32_t*) = nullptr;
  void* clear_receive_data = nullptr;  // what they take and return is not known
  void* get_port_com_index = nullptr;

  CRealLibrary() = default;
  CRealLibrary(const CRealLibrary&) = delete;
  CRealLibrary& operator=(const CRealLibrary&) = delete;
  ~CRealLibrary();

  /// Loads the file and finds all six; false, and why, when that is not possible. `self` is the recorder's
  /// own module, which is not taken for the library.
  bool Load(const std::filesystem::path& file, HMODULE self);
  bool IsReady() const { return is_ready_; }
  /// A sentence for people: which file, or what is wrong with it.
  const std::string& Description() const { return description_; }

 private:
  bool FindAll();

  HMODULE module_ = nullptr;
  bool is_ready_ = false;
  std::string description_;
};

}  // namespace recorder

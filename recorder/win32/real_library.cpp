#include "win32/real_library.h"

#include <type_traits>
#include <utility>

#include "win32/environment.h"

namespace recorder {

CRealLibrary::~CRealLibrary() {
  if (module_ != nullptr) {
    FreeLibrary(module_);
  }
}

bool CRealLibrary::Load(const std::filesystem::path& file, HMODULE self) {
  const std::string name = Utf8(file.filename().wstring());
  // What it needs may lie beside it, or where the host would have it searched for.
  module_ = LoadLibraryExW(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (module_ == nullptr && GetLastError() == ERROR_MOD_NOT_FOUND) {
    module_ = LoadLibraryW(file.c_str());
  }
  if (module_ == nullptr) {
    description_ = "library " + name + " does not load: Windows error " + std::to_string(GetLastError());
    return false;
  }
  if (module_ == self) {
    FreeLibrary(std::exchange(module_, nullptr));
    description_ = "library " + name + " is the recorder itself";
    return false;
  }
  is_ready_ = FindAll();
  if (is_ready_) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    description_ = "library " + name + (error ? "" : ", " + std::to_string(size) + " bytes");
  }
  return is_ready_;
}

bool CRealLibrary::FindAll() {
  const auto find = [this](auto& entry, const char* name) {
    entry = reinterpret_cast<std::remove_reference_t<decltype(entry)>>(
        reinterpret_cast<void*>(GetProcAddress(module_, name)));
    if (entry == nullptr) {
      description_ = std::string("the library has no ") + name;
    }
    return entry != nullptr;
  };
  return find(initialize, "Initialize") && find(terminate, "Terminate") && find(send_data, "SendData") &&
         find(receive_data, "ReceiveData") && find(clear_receive_data, "ClearReceiveData") &&
         find(get_port_com_index, "GetPortComIndex");
}

}  // namespace recorder

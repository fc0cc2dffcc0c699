#include "win32/transcript_file.h"

#include <cstdio>

#include "win32/environment.h"

namespace recorder {
namespace {

namespace fs = std::filesystem;

constexpr const char* kNamePattern = "Ferrolink-%04d%02d%02d-%02d%02d%02d-%lu";
constexpr const char* kTimePattern = "%04d-%02d-%02dT%02d:%02d:%02dZ";

std::string FormatUtc(const char* pattern) {
  SYSTEMTIME now{};
  GetSystemTime(&now);
  char text[80];
  const int size = std::snprintf(text, sizeof text, pattern, now.wYear, now.wMonth, now.wDay, now.wHour,
                                 now.wMinute, now.wSecond, GetCurrentProcessId());
  return {text, static_cast<std::size_t>(size)};
}

}  // namespace

CTranscriptFile::CTranscriptFile() : chosen_(FullPath(Environment(L"TAVIRA_RECORD_FOLDER"))) {}

std::string UtcNow() {
  return FormatUtc(kTimePattern);
}

CTranscriptFile::~CTranscriptFile() {
  if (file_ != INVALID_HANDLE_VALUE) {
    CloseHandle(file_);
  }
}

bool CTranscriptFile::Append(std::string_view bytes) noexcept {
  if (!was_opened_) {
    was_opened_ = true;
    try {
      Open();
    } catch (...) {
    }
    if (file_ == INVALID_HANDLE_VALUE) {
      OutputDebugStringW(L"The Ferrolink recorder found no place for its transcript.\n");
    }
  }
  DWORD written = 0;
  return file_ != INVALID_HANDLE_VALUE &&
         WriteFile(file_, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
         written == bytes.size();
}

bool CTranscriptFile::CutTo(std::uint64_t size) noexcept {
  LARGE_INTEGER place{};
  place.QuadPart = static_cast<LONGLONG>(size);
  return file_ != INVALID_HANDLE_VALUE && SetFilePointerEx(file_, place, nullptr, FILE_BEGIN) &&
         SetEndOfFile(file_);
}

void CTranscriptFile::Open() {
  if (!chosen_.empty()) {
    std::error_code ignored;
    fs::create_directories(chosen_, ignored);
    OpenIn(chosen_);
    return;
  }
  std::error_code error;
  if (!OpenIn(ModuleFile(nullptr).parent_path()) && !OpenIn(fs::current_path(error))) {
    OpenIn(fs::temp_directory_path(error));
  }
}

bool CTranscriptFile::OpenIn(const fs::path& folder) {
  constexpr int kMostNames = 100;
  const std::string name = FormatUtc(kNamePattern);
  for (int i = 1; i <= kMostNames && file_ == INVALID_HANDLE_VALUE; ++i) {
    const fs::path file = folder / (name + (i == 1 ? "" : "-" + std::to_string(i)) + ".txt");
    // Others may read it meanwhile; child processes do not inherit it.
    file_ = CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, CREATE_NEW,
                        FILE_ATTRIBUTE_NORMAL, nullptr);
    if (GetLastError() != ERROR_FILE_EXISTS) {
      break;
    }
  }
  return file_ != INVALID_HANDLE_VALUE;
}

}  // namespace recorder

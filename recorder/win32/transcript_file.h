#pragma once

#include <windows.h>

#include <filesystem>

#include "transcript/transcript_writer.h"

namespace recorder {

/// A new file for the transcript of this process, made when the first bytes come: Ferrolink-DATE-TIME-PROCESS.txt
/// (UTC) in the folder TAVIRA_RECORD_FOLDER, which is made when it is missing. Without that variable it goes to
/// the folder of the host program, else to the working folder, else to the folder for temporary files. Every
/// line is with the system as soon as it is appended: it outlives the process, however that ends.
class CTranscriptFile : public ITranscriptSink {
 public:
  CTranscriptFile();
  ~CTranscriptFile() override;
  CTranscriptFile(const CTranscriptFile&) = delete;
  CTranscriptFile& operator=(const CTranscriptFile&) = delete;

  bool Append(std::string_view bytes) noexcept override;
  bool CutTo(std::uint64_t size) noexcept override;

 private:
  void Open();
  bool OpenIn(const std::filesystem::path& folder);

  std::filesystem::path chosen_;
  HANDLE file_ = INVALID_HANDLE_VALUE;
  bool was_opened_ = false;  // tried once: a place that is not there is not asked for at every call
};

/// "2026-11-21T11:41:45Z"
std::string UtcNow();

}  // namespace recorder

#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "transcript/transcript_reader.h"

namespace recorder::test {

inline std::string ReadAll(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// A folder of the test's own, for transcripts and whatever else; no variable of the recorder but that folder is set.
class CRecorderTest : public testing::Test {
 protected:
  CRecorderTest()
      : folder_(std::filesystem::temp_directory_path() /
                ("recorder_" + std::to_string(GetCurrentProcessId()))) {
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directories(folder_);
    for (const char* name :
         {"TAVIRA_RECORD_LIBRARY", "TAVIRA_REPLAY", "TAVIRA_REPLAY_ORDER", "TAVIRA_REPLAY_REPORT"}) {
      SetEnvironmentVariableA(name, nullptr);
    }
    SetVariable(L"TAVIRA_RECORD_FOLDER", folder_ / "transcripts");
  }
  ~CRecorderTest() override {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  static void SetVariable(const wchar_t* name, const std::filesystem::path& value) {
    SetEnvironmentVariableW(name, value.c_str());
  }

  /// Where this program and the libraries that it tests with stand.
  static std::filesystem::path Here() {
    std::wstring path(32'768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return std::filesystem::path(path).parent_path();
  }
  static std::filesystem::path Recorder() { return Here() / "Ferrolink.dll"; }
  static std::filesystem::path RealLibrary() { return Here() / "Ferrolink_real.dll"; }

  std::vector<std::filesystem::path> TranscriptFiles() const {
    std::vector<std::filesystem::path> files;
    if (std::filesystem::exists(folder_ / "transcripts")) {
      std::copy(std::filesystem::directory_iterator(folder_ / "transcripts"), {}, std::back_inserter(files));
    }
    std::sort(files.begin(), files.end());
    return files;
  }

  /// The transcript of the one process that recorded; its text goes to `text`.
  tagTranscript Transcript(std::string* text = nullptr) const {
    const std::vector<std::filesystem::path> files = TranscriptFiles();
    EXPECT_EQ(files.size(), 1U);
    const std::string bytes = files.empty() ? "" : ReadAll(files[0]);
    tagTranscript transcript;
    const auto error = ReadTranscript(bytes, transcript);
    EXPECT_FALSE(error) << error->line << ": " << error->reason << "\n" << bytes.substr(0, 4096);
    if (text != nullptr) {
      *text = bytes;
    }
    return transcript;
  }

  std::filesystem::path folder_;
};

}  // namespace recorder::test

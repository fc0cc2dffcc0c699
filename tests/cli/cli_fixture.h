#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "process_runner.h"

/** A printer in software of its own, with a fresh memory folder, for each test. */
class CCliTest : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  /** Runs tvmgr. */
  tagRun Tvmgr(const std::vector<std::string>& arguments, const std::string& input = {}) const;

  /** Runs tvmgr once with each of these, all at the same time: most of a run is waiting. */
  std::vector<tagRun> TvmgrEach(const std::vector<std::vector<std::string>>& arguments) const;

  /** Runs tvmgr with --json; fails the test when it does not end with 0 or its output is no JSON. */
  nlohmann::json Json(std::vector<std::string> arguments) const;

  /** Quirks, faults and factory values of the printer. */
  void WriteIni(const std::string& text) const;

  /** What was exchanged with the printer so far, a line for each exchange. */
  std::string Log() const;
  /** Waits until the log shows the text so many times; at most a minute. */
  void AwaitInLog(const std::string& text, int times = 1) const;

  /** A path in the test's folder; its text is UTF-8. */
  std::filesystem::path HostPath(const std::string& name) const;
  std::string Utf8Path(const std::string& name) const;
  std::string HostFile(const std::string& name, const std::string& bytes) const;

  /** The file as it lies in the printer's memory; empty when it is not there. */
  std::string StoredOnE(const std::string& name) const;
  void StoreOnE(const std::string& name, const std::string& bytes) const;

  std::filesystem::path folder_;
};

/** The folder in which all programs and DLLs of the build stand. */
std::filesystem::path ProgramFolder();

std::string ReadFileBytes(const std::filesystem::path& path);

/** The bytes 0 to 255, over and over. */
std::string AllBytes(std::size_t size);

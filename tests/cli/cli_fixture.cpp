#include "cli_fixture.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <thread>

namespace fs = std::filesystem;

namespace {

void WriteFileBytes(const fs::path& path, const std::string& bytes) {
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << bytes;
}

// For the check against the schema, which is made of all documents together. By the test's name: process ids come again.
void KeepForSchema(const std::string& document) {
  static std::atomic<int> number{0};
  const wchar_t* const folder = _wgetenv(L"TVMGR_TEST_JSON");
  if (folder != nullptr && *folder != 0) {
    const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
    const std::string name =
        std::string(test.test_suite_name()) + "." + test.name() + "." + std::to_string(++number);
    WriteFileBytes(fs::path(folder) / (name + ".json"), document);
  }
}

}  // namespace

fs::path ProgramFolder() {
  std::wstring path(32'768, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return fs::path(path).parent_path();
}

std::string ReadFileBytes(const fs::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::string AllBytes(std::size_t size) {
  std::string bytes(size, '\0');
  for (std::size_t i = 0; i < size; ++i) {
    bytes[i] = static_cast<char>(i);
  }
  return bytes;
}

void CCliTest::SetUp() {
  // Tests may run at the same time, each in a process of its own.
  folder_ = fs::temp_directory_path() / (L"tvmgr_test_" + std::to_wstring(GetCurrentProcessId()));
  fs::remove_all(folder_);
  fs::create_directories(folder_ / "printer");
  SetEnvironmentVariableW(L"LXEMU_MEMORY", (folder_ / "printer").c_str());
  SetEnvironmentVariableW(L"LXEMU_LOG", (folder_ / "exchanges.log").c_str());
  SetEnvironmentVariableW(L"TVMGR_CONFIG", (folder_ / "choice.json").c_str());
  for (const wchar_t* const variable : {L"TVMGR_PORT", L"TVMGR_ADDRESS"}) {
    SetEnvironmentVariableW(variable, nullptr);
  }
  // One tvmgr at a time works with a printer; tests are not to wait for one another.
  SetEnvironmentVariableW(L"TVMGR_DEVICE", (L"TEST" + std::to_wstring(GetCurrentProcessId())).c_str());
}

void CCliTest::TearDown() {
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

tagRun CCliTest::Tvmgr(const std::vector<std::string>& arguments, const std::string& input) const {
  tagRun run = RunProgram(ProgramFolder() / "tvmgr.exe", arguments, input);
  if (std::find(arguments.begin(), arguments.end(), "--json") != arguments.end()) {
    KeepForSchema(run.out);
  }
  return run;
}

std::vector<tagRun> CCliTest::TvmgrEach(const std::vector<std::vector<std::string>>& arguments) const {
  std::vector<tagRun> runs(arguments.size());
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    threads.emplace_back([&, i] { runs[i] = Tvmgr(arguments[i]); });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  return runs;
}

nlohmann::json CCliTest::Json(std::vector<std::string> arguments) const {
  arguments.emplace_back("--json");
  const tagRun run = Tvmgr(arguments);
  EXPECT_EQ(run.exit_code, 0U) << run.err;
  nlohmann::json json = nlohmann::json::parse(run.out, nullptr, false);
  EXPECT_FALSE(json.is_discarded()) << run.out;
  return json;
}

void CCliTest::WriteIni(const std::string& text) const {
  WriteFileBytes(folder_ / "printer" / "printer.ini", text);
}

std::string CCliTest::Log() const {
  return ReadFileBytes(folder_ / "exchanges.log");
}

void CCliTest::AwaitInLog(const std::string& text, int times) const {
  const auto is_there = [&] {
    const std::string log = Log();
    int seen = 0;
    for (std::size_t at = log.find(text); at != log.npos; at = log.find(text, at + text.size())) {
      ++seen;
    }
    return seen >= times;
  };
  for (int i = 0; i < 6000 && !is_there(); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

fs::path CCliTest::HostPath(const std::string& name) const {
  return folder_ / fs::path(std::u8string(name.begin(), name.end()));
}

std::string CCliTest::HostFile(const std::string& name, const std::string& bytes) const {
  WriteFileBytes(HostPath(name), bytes);
  return Utf8Path(name);
}

std::string CCliTest::Utf8Path(const std::string& name) const {
  const std::u8string path = HostPath(name).u8string();
  return {path.begin(), path.end()};
}

std::string CCliTest::StoredOnE(const std::string& name) const {
  return ReadFileBytes(folder_ / "printer" / "E" / name);
}

void CCliTest::StoreOnE(const std::string& name, const std::string& bytes) const {
  WriteFileBytes(folder_ / "printer" / "E" / name, bytes);
}

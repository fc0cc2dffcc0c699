#include <benchmark/benchmark.h>

#include <filesystem>
#include <random>
#include <string>

#include "backup/backup_file.h"
#include "command/answer_parser.h"
#include "command/command_builder.h"
#include "command/setting_table.h"
#include "storage/base64.h"
#include "storage/directory_parser.h"

namespace tavira {
namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t kTextSize = std::size_t{8} << 20;

/**
 * Base64 text with a line break every `line` characters (0: none) and junk in `junk_percent` of all places.
 */
std::string MakeBase64(std::size_t line, unsigned junk_percent) {
  std::mt19937 random(7);
  std::string text;
  while (text.size() < kTextSize) {
    text.push_back(random() % 100 < junk_percent ? '!' : kAlphabet[random() % kAlphabet.size()]);
    if (line != 0 && text.size() % (line + 2) == line) {
      text.append("\r\n");
    }
  }
  return text;
}

void DecodeBase64Text(benchmark::State& state) {
  const std::string text =
      MakeBase64(static_cast<std::size_t>(state.range(0)), static_cast<unsigned>(state.range(1)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(DecodeBase64(text));
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(DecodeBase64Text)
    ->ArgNames({"line", "junk%"})
    ->Args({0, 0})
    ->Args({76, 0})
    ->Args({0, 5})
    ->Args({0, 25})
    ->Args({0, 50})
    ->Args({0, 100});

/** The answer to the query of all settings. */
std::string MakeFullAnswer() {
  std::string answer;
  for (const tagSettingRow& row : kSettingTable) {
    answer.append("\x02").append(row.answer_head.View()).append(",600\x03\r\n");
  }
  return answer;
}

void ScanFullAnswer(benchmark::State& state) {
  const std::string answer = MakeFullAnswer();
  for (auto _ : state) {
    benchmark::DoNotOptimize(ScanAnswers(answer));
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * answer.size()));
}
BENCHMARK(ScanFullAnswer);

/** Input that a search for each of 76 heads would walk 76 times. */
void ScanHostileAnswer(benchmark::State& state) {
  std::string answer = "\x02";
  while (answer.size() < static_cast<std::size_t>(state.range(0))) {
    answer.append("^S(CL^S(XXX,Y");
  }
  answer.push_back('\x03');
  for (auto _ : state) {
    benchmark::DoNotOptimize(ScanAnswers(answer));
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * answer.size()));
}
BENCHMARK(ScanHostileAnswer)->Arg(1 << 16)->Arg(1 << 20)->Arg(1 << 24);

void ParseLongDirectory(benchmark::State& state) {
  std::string listing;
  for (int i = 0; i < 10000; ++i) {
    listing.append("* E:FILE0000.PNG      1234   P      \r\n");
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(ParseDirectory(listing));
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * listing.size()));
}
BENCHMARK(ParseLongDirectory);

void AppendBackupPiece(benchmark::State& state) {
  const auto files = MakeFileSystem();
  const std::filesystem::path path = std::filesystem::temp_directory_path() / "tavira_bench.bak";
  CBackupFile file(*files, path.string<TvmgrChar>());
  file.Create();
  const std::string piece(static_cast<std::size_t>(state.range(0)), 'x');
  std::int64_t pieces = 0;
  for (auto _ : state) {
    if (file.Append(piece) != TVMGR_OK) {
      state.SkipWithError("append");
    }
    if (++pieces % 1000 == 0) {
      state.PauseTiming();
      file.Create();
      state.ResumeTiming();
    }
  }
  std::filesystem::remove(path);
}
BENCHMARK(AppendBackupPiece)->Arg(100)->Arg(100000);

}  // namespace
}  // namespace tavira

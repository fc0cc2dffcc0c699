// Runs a fuzz target once over every file of its corpus, without libFuzzer.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <system_error>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> ListInputs(const fs::path& corpus, std::error_code& error) {
  std::vector<fs::path> inputs;
  for (fs::recursive_directory_iterator entry(corpus, error), end; !error && entry != end;
       entry.increment(error)) {
    if (entry->is_regular_file()) {
      inputs.push_back(entry->path());
    }
  }
  std::sort(inputs.begin(), inputs.end());
  return inputs;
}

bool Replay(const fs::path& input) {
  std::ifstream file(input, std::ios::binary);
  const auto size = static_cast<size_t>(fs::file_size(input));
  // Exactly the input's size and on the heap, so that AddressSanitizer sees a read of the byte behind it.
  const std::unique_ptr<uint8_t[]> data(new uint8_t[size]);
  if (!file.read(reinterpret_cast<char*>(data.get()), static_cast<std::streamsize>(size))) {
    return false;
  }
  LLVMFuzzerTestOneInput(data.get(), size);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: %s CORPUS_FOLDER...\n", argv[0]);
    return 2;
  }
  for (int i = 1; i < argc; ++i) {
    std::error_code error;
    const std::vector<fs::path> inputs = ListInputs(argv[i], error);
    if (error || inputs.empty()) {
      std::fprintf(stderr, "%s: %s\n", argv[i], error ? error.message().c_str() : "no inputs");
      return 1;
    }
    for (const fs::path& input : inputs) {
      // Named before it runs: when the target crashes, the last line says on what.
      std::printf("%s\n", input.filename().string().c_str());
      std::fflush(stdout);
      if (!Replay(input)) {
        std::fprintf(stderr, "%s: cannot be read\n", input.string().c_str());
        return 1;
      }
    }
    std::printf("%zu inputs\n", inputs.size());
  }
  return 0;
}

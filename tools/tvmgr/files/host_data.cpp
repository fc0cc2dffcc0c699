#include "files/host_data.h"

#include <fcntl.h>
#include <io.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "output/command_error.h"
#include "output/console.h"
#include "output/text_encoding.h"

namespace tvmgr {
namespace {

namespace fs = std::filesystem;

// The module takes sizes as signed 32-bit numbers.
constexpr std::uintmax_t kMaxBytes = INT32_MAX;

std::string ReadStdin() {
  _setmode(_fileno(stdin), _O_BINARY);
  std::string bytes;
  char block[4096];
  while (const std::size_t count = std::fread(block, 1, sizeof block, stdin)) {
    bytes.append(block, count);
    if (bytes.size() > kMaxBytes) {
      throw CInputFileError("there are more than 2 GiB on stdin");
    }
  }
  if (std::ferror(stdin) != 0) {
    throw CInputFileError("stdin cannot be read");
  }
  return bytes;
}

}  // namespace

std::string ReadHostFile(const std::string& path) {
  const fs::path file(ToWide(path));
  std::error_code error;
  const std::uintmax_t size = fs::file_size(file, error);
  std::ifstream stream(file, std::ios::binary);
  if (error || !stream) {
    throw CInputFileError("the file \"" + path + "\" cannot be opened");
  }
  if (size > kMaxBytes) {
    throw CInputFileError("the file \"" + path + "\" is larger than 2 GiB");
  }
  std::string bytes(static_cast<std::size_t>(size), '\0');
  stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (stream.gcount() != static_cast<std::streamsize>(bytes.size())) {
    throw CInputFileError("the file \"" + path + "\" cannot be read whole");
  }
  return bytes;
}

void WriteHostFile(const std::string& path, std::string_view bytes) {
  const fs::path file(ToWide(path));
  std::error_code ignored;
  // Only a file can be replaced: not NUL, not a pipe.
  const bool is_replaced = fs::is_regular_file(file, ignored);
  fs::path target = file;
  if (is_replaced) {
    target += L".new";
  }
  std::ofstream stream(target, std::ios::binary | std::ios::trunc);
  if (!stream) {
    throw COutputFileError("the file \"" + ToUtf8(target.wstring()) + "\" cannot be created");
  }
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  stream.close();
  const bool is_written = !stream.fail();
  std::error_code error;
  if (is_written && is_replaced) {
    fs::rename(target, file, error);
  }
  if (!is_written || error) {
    fs::remove(target, ignored);
    throw COutputFileError("the file \"" + path + "\" cannot be " +
                           (is_written ? "replaced (write-protected, or in use?)" : "written (disk full?)"));
  }
}

void ConfirmOverwriting(const std::string& path, bool agreed) {
  std::error_code ignored;
  if (fs::is_regular_file(fs::path(ToWide(path)), ignored)) {
    Confirm("overwrite the file \"" + path + "\" on this computer", agreed);
  }
}

std::string ReadData(const tagDataSource& source) {
  const int sources =
      (source.file.empty() ? 0 : 1) + (source.text ? 1 : 0) + (source.stdin_mark.empty() ? 0 : 1);
  if (sources != 1) {
    throw CUsageError(
        "say where the data comes from, once: --file, --text or, where it is offered, - for stdin");
  }
  std::string bytes = source.text           ? RequireAnsi(*source.text)
                      : source.file.empty() ? ReadStdin()
                                            : ReadHostFile(source.file);
  if (bytes.empty()) {
    throw CUsageError("there is nothing to send: the data is empty");
  }
  return bytes;
}

std::string FileNameOf(const std::string& path) {
  return ToUtf8(fs::path(ToWide(path)).filename().wstring());
}

}  // namespace tvmgr

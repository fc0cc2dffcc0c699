#include "files/file_target.h"

#include <filesystem>
#include <fstream>

#include "output/command_error.h"
#include "output/text_encoding.h"

namespace tvmgr {
namespace {

namespace fs = std::filesystem;

fs::path PathOf(const std::string& utf8) {
  return fs::path(ToWide(utf8));
}

}  // namespace

CFileTarget::CFileTarget(std::string path, std::string what)
    : path_(std::move(path)), partial_(path_ + ".partial"), what_(std::move(what)) {
  std::error_code error;
  if (fs::is_directory(PathOf(path_), error)) {
    throw CFailure("\"" + path_ + "\" is a folder: name a file in it");
  }
  if (fs::exists(PathOf(path_), error) && !std::fstream(PathOf(path_), std::ios::in | std::ios::out)) {
    throw CFailure("the file \"" + path_ + "\" cannot be overwritten: it is write-protected or in use");
  }
  // Opened to append: what an earlier backup left there stays until the printer has answered.
  if (fs::is_directory(PathOf(partial_), error) || !std::ofstream(PathOf(partial_), std::ios::app)) {
    throw CFailure("the file \"" + partial_ + "\", in which " + what_ +
                   " is to grow, cannot be created: check that the folder exists and "
                   "that you may write to it");
  }
}

CFileTarget::~CFileTarget() {
  std::error_code error;
  if (fs::file_size(PathOf(partial_), error) == 0 && !error) {
    fs::remove(PathOf(partial_), error);
  }
}

void CFileTarget::Commit() {
  std::error_code error;
  fs::rename(PathOf(partial_), PathOf(path_), error);
  if (error) {
    throw CFailure(what_ + " is complete, but \"" + path_ + "\" cannot be replaced: it stays in \"" +
                   partial_ + "\"");
  }
}

}  // namespace tvmgr

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tvmgr {

/** Watches a backup grow while the module writes it. */
class CBackupProgress {
 public:
  /**
   * @param path   the file, UTF-8
   * @param files  how many stored files the printer's lists name
   */
  CBackupProgress(std::string path, std::size_t files) : path_(std::move(path)), files_(files) {}

  /** "file 3 of 7, 12345 bytes written": what is being fetched, and what the file holds already. */
  std::string Now();

 private:
  std::string path_;
  std::size_t files_;
  std::uint64_t seen_ = 0;    /**< bytes looked at so far */
  std::size_t downloads_ = 0; /**< stored files in them */
  std::string last_;          /**< their end: a command may be cut by it */
};

}  // namespace tvmgr

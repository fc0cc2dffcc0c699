#pragma once

#include <string>

namespace tvmgr {

/**
 * The file that a backup is to become, and "NAME.partial" beside it, in which it grows. Only a backup that was
 * found whole takes the target's place.
 */
class CBackupTarget {
 public:
  /** Ends the command when one of the two cannot be written. */
  explicit CBackupTarget(std::string path);
  /** Takes the file beside the target away when nothing was written to it. */
  ~CBackupTarget();
  CBackupTarget(const CBackupTarget&) = delete;
  CBackupTarget& operator=(const CBackupTarget&) = delete;

  const std::string& Path() const { return path_; }
  const std::string& Partial() const { return partial_; }

  /** Puts the finished file in the target's place; ends the command when that fails. */
  void Commit();

 private:
  std::string path_;
  std::string partial_;
};

}  // namespace tvmgr

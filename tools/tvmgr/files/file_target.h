#pragma once

#include <string>

namespace tvmgr {

/**
 * The file that a backup or a profile is to become, and "NAME.partial" beside it, in which it grows. Only one that
 * was found whole takes the target's place.
 */
class CFileTarget {
 public:
  /** Ends the command when one of the two cannot be written. `what` it is to be: "the backup". */
  CFileTarget(std::string path, std::string what);
  /** Takes the file beside the target away when nothing was written to it. */
  ~CFileTarget();
  CFileTarget(const CFileTarget&) = delete;
  CFileTarget& operator=(const CFileTarget&) = delete;

  const std::string& Path() const { return path_; }
  const std::string& Partial() const { return partial_; }

  /** Puts the finished file in the target's place; ends the command when that fails. */
  void Commit();

 private:
  std::string path_;
  std::string partial_;
  std::string what_;
};

}  // namespace tvmgr

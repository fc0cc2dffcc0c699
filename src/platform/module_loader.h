#pragma once

namespace tavira {

/** Libraries that are loaded at run time because they may be missing. */
class IModuleLoader {
 public:
  virtual ~IModuleLoader() = default;

  /**
   * Loads a library by its ASCII file name with the system's normal search; null when it cannot be loaded.
   */
  virtual void* Load(const char* file_name) = 0;

  /** The address of an exported function; null when the library has none of that name. */
  virtual void* FindSymbol(void* module, const char* name) = 0;
};

}  // namespace tavira

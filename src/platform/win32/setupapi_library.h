#pragma once

#include <windows.h>
// after windows.h
#include <cfgmgr32.h>
#include <setupapi.h>

namespace tavira {

/**
 * One use of SETUPAPI.DLL, which is loaded at run time and only while it is used: the first holder loads it,
 * the last frees it. Entry points are looked up anew for each call.
 */
class STAutoLoanUnloadSetupapiDLL {  // NOLINT(readability-identifier-naming): known by this name
 public:
  STAutoLoanUnloadSetupapiDLL();
  ~STAutoLoanUnloadSetupapiDLL();
  STAutoLoanUnloadSetupapiDLL(const STAutoLoanUnloadSetupapiDLL&) = delete;
  STAutoLoanUnloadSetupapiDLL& operator=(const STAutoLoanUnloadSetupapiDLL&) = delete;

  /** The library is there and has every entry point that this module uses. */
  bool IsUsable() const;

  /** Calls an exported function of the type `Function`; `missing` when there is none of that name. */
  template <typename Function, typename Result, typename... Arguments>
  Result Call(const char* name, Result missing, Arguments... arguments) const {
    const auto function = reinterpret_cast<Function*>(Find(name));
    return function != nullptr ? function(arguments...) : missing;
  }

 private:
  void* Find(const char* name) const;

  void* library_;
};

}  // namespace tavira

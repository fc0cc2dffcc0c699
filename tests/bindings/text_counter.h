#pragma once

#include "tavira/TaviraManager.h"

namespace tavira::test {

/** Counts the text buffers that the module's string manager makes and frees. A manager must be there; one counter at a time. */
class CTextCounter {
 public:
  CTextCounter() {
    TvmgrFoundPrinter record{};
    TVMGR_GetPrinterDeviceInfo(&record);
    manager_ = (reinterpret_cast<const TvmgrTextData*>(record.text1) - 1)->manager;
    TvmgrFoundPrinterRelease(&record);
    real_ = manager_->functions;
    counting_ = {&Allocate, &Free, real_->Reallocate, real_->GetNilString, real_->Clone};
    allocated_ = freed_ = 0;
    manager_->functions = &counting_;
  }
  ~CTextCounter() { manager_->functions = real_; }
  CTextCounter(const CTextCounter&) = delete;
  CTextCounter& operator=(const CTextCounter&) = delete;

  int Allocated() const { return allocated_; }
  int Freed() const { return freed_; }

 private:
  static TvmgrTextData* Allocate(TvmgrTextManager* manager, std::int32_t chars, std::int32_t char_size) {
    ++allocated_;
    return real_->Allocate(manager, chars, char_size);
  }
  static void Free(TvmgrTextManager* manager, TvmgrTextData* data) {
    ++freed_;
    real_->Free(manager, data);
  }

  static inline const TvmgrTextManagerFunctions* real_ = nullptr;
  static inline TvmgrTextManagerFunctions counting_{};
  static inline int allocated_ = 0;
  static inline int freed_ = 0;
  TvmgrTextManager* manager_ = nullptr;
};

}  // namespace tavira::test

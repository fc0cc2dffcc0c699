#pragma once

#include <utility>

#include "platform/wide_string.h"

namespace tavira {

/**
 * Owns one reference to a wide-string buffer of the binary interface (header in front of the characters).
 *
 * Exactly one pointer wide, so that a record made of handles has the layout that other modules expect. Never
 * null: an empty handle refers to a shared empty string. Copies share the buffer unless it is locked.
 */
class CTextHandle {
 public:
  CTextHandle();

  /** A copy of `text` in a buffer of the module's own manager. Throws std::bad_alloc. */
  explicit CTextHandle(WideView text);

  /**
   * A copy of `text` in a buffer of the manager that made `example`; of the module's own when that is null.
   * For texts written into a host's record. Throws std::bad_alloc.
   */
  static CTextHandle MakeLike(TvmgrText example, WideView text);

  CTextHandle(const CTextHandle& other);
  CTextHandle(CTextHandle&& other) noexcept;
  CTextHandle& operator=(CTextHandle other) noexcept;
  ~CTextHandle();

  WideView View() const { return ViewHostText(text_); }

  /** Gives the reference to a host's record; what the record held (may be null) is released. */
  void MoveInto(TvmgrText& host_text) noexcept;

 private:
  struct tagAdopt {};
  CTextHandle(tagAdopt, TvmgrText text) : text_(text) {}

  TvmgrText text_;
};

}  // namespace tavira

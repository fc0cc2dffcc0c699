#include "discovery/found_printer.h"

#include "platform/text_handle.h"

namespace tavira {

tagFoundPrinter ReadHostRecord(const TvmgrFoundPrinter& record) {
  const auto copy = [](TvmgrText text) { return WideString(ViewHostText(text)); };
  return {record.kind,   copy(record.text1), copy(record.text2), copy(record.text3),
          record.value1, record.value2,      copy(record.text4), copy(record.text5)};
}

void WriteHostRecord(const tagFoundPrinter& printer, TvmgrFoundPrinter& record) {
  // All buffers first, so that the record is written whole or not at all.
  CTextHandle text1 = CTextHandle::MakeLike(record.text1, printer.text1);
  CTextHandle text2 = CTextHandle::MakeLike(record.text2, printer.text2);
  CTextHandle text3 = CTextHandle::MakeLike(record.text3, printer.text3);
  CTextHandle text4 = CTextHandle::MakeLike(record.text4, printer.text4);
  CTextHandle text5 = CTextHandle::MakeLike(record.text5, printer.text5);
  record.kind = printer.kind;
  text1.MoveInto(record.text1);
  text2.MoveInto(record.text2);
  text3.MoveInto(record.text3);
  record.value1 = printer.value1;
  record.value2 = printer.value2;
  text4.MoveInto(record.text4);
  text5.MoveInto(record.text5);
}

}  // namespace tavira

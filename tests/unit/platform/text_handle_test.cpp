#include "platform/text_handle.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "discovery/found_printer.h"

namespace tavira {
namespace {

/** A host's string manager on a heap of its own, which counts what it hands out. */
struct tagHostManager : TvmgrTextManager {
  tagHostManager() : TvmgrTextManager{&kFunctions} { nil = New(u"", 2); }
  ~tagHostManager() { std::free(nil); }

  static tagHostManager* Self(TvmgrTextManager* manager) { return static_cast<tagHostManager*>(manager); }

  TvmgrTextData* New(std::u16string_view text, std::int32_t references = 1) {
    auto* data = static_cast<TvmgrTextData*>(std::malloc(sizeof(TvmgrTextData) + (text.size() + 1) * 2));
    *data = {this, static_cast<std::int32_t>(text.size()), static_cast<std::int32_t>(text.size()), references,
             0};
    auto* characters = reinterpret_cast<TvmgrChar*>(data + 1);
    *std::copy(text.begin(), text.end(), characters) = 0;
    return data;
  }

  static TvmgrTextData* Allocate(TvmgrTextManager* manager, std::int32_t chars, std::int32_t char_size) {
    tagHostManager* self = Self(manager);
    if (self->allocations_left == 0) {
      return nullptr;
    }
    --self->allocations_left;
    ++self->live;
    auto* data = static_cast<TvmgrTextData*>(
        std::malloc(sizeof(TvmgrTextData) + static_cast<std::size_t>((chars + 1) * char_size)));
    *data = {manager, 0, chars, 1, 0};
    return data;
  }
  static void Free(TvmgrTextManager* manager, TvmgrTextData* data) {
    --Self(manager)->live;
    std::free(data);
  }
  static TvmgrTextData* Reallocate(TvmgrTextManager*, TvmgrTextData*, std::int32_t, std::int32_t) {
    return nullptr;
  }
  static TvmgrTextData* GetNilString(TvmgrTextManager* manager) {
    ++Self(manager)->nil->references;
    return Self(manager)->nil;
  }
  static TvmgrTextManager* Clone(TvmgrTextManager* manager) { return manager; }

  static constexpr TvmgrTextManagerFunctions kFunctions{Allocate, Free, Reallocate, GetNilString, Clone};
  TvmgrTextData* nil;
  int live = 0;
  int allocations_left = 1000;
};

TvmgrText Text(TvmgrTextData* data) {
  return reinterpret_cast<TvmgrText>(data + 1);
}
TvmgrTextData* Data(TvmgrText text) {
  return reinterpret_cast<TvmgrTextData*>(const_cast<TvmgrChar*>(text)) - 1;
}

TEST(TextHandleTest, BuffersCarryTheirHeader) {
  TvmgrText text = nullptr;
  CTextHandle(WidenAscii("hello")).MoveInto(text);
  EXPECT_EQ(5, Data(text)->length);
  EXPECT_LE(5, Data(text)->capacity);
  EXPECT_EQ(1, Data(text)->references);
  EXPECT_EQ(0, text[5]);
  TvmgrTextRelease(&text);
  EXPECT_EQ(nullptr, text);
}

TEST(TextHandleTest, CopiesShareUntilTheLastIsGoneButForALockedText) {
  TvmgrText text = nullptr;
  {
    const CTextHandle first(WidenAscii("shared"));
    CTextHandle second(first);
    CTextHandle third;
    third = second;
    EXPECT_EQ(first.View().data(), third.View().data());
    std::move(second).MoveInto(text);
    EXPECT_EQ(3, Data(text)->references);
    EXPECT_EQ(WideView(), second.View());
  }
  EXPECT_EQ(1, Data(text)->references);
  TvmgrTextRelease(&text);
  const CTextHandle locked(WidenAscii("somebody writes to it"));
  Data(locked.View().data())->references = -1;
  const CTextHandle copy(locked);
  Data(locked.View().data())->references = 1;
  EXPECT_EQ(locked.View(), copy.View());
  EXPECT_NE(locked.View().data(), copy.View().data());
}

TEST(TextHandleTest, TheModulesManagerServesOtherModules) {
  CTextHandle handle(WidenAscii("abc"));
  TvmgrText text = nullptr;
  handle.MoveInto(text);
  TvmgrTextManager* manager = Data(text)->manager;
  const TvmgrTextManagerFunctions& functions = *manager->functions;
  EXPECT_EQ(manager, functions.Clone(manager));
  EXPECT_EQ(nullptr, functions.Allocate(manager, -1, 2));
  EXPECT_EQ(nullptr, functions.Allocate(manager, INT32_MAX, 2));
  TvmgrTextData* grown = functions.Reallocate(manager, Data(text), 100, 2);
  ASSERT_NE(nullptr, grown);
  EXPECT_EQ(100, grown->capacity);
  EXPECT_EQ(3, grown->length);
  EXPECT_EQ(WidenAscii("abc"), WideString(Text(grown)));
  // Characters stay up to the smaller capacity, whatever the length says, and so does a lock.
  const struct {
    std::int32_t capacity, length, chars, kept_length;
    std::size_t kept;
  } cases[] = {{5, 5, 9, 5, 5}, {5, 0, 9, 0, 5}, {5, 1, 3, 1, 3},
               {5, 5, 3, 3, 3}, {5, 2, 5, 2, 5}, {5, 5, 0, 0, 0}};
  for (const auto& [capacity, length, chars, kept_length, kept] : cases) {
    for (const std::int32_t references : {1, -1}) {
      TvmgrTextData* data = functions.Allocate(manager, capacity, 2);
      std::u16string_view(u"abcde").copy(reinterpret_cast<char16_t*>(data + 1), 5);
      data->length = length;
      data->references = references;
      data = functions.Reallocate(manager, data, chars, 2);
      EXPECT_EQ(WidenAscii("abcde").substr(0, kept), WideString(Text(data))) << chars;
      EXPECT_EQ(kept_length, data->length) << chars;
      EXPECT_EQ(chars, data->capacity);
      EXPECT_EQ(references, data->references);
      EXPECT_EQ(manager, data->manager);
      functions.Free(manager, data);
    }
  }
  functions.Free(manager, grown);
  TvmgrTextData* nil = functions.GetNilString(manager);
  const std::int32_t references = nil->references;
  EXPECT_LT(1, references);  // a host that holds it alone sees a shared text, too
  EXPECT_EQ(nil, functions.GetNilString(manager));
  EXPECT_EQ(references + 1, nil->references);  // else it would sink below 0, which means a lock
  text = Text(nil);
  TvmgrTextRelease(&text);
  text = Text(nil);
  TvmgrTextRelease(&text);
  EXPECT_EQ(references - 1, nil->references);
  functions.Free(manager, nil);  // by a host that has counted wrong: it is nobody's to free
  EXPECT_EQ(nil, functions.GetNilString(manager));
  nil->references = references - 1;
}

TEST(TextHandleTest, HostRecordsAreWrittenWithTheHostsOwnManager) {
  tagHostManager host;
  TvmgrFoundPrinter record{};
  ++host.live;
  record.text1 = Text(host.New(u"old"));
  TvmgrTextData* shared = host.New(u"kept by another", 2);
  record.text2 = Text(shared);
  tagFoundPrinter printer;
  printer.kind = 1;
  printer.text1 = WidenAscii("new");
  printer.text5 = WidenAscii("address");
  WriteHostRecord(printer, record);
  EXPECT_EQ(static_cast<TvmgrTextManager*>(&host), Data(record.text1)->manager);
  EXPECT_EQ(WidenAscii("new"), WideString(record.text1));
  EXPECT_EQ(1, host.live);                  // the old buffer went back to the manager that made it
  EXPECT_EQ(1, shared->references);         // a shared one only lost a reference
  EXPECT_EQ(Text(host.nil), record.text2);  // and an empty text is the host's own empty string
  EXPECT_NE(static_cast<TvmgrTextManager*>(&host), Data(record.text5)->manager);
  TvmgrFoundPrinterRelease(&record);
  EXPECT_EQ(0, host.live);
  std::free(shared);
}

TEST(TextHandleTest, ARecordThatCannotBeWrittenWholeStaysAsItWas) {
  tagHostManager host;
  TvmgrFoundPrinter record{};
  host.live = 2;
  record.text1 = Text(host.New(u"one"));
  record.text5 = Text(host.New(u"five"));
  record.value1 = 5;
  host.allocations_left = 1;
  tagFoundPrinter printer;
  printer.text1 = WidenAscii("new");
  printer.text5 = WidenAscii("new");
  EXPECT_THROW(WriteHostRecord(printer, record), std::bad_alloc);
  EXPECT_EQ(2, host.live);
  EXPECT_EQ(WidenAscii("one"), WideString(record.text1));
  EXPECT_EQ(5, record.value1);
  TvmgrFoundPrinterRelease(&record);
}

}  // namespace
}  // namespace tavira

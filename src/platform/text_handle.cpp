#include "platform/text_handle.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <new>

namespace tavira {
namespace {

TvmgrTextData* Header(TvmgrText text) {
  return reinterpret_cast<TvmgrTextData*>(const_cast<TvmgrChar*>(text)) - 1;
}

TvmgrChar* Characters(TvmgrTextData* data) {
  return reinterpret_cast<TvmgrChar*>(data + 1);
}

std::atomic_ref<std::int32_t> References(TvmgrTextData* data) {
  return std::atomic_ref<std::int32_t>(data->references);
}

TvmgrTextData* ModuleAllocate(TvmgrTextManager* manager, std::int32_t chars, std::int32_t char_size) {
  if (chars < 0 || char_size <= 0 || chars == std::numeric_limits<std::int32_t>::max()) {
    return nullptr;
  }
  const std::size_t bytes =
      sizeof(TvmgrTextData) + (static_cast<std::size_t>(chars) + 1) * static_cast<std::size_t>(char_size);
  void* memory = ::operator new(bytes, std::nothrow);
  if (memory == nullptr) {
    return nullptr;
  }
  return new (memory) TvmgrTextData{manager, 0, chars, 1, 0};
}

/** The shared empty string. Its count may go anywhere: it is never freed. */
struct tagNilString {
  TvmgrTextData data;
  TvmgrChar terminator;
};
extern TvmgrTextManager module_manager;
constinit tagNilString nil_string{{&module_manager, 0, 0, 2, 0}, 0};

void ModuleFree(TvmgrTextManager*, TvmgrTextData* data) {
  if (data != &nil_string.data) {
    ::operator delete(data);
  }
}

TvmgrTextData* ModuleReallocate(TvmgrTextManager* manager, TvmgrTextData* data, std::int32_t chars,
                                std::int32_t char_size) {
  TvmgrTextData* resized = ModuleAllocate(manager, chars, char_size);
  if (resized != nullptr) {
    // As of memory that is resized in place: a host may have written characters and not set the length yet.
    const auto bytes = static_cast<std::ptrdiff_t>(std::min(data->capacity, chars)) * char_size;
    const auto* from = reinterpret_cast<const char*>(data + 1);
    auto* end = std::copy(from, from + bytes, reinterpret_cast<char*>(resized + 1));
    std::fill_n(end, char_size, '\0');
    resized->length = std::min(data->length, chars);
    resized->references = data->references;
    ModuleFree(manager, data);
  }
  return resized;
}

TvmgrTextData* ModuleGetNilString(TvmgrTextManager*) {
  References(&nil_string.data).fetch_add(1);
  return &nil_string.data;
}

TvmgrTextManager* ModuleClone(TvmgrTextManager* manager) {
  return manager;
}

constinit const TvmgrTextManagerFunctions kModuleFunctions{ModuleAllocate, ModuleFree, ModuleReallocate,
                                                           ModuleGetNilString, ModuleClone};
constinit TvmgrTextManager module_manager{&kModuleFunctions};

TvmgrText NewText(TvmgrTextManager* manager, WideView text) {
  if (text.size() >= static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
    throw std::bad_alloc();
  }
  const auto length = static_cast<std::int32_t>(text.size());
  if (length == 0) {
    TvmgrTextData* nil = manager->functions->GetNilString(manager);
    if (nil == nullptr) {
      throw std::bad_alloc();
    }
    return Characters(nil);
  }
  TvmgrTextData* data =
      manager->functions->Allocate(manager, length, static_cast<std::int32_t>(sizeof(TvmgrChar)));
  if (data == nullptr) {
    throw std::bad_alloc();
  }
  TvmgrChar* end = std::copy(text.begin(), text.end(), Characters(data));
  *end = 0;
  data->length = length;
  return Characters(data);
}

}  // namespace

static_assert(sizeof(CTextHandle) == sizeof(TvmgrText));

CTextHandle::CTextHandle() : text_(Characters(ModuleGetNilString(&module_manager))) {}

CTextHandle::CTextHandle(WideView text) : text_(NewText(&module_manager, text)) {}

CTextHandle CTextHandle::MakeLike(TvmgrText example, WideView text) {
  return CTextHandle(tagAdopt{},
                     NewText(example == nullptr ? &module_manager : Header(example)->manager, text));
}

CTextHandle::CTextHandle(const CTextHandle& other) : text_(other.text_) {
  if (References(Header(text_)).load() < 0) {
    text_ = NewText(&module_manager, other.View());  // a locked buffer is not to be shared
  } else {
    References(Header(text_)).fetch_add(1);
  }
}

CTextHandle::CTextHandle(CTextHandle&& other) noexcept : CTextHandle() {
  std::swap(text_, other.text_);
}

CTextHandle& CTextHandle::operator=(CTextHandle other) noexcept {
  std::swap(text_, other.text_);
  return *this;
}

CTextHandle::~CTextHandle() {
  TvmgrTextRelease(&text_);
}

void CTextHandle::MoveInto(TvmgrText& host_text) noexcept {
  TvmgrTextRelease(&host_text);
  host_text = std::exchange(text_, Characters(ModuleGetNilString(&module_manager)));
}

}  // namespace tavira

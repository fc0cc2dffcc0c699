#include "trace/traced_calls.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <string>
#include <type_traits>

#include "output/text_encoding.h"
#include "output/text_layout.h"
#include "printer/manager_library.h"
#include "printer/manager_session.h"
#include "trace/trace_file.h"
#include "trace/trace_text.h"

namespace tvmgr {
namespace {

/** What an argument is follows from its type. */
enum class EArgument {
  kNumber,
  kFlag,
  kText,    /**< for the module */
  kName,    /**< from the module, with room for as many characters as the next argument says */
  kBytes,   /**< for the module, as many as the next argument says */
  kBuffer,  /**< from the module, likewise; one byte when no number of them follows */
  kCount,   /**< from the module; behind a buffer also its size */
  kPrinter, /**< for the module */
  kFound,   /**< a printer from the module */
  kBackup,  /**< for the module */
  kReserved /**< looked at by nobody */
};

struct tagArgument {
  EArgument kind = EArgument::kReserved;
  std::int64_t number = 0;
  const void* pointer = nullptr;
};

template <typename Type>
tagArgument Argument(Type value) {
  if constexpr (std::is_same_v<Type, bool>) {
    return {EArgument::kFlag, value, nullptr};
  } else if constexpr (std::is_integral_v<Type>) {
    return {EArgument::kNumber, static_cast<std::int64_t>(value), nullptr};
  } else if constexpr (std::is_same_v<Type, const TvmgrChar*>) {
    return {EArgument::kText, 0, value};
  } else if constexpr (std::is_same_v<Type, TvmgrChar*>) {
    return {EArgument::kName, 0, value};
  } else if constexpr (std::is_same_v<Type, const std::uint8_t*>) {
    return {EArgument::kBytes, 0, value};
  } else if constexpr (std::is_same_v<Type, std::uint8_t*>) {
    return {EArgument::kBuffer, 0, value};
  } else if constexpr (std::is_same_v<Type, std::uint32_t*> || std::is_same_v<Type, std::int32_t*>) {
    return {EArgument::kCount, 0, value};
  } else if constexpr (std::is_same_v<Type, const TvmgrFoundPrinter*>) {
    return {EArgument::kPrinter, 0, value};
  } else if constexpr (std::is_same_v<Type, TvmgrFoundPrinter*>) {
    return {EArgument::kFound, 0, value};
  } else if constexpr (std::is_same_v<Type, const TvmgrBackupInfo*>) {
    return {EArgument::kBackup, 0, value};
  } else {
    static_assert(std::is_pointer_v<Type>, "an argument that no trace knows");
    return {EArgument::kReserved, 0, value};
  }
}

std::int64_t CountAt(const tagArgument& argument) {
  return *static_cast<const std::uint32_t*>(argument.pointer);
}

std::string Number(std::int64_t number) {
  constexpr std::int64_t kFirstCode = 0x1000000;  // operations and requests
  char text[24];
  std::snprintf(text, sizeof text, number >= kFirstCode && number <= UINT32_MAX ? "0x%llX" : "%lld",
                static_cast<long long>(number));
  return text;
}

std::string Text(const wchar_t* text) {
  return text == nullptr ? "null" : "\"" + MakeVisible(ToUtf8(text)) + "\"";
}

std::string Printer(const TvmgrFoundPrinter& printer) {
  std::string text = "{kind " + std::to_string(printer.kind);
  const std::pair<const char*, TvmgrText> texts[] = {{"text1", printer.text1},
                                                     {"text2", printer.text2},
                                                     {"text3", printer.text3},
                                                     {"text4", printer.text4},
                                                     {"text5", printer.text5}};
  for (const auto& [name, value] : texts) {
    text += TextOf(value).empty() ? "" : std::string(", ") + name + " " + Text(value);
  }
  if (printer.value1 != 0 || printer.value2 != 0) {
    text += ", values " + std::to_string(printer.value1) + " " + std::to_string(printer.value2);
  }
  return text + "}";
}

std::string Backup(const TvmgrBackupInfo& info) {
  const std::pair<char, std::uint8_t> sections[] = {
      {'S', info.settings},  {'P', info.section_p}, {'I', info.section_i}, {'T', info.section_t},
      {'F', info.section_f}, {'C', info.section_c}, {'B', info.section_b}};
  std::string letters;
  for (const auto& [letter, is_wanted] : sections) {
    letters += is_wanted == 1 ? std::string(1, letter) : "";
  }
  return "{" + Text(info.path) + ", sections " + letters + "}";
}

/** Values of settings and names of files are shown; everything else that is bytes may be contents of a file. */
bool IsShown(std::string_view function, const tagArgument* arguments) {
  if (TracesContents()) {
    return true;
  }
  if (function == "TVMGR_UpdateRegistList") {
    return arguments[0].number >= TVMGR_REQUEST_DELETE_GRAPHIC &&
           arguments[0].number <= TVMGR_REQUEST_DELETE_FONT;
  }
  return (function == "TVMGR_SetUpdateList" || function == "TVMGR_GetSettingValue") &&
         arguments[0].number != TVMGR_SETTING_BACKGROUND;
}

/** Bytes that go to the printer as they are, settings talk or not. */
bool IsUsersCommand(std::string_view function) {
  return function == "TVMGR_DirectSendCommand" || function == "TVMGR_SetExecuteList";
}

std::string Bytes(const void* pointer, std::int64_t size, bool is_shown) {
  return pointer == nullptr ? "null"
                            : DescribeBytes({static_cast<const char*>(pointer),
                                             static_cast<std::size_t>(std::max<std::int64_t>(size, 0))},
                                            is_shown);
}

bool HasRoom(const tagArgument* arguments, std::size_t count, std::size_t i) {
  return i + 1 < count && arguments[i + 1].kind == EArgument::kCount && arguments[i + 1].pointer != nullptr;
}

/** The arguments as they go in. `room` gets what the numbers behind buffers say. */
std::string TextOfCall(const char* function, const tagArgument* arguments, std::size_t count,
                       std::int64_t* room) {
  std::string text = std::string(function) + "(";
  for (std::size_t i = 0; i < count; ++i) {
    const tagArgument& argument = arguments[i];
    text += i == 0 ? "" : ", ";
    switch (argument.kind) {
      case EArgument::kNumber:
        text += Number(argument.number);
        break;
      case EArgument::kFlag:
        text += argument.number != 0 ? "true" : "false";
        break;
      case EArgument::kText:
        text += Text(static_cast<const wchar_t*>(argument.pointer));
        break;
      case EArgument::kBytes:
        text += Bytes(argument.pointer, i + 1 < count ? arguments[i + 1].number : 0,
                      IsShown(function, arguments));
        if (argument.pointer != nullptr && IsUsersCommand(function) && !TracesContents()) {
          LeaveOutOfTrace({static_cast<const char*>(argument.pointer),
                           static_cast<std::size_t>(std::max<std::int64_t>(arguments[i + 1].number, 0))});
        }
        break;
      case EArgument::kPrinter:
        text += argument.pointer == nullptr
                    ? "null"
                    : Printer(*static_cast<const TvmgrFoundPrinter*>(argument.pointer));
        break;
      case EArgument::kBackup:
        text += argument.pointer == nullptr ? "null"
                                            : Backup(*static_cast<const TvmgrBackupInfo*>(argument.pointer));
        break;
      case EArgument::kCount:
        // Only behind a buffer it means something on the way in.
        text += argument.pointer == nullptr ? "null" : room[i] < 0 ? "out" : Number(room[i]);
        break;
      case EArgument::kName:
      case EArgument::kBuffer:
        if (argument.pointer != nullptr && HasRoom(arguments, count, i)) {
          room[i + 1] = CountAt(arguments[i + 1]);
        }
        [[fallthrough]];
      case EArgument::kFound:
      case EArgument::kReserved:
        text += argument.pointer == nullptr             ? "null"
                : argument.kind == EArgument::kReserved ? "reserved"
                                                        : "out";
        break;
    }
  }
  return text + ")";
}

/** What came out, behind the result. */
std::string TextOfOutcome(const char* function, const tagArgument* arguments, std::size_t count,
                          const std::int64_t* room) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    const tagArgument& argument = arguments[i];
    if (argument.pointer == nullptr) {
      continue;
    }
    if (argument.kind == EArgument::kCount) {
      text += " " + Number(CountAt(argument));
    } else if (argument.kind == EArgument::kName) {
      text += " " + Text(static_cast<const wchar_t*>(argument.pointer));
    } else if (argument.kind == EArgument::kFound) {
      text += " " + Printer(*static_cast<const TvmgrFoundPrinter*>(argument.pointer));
    } else if (argument.kind == EArgument::kBuffer && HasRoom(arguments, count, i)) {
      const std::int64_t size = std::min(room[i + 1], CountAt(arguments[i + 1]));
      text += " " + Bytes(argument.pointer, size, IsShown(function, arguments));
    } else if (argument.kind == EArgument::kBuffer) {
      text += " " + std::to_string(*static_cast<const std::uint8_t*>(argument.pointer));
    }
  }
  return text.empty() ? text : " ->" + text;
}

/** Stands in the place of one function of the module. */
template <auto& kPointer, typename Function>
class CTracedCall;

template <auto& kPointer, typename Result, typename... Arguments>
class CTracedCall<kPointer, Result (*)(Arguments...)> {
 public:
  static void Install(const char* name) {
    name_ = name;
    original_ = kPointer;
    kPointer = &Call;
  }

 private:
  static Result Call(Arguments... values) {
    constexpr std::size_t kCount = sizeof...(Arguments);
    const std::array<tagArgument, kCount + 1> arguments{Argument(values)...};
    std::array<std::int64_t, kCount + 1> room{};
    room.fill(-1);
    const std::uint64_t number = BeginTracedCall(TextOfCall(name_, arguments.data(), kCount, room.data()));
    const Result result = original_(values...);
    const bool is_done = std::is_same_v<Result, bool> ? result != 0 : result == TVMGR_OK;
    std::string text = std::is_same_v<Result, bool> ? (result ? "true" : "false") : std::to_string(result);
    // After a failure nothing may have been written there.
    text += is_done ? TextOfOutcome(name_, arguments.data(), kCount, room.data()) : "";
    EndTracedCall(number, name_, text);
    return result;
  }

  static inline Result (*original_)(Arguments...) = nullptr;
  static inline const char* name_ = "";
};

}  // namespace

void TraceCalls() {
#define TVMGR_TRACE(name) CTracedCall<name, decltype(name)>::Install(#name);
  TVMGR_FOR_EACH_FUNCTION(TVMGR_TRACE)
#undef TVMGR_TRACE
}

}  // namespace tvmgr

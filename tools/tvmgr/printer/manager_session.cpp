#include "printer/manager_session.h"

#include <windows.h>

#include <algorithm>
#include <iterator>
#include <string_view>

#include "names/setting_names.h"
#include "output/command_error.h"
#include "output/console.h"
#include "output/json_output.h"
#include "output/progress.h"
#include "output/result_words.h"
#include "output/text_encoding.h"

namespace tvmgr {
namespace {

[[noreturn]] void Fail(const std::string& what, std::int32_t result) {
  throw CallFailure(what + " failed", what, result);
}

// Failures name it, also when they are told after the session.
std::string asked_printer;

constexpr char kSilent[] = "the printer did not answer";

// What an answering printer makes of the bounds.
struct tagUsual {
  std::string_view function;
  std::string_view usual;
  std::uint64_t pass_exchanges; /**< with the printer, in one of up to ten passes; 0: no passes */
};

constexpr tagUsual kUsual[] = {
    {"TVMGR_LoadSetting", "usually a few seconds", 0},
    {"TVMGR_UpdatePrinterSetting", "usually one pass of a few seconds", 2},
    {"TVMGR_UpdatePrinterSettingNoChangeDPI", "usually one pass of a few seconds", 2},
    {"TVMGR_RegistData", "usually one pass of a second", 2},
    {"TVMGR_DeleteData", "usually one pass of a second", 2},
    {"TVMGR_ExecutePrinterOperation", "usually until the printer is ready again", 0},
    {"TVMGR_Backup", "usually a second for each file", 0},
    {"TVMGR_Restore", "usually under a minute", 0},
    {"TVMGR_LoadStoredData", "usually a second", 0},
    {"TVMGR_DirectSendCommand", "usually a second", 0},
};

constexpr std::uint64_t kPassPauseMs = 500;
constexpr std::uint64_t kPasses = 10;

// The module says nothing while it works: the pass follows from how long the printer took for its status.
tagProgressWords WordsFor(std::string_view function, std::uint64_t exchange_ms,
                          std::function<std::string(std::uint64_t)> now) {
  const auto* const found = std::find_if(std::begin(kUsual), std::end(kUsual),
                                         [&](const tagUsual& usual) { return usual.function == function; });
  if (found == std::end(kUsual)) {
    return {{}, std::move(now)};
  }
  if (found->pass_exchanges != 0 && exchange_ms != 0 && !now) {
    const std::uint64_t pass_ms = kPassPauseMs + found->pass_exchanges * exchange_ms;
    now = [pass_ms](std::uint64_t elapsed_ms) {
      const std::uint64_t pass = std::min(elapsed_ms / pass_ms + 1, kPasses);
      return pass == 1 ? std::string()
                       : "about pass " + std::to_string(pass) + " of " + std::to_string(kPasses) +
                             ": the printer does not show it yet";
    };
  }
  return {std::string(found->usual), std::move(now)};
}

}  // namespace

const std::string& AskedPrinter() {
  return asked_printer;
}

std::string TextOf(const wchar_t* text) {
  return text == nullptr ? std::string() : ToUtf8(text);
}

std::int32_t TellChoice(const tagPrinterChoice& choice) {
  const std::wstring port = ToWide(choice.port);
  const std::wstring device = ToWide(choice.device);
  const std::wstring address = ToWide(choice.address);
  TvmgrFoundPrinter record = {};
  record.kind = address.empty() ? TVMGR_SEARCH_USB : TVMGR_SEARCH_NETWORK;
  record.text3 = device.empty() ? nullptr : device.c_str();
  record.text5 = address.empty() ? nullptr : address.c_str();
  const bool has_record = !device.empty() || !address.empty();
  return TVMGR_UpdatePortComInfo(has_record ? &record : nullptr, port.empty() ? nullptr : port.c_str());
}

tagPrinterChoice KnownPrinter() {
  TvmgrFoundPrinter chosen = {};
  tagPrinterChoice known;
  if (TVMGR_GetPrinterDeviceInfo(&chosen) == TVMGR_OK) {
    known = {TextOf(chosen.text1), TextOf(chosen.text3), TextOf(chosen.text5)};
  }
  TvmgrFoundPrinterRelease(&chosen);
  return known;
}

CManagerSession::CManagerSession(const tagGlobalOptions& options, EPrinterUse use)
    : CManagerSession(options, use, use == EPrinterUse::kNone ? tagPrinterChoice() : ChoiceInForce(options)) {
}

CManagerSession::CManagerSession(const tagGlobalOptions& options, const tagPrinterChoice& choice)
    : CManagerSession(options, EPrinterUse::kWork, choice) {}

CManagerSession::CManagerSession(const tagGlobalOptions& options, EPrinterUse use,
                                 const tagPrinterChoice& choice)
    : options_(options) {
  LoadManagerLibrary();
  if (use != EPrinterUse::kNone) {
    asked_printer = Describe(choice);
    ReportPrinter(asked_printer);
    ReportChoice(ChoiceText(choice));
  }
  work_.emplace(EWork::kPrinter);
  StartModule();
  try {
    if (use != EPrinterUse::kNone) {
      ChoosePrinter(choice);
    }
    if (use == EPrinterUse::kWork) {
      lock_.emplace(options, KnownPrinter(), asked_printer, interrupt_);
    }
  } catch (...) {
    TVMGR_Terminate();
    throw;
  }
}

void CManagerSession::StartModule() const {
  const std::int32_t result = TVMGR_Initialize();
  if (result == TVMGR_OK) {
    return;
  }
  // Also a failed start may have left a manager in place.
  TVMGR_Terminate();
  if (result == TVMGR_PORT_LIBRARY_MISSING) {
    const std::string advice = "Put the port library for 64 bits beside tvmgr.exe";
    throw CFailure(ExplainPortLibrary() + " (" + std::to_string(result) + "). " + advice, kExitFailed,
                   {result, "starting the module", advice});
  }
  Fail("starting the module", result);
}

CManagerSession::~CManagerSession() {
  if (!is_left_) {
    TVMGR_Terminate();
  }
}

void CManagerSession::ChoosePrinter(const tagPrinterChoice& choice) const {
  NoteJsonPrinter(PrinterJson(choice));
  // The print spooler can take its time.
  Require("TVMGR_UpdatePortComInfo", "choosing the printer", 0, [&] { return TellChoice(choice); });
  if (choice.device.empty() && choice.address.empty() && !choice.port.empty()) {
    RemarkOnEmptyPort(choice.port);
  }
  if (options_.verbose) {
    const tagPrinterChoice known = KnownPrinter();
    const auto text = [](const std::string& utf8) { return utf8.empty() ? "-" : utf8; };
    WriteError("printer: port " + text(known.port) + ", device " + text(known.device) + ", address " +
               text(known.address) + "\n");
  }
}

void CManagerSession::RemarkOnEmptyPort(const std::string& port) const {
  const tagPrinterChoice known = KnownPrinter();
  if (known.device.empty() && known.address.empty()) {
    Remark("no printer is known behind port " + port +
           ": it may be misspelt, of another kind (WSD, IPP), or of a USB printer that is off; only the "
           "port's name "
           "goes to the port library");
  }
}

std::int32_t CManagerSession::Call(const char* function, const std::string& what, std::uint64_t longest_ms,
                                   const std::function<std::int32_t()>& call,
                                   std::function<std::string(std::uint64_t)> now) const {
  std::int32_t result = 0;
  std::uint64_t elapsed_ms = 0;
  NoteJsonStep(what);
  {
    const CProgress progress(what, longest_ms, !options_.quiet,
                             WordsFor(function, exchange_ms_, std::move(now)));
    CInterruptWait::SetRunning(what);
    ReportStep(what, longest_ms);
    result = call();
    ReportStep({}, 0);
    CInterruptWait::SetRunning({});
    elapsed_ms = progress.ElapsedMs();
  }
  if (options_.verbose) {
    WriteError(std::string(function) + ": " + std::to_string(result) + " after " +
               std::to_string(elapsed_ms) + " ms (" + what + ")\n");
  }
  return result;
}

void CManagerSession::Require(const char* function, const std::string& what, std::uint64_t longest_ms,
                              const std::function<std::int32_t()>& call) const {
  if (interrupt_.WasPressed()) {
    throw CFailure("stopped by Ctrl-C before " + what);
  }
  const std::int32_t result = Call(function, what, longest_ms, call);
  if (result != TVMGR_OK) {
    Fail(what, result);
  }
}

std::uint32_t CManagerSession::Status() const {
  std::uint32_t status = TVMGR_STATUS_UNKNOWN;
  // Not stopped by Ctrl-C: who watches the status ends in order.
  const std::string what = "asking for the printer's status";
  const std::uint64_t start = GetTickCount64();
  const std::int32_t result = Call("TVMGR_GetPrinterStatus", what, limit::kShortExchange,
                                   [&] { return TVMGR_GetPrinterStatus(&status); });
  exchange_ms_ = GetTickCount64() - start;
  if (result != TVMGR_OK) {
    Fail(what, result);
  }
  return status;
}

void CManagerSession::RequireAnsweringPrinter() const {
  if (!options_.no_check && Status() == TVMGR_STATUS_UNKNOWN) {
    throw CUnreachable(kSilent, std::string(kSilentAdvice) + "; --no-check tries the command all the same");
  }
}

void CManagerSession::LoadAll() const {
  Require("TVMGR_LoadSetting", "reading all settings and file lists", limit::kFullLoad,
          [] { return TVMGR_LoadSetting(true, 0); });
  // A silent printer is no error for the module. The background file counts for nothing here: its entry is
  // always there after a load.
  const auto settings = AllSettings();
  const bool answered = std::any_of(settings.begin(), settings.end(), [&](const tagSettingName& setting) {
    return setting.id != TVMGR_SETTING_BACKGROUND && Value(setting.id).has_value();
  });
  if (!answered) {
    throw CUnreachable(kSilent, kSilentAdvice);
  }
}

bool CManagerSession::IsNetwork() const {
  return !KnownPrinter().address.empty();
}

std::optional<std::string> CManagerSession::Value(std::int32_t id) const {
  std::int32_t length = 0;
  if (!TVMGR_GetSettingValue(id, nullptr, &length)) {
    return std::nullopt;
  }
  // The bytes of an empty value must not be asked for.
  std::string value(static_cast<std::size_t>(std::max(length, 0)), '\0');
  if (!value.empty() && !TVMGR_GetSettingValue(id, reinterpret_cast<std::uint8_t*>(value.data()), &length)) {
    return std::nullopt;
  }
  return value;
}

std::vector<std::string> CManagerSession::FileNames(std::int32_t list) const {
  std::uint32_t count = 0;
  const std::int32_t result = TVMGR_GetRegistFileArraySize(list, &count);
  if (result != TVMGR_OK) {
    Fail("reading a file list", result);
  }
  std::vector<std::string> names;
  for (std::uint32_t i = 0; i < count; ++i) {
    std::uint32_t length = 0;
    const auto index = static_cast<std::int32_t>(i);
    std::int32_t name_result = TVMGR_GetRegistFileArrayData(list, index, nullptr, &length);
    std::wstring name(length, L'\0');
    if (name_result == TVMGR_OK) {
      // The string's own terminator is the room for the one that the module writes.
      std::uint32_t capacity = length + 1;
      name_result = TVMGR_GetRegistFileArrayData(list, index, name.data(), &capacity);
    }
    if (name_result != TVMGR_OK) {
      Fail("reading a file list", name_result);
    }
    if (!name.empty()) {  // a line of the listing may lack a name
      names.push_back(ToUtf8(name));
    }
  }
  return names;
}

void CManagerSession::Remark(const std::string& text) const {
  if (!options_.quiet) {
    WriteError(text + "\n");
  }
}

}  // namespace tvmgr

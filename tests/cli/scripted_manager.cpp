// A TaviraManager.dll that finds and answers what SCRIPTED_MANAGER says, by these words in it: "no_network" (the
// broadcast fails), "silent" (a printer that announced itself does not give its name), "late" (it takes 5 s for it),
// "none" (nothing is found), "quick" (searches take no time), "busy" (the printer's state). All other functions do nothing.
#include <windows.h>

#include <cstdint>
#include <cwchar>

#include "tavira/TaviraManager.h"

namespace {

ULONGLONG began_at = 0;
volatile bool is_stopped = false;

bool Says(const wchar_t* word) {
  wchar_t script[64] = L"";
  GetEnvironmentVariableW(L"SCRIPTED_MANAGER", script, 64);
  return std::wcsstr(script, word) != nullptr;
}

/** A text that whoever releases it never frees. */
struct tagText {
  TvmgrTextData head;
  TvmgrChar text[16];
};

void Assign(TvmgrText& target, tagText& text) {
  text.head.references = 1'000'000;
  target = text.text;
}

}  // namespace

extern "C" {

std::int32_t Nothing() {
  return 0;
}

// As the module, which waits for the worker of a search, but longer than any busy computer takes for anything else.
std::int32_t TVMGR_Terminate() {
  while (began_at != 0 && !Says(L"quick") && GetTickCount64() - began_at < 12'000) {
    Sleep(10);
  }
  return 0;
}

std::int32_t TVMGR_GetPrinterStatus(std::uint32_t* status) {
  *status = Says(L"busy") ? TVMGR_STATUS_BUSY : TVMGR_STATUS_IDLE;
  return 0;
}

std::int32_t TVMGR_StartSearchPrinter(std::uint32_t kind, std::uint32_t) {
  began_at = GetTickCount64();
  is_stopped = kind == TVMGR_SEARCH_NETWORK && Says(L"no_network");
  return is_stopped ? TVMGR_SEARCH_FAILED : TVMGR_OK;
}

std::int32_t TVMGR_StopSearchPrinter(std::uint32_t) {
  Sleep(Says(L"silent") ? 36'000 : 0);
  is_stopped = true;
  return 0;
}

std::int32_t TVMGR_GetSearchPrinterStatus() {
  return !is_stopped && GetTickCount64() - began_at < (Says(L"late")    ? 8000U
                                                       : Says(L"quick") ? 0U
                                                                        : 3000U)
             ? 1
             : 0;
}

std::int32_t TVMGR_GetSearchedPrinterInfo(std::int32_t kind, std::int32_t, TvmgrFoundPrinter* record,
                                          std::uint32_t* count) {
  static tagText model{{}, L"LX-R4100"};
  static tagText device{{}, L"usb#1"};
  static tagText address{{}, L"192.0.2.7"};
  if (count != nullptr) {
    *count = Says(L"none") ? 0 : 1;
  }
  if (record != nullptr) {
    record->kind = kind;
    Assign(record->text1, model);
    kind == TVMGR_SEARCH_USB ? Assign(record->text3, device) : Assign(record->text5, address);
  }
  return 0;
}
}

/*
 * TaviraManager for C++17: the functions of TaviraManager.h as one object.
 *
 * Header only; it keeps no state beside the module's own. What the functions do, how long they block and what their codes
 * mean stands in TaviraManager.h, whose conventions hold here too; this file says only what is different:
 *
 *  - An Error is thrown for every result but TVMGR_OK. It carries the code, its words and the function.
 *  - Texts are std::wstring. Where wchar_t has 32 bits (Linux), they are converted to UTF-16 and back.
 *  - Values and answers that may be missing are std::optional. An empty one is what a silent printer looks like.
 *  - What would end the process (a negative index, a buffer that is too small, the bytes of an empty value) and what would be
 *    cut short (a zero character inside a text, a number that does not fit) is an Error, and nothing is called.
 *
 * One thread, one Manager at a time. Only a printer search can be ended early; every other call runs to its end.
 */
#ifndef TAVIRA_MANAGER_HPP_
#define TAVIRA_MANAGER_HPP_

#include <tavira/records.hpp>

#include <algorithm>
#include <chrono>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace tavira {

/** The module's one manager, from construction to destruction. */
class Manager {
 public:
  /** Throws also when there is a manager already, made by whomever: a second one would leak the first. */
  Manager() {
    constexpr const char* kFunction = "TVMGR_Initialize";
    if (TVMGR_GetSearchPrinterStatus() != TVMGR_NOT_INITIALIZED) {
      throw Error(kFunction, TVMGR_BAD_ARGUMENT, "there is a manager already");
    }
    const std::int32_t result = TVMGR_Initialize();
    if (result != TVMGR_OK) {
      TVMGR_Terminate();  // a failed start may leave a manager in place
      throw Error(kFunction, result);
    }
  }
  /**
   * Waits for the worker of the last search: until 3 s after its start, also when it was stopped before. Printers
   * that are being asked for their names are given up. See TVMGR_Terminate.
   */
  ~Manager() { TVMGR_Terminate(); }
  Manager(const Manager&) = delete;
  Manager& operator=(const Manager&) = delete;

  // --- Choosing the printer. One Manager for each printer: see convention 10 of TaviraManager.h. ---

  /** By device path or address. The port name, when it is empty, is that of a printer port installed for it. */
  void Choose(const FoundPrinter& printer, const std::wstring& port_name = {}) {
    constexpr const char* kFunction = "TVMGR_UpdatePortComInfo";
    const detail::Utf16 texts[] = {
        detail::ToUtf16(kFunction, printer.name), detail::ToUtf16(kFunction, printer.identification),
        detail::ToUtf16(kFunction, printer.device_path), detail::ToUtf16(kFunction, printer.product_name),
        detail::ToUtf16(kFunction, printer.address)};
    TvmgrFoundPrinter record = {printer.kind,      texts[0].c_str(),   texts[1].c_str(), texts[2].c_str(),
                                printer.vendor_id, printer.product_id, texts[3].c_str(), texts[4].c_str()};
    const detail::Utf16 port = detail::ToUtf16(kFunction, port_name);
    detail::Check(kFunction, TVMGR_UpdatePortComInfo(&record, port_name.empty() ? nullptr : port.c_str()));
  }
  void ChooseAddress(const std::wstring& address) {
    Choose({TVMGR_SEARCH_NETWORK, {}, {}, {}, 0, 0, {}, address});
  }
  /** A port of the print spooler, such as L"USB001". */
  void ChoosePort(const std::wstring& port_name) {
    constexpr const char* kFunction = "TVMGR_UpdatePortComInfo";
    detail::Check(kFunction, TVMGR_UpdatePortComInfo(nullptr, detail::ToUtf16(kFunction, port_name).c_str()));
  }
  /** Ferrolink.dll gets empty texts and takes what it takes by default. */
  void ChooseDefault() {
    detail::Check("TVMGR_UpdatePortComInfo", TVMGR_UpdatePortComInfo(nullptr, nullptr));
  }
  FoundPrinter Choice() const {
    detail::ModuleRecord record;
    detail::Check("TVMGR_GetPrinterDeviceInfo", TVMGR_GetPrinterDeviceInfo(record.Get()));
    return record.Read();
  }

  // --- Settings ---

  /** Reads everything: all settings, the file lists, the background file. A silent printer is no error. */
  void Load() { detail::Check("TVMGR_LoadSetting", TVMGR_LoadSetting(true, 0)); }
  /** Refreshes one setting that Load has stored before. */
  void Load(Setting setting) { detail::Check("TVMGR_LoadSetting", TVMGR_LoadSetting(false, setting)); }
  /** Refreshes these in one transaction. Replaces the load list. `Settings`: a range of Setting. */
  template <typename Settings>
  void LoadThese(const Settings& settings, bool guard_resolution = true) {
    detail::Check("TVMGR_ClearLoadList", TVMGR_ClearLoadList());
    for (const Setting setting : settings) {
      detail::Check("TVMGR_SetLoadList", TVMGR_SetLoadList(static_cast<std::uint32_t>(setting)));
    }
    detail::Check("TVMGR_LoadSettingByList", TVMGR_LoadSettingByList(guard_resolution));
  }
  void LoadThese(std::initializer_list<Setting> settings, bool guard_resolution = true) {
    LoadThese<std::initializer_list<Setting>>(settings, guard_resolution);
  }

  /** The bytes that the printer reported when it was last loaded; none when it reported nothing. */
  std::optional<std::string> Value(Setting setting) const {
    std::int32_t length = 0;
    if (!TVMGR_GetSettingValue(setting, nullptr, &length)) {
      return std::nullopt;
    }
    std::string value(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    if (!value.empty() &&
        !TVMGR_GetSettingValue(setting, reinterpret_cast<std::uint8_t*>(value.data()), &length)) {
      return std::nullopt;
    }
    return value;
  }
  /** All that are stored, in the order of their numbers. */
  std::vector<std::pair<Setting, std::string>> Values() const {
    std::vector<std::pair<Setting, std::string>> values;
    for (std::int32_t id = TVMGR_SETTING_IMP_S; id <= TVMGR_SETTING_CMP_U; ++id) {
      if (std::optional<std::string> value = Value(static_cast<Setting>(id))) {
        values.emplace_back(static_cast<Setting>(id), std::move(*value));
      }
    }
    return values;
  }

  /**
   * Writes a range of pairs (Setting, bytes), saves, and reads back: returns only when the printer shows every
   * value (some are not compared: see TVMGR_UpdatePrinterSetting). An Error with TVMGR_NOT_CONFIRMED: sent, but it
   * shows another one. Replaces the update list.
   */
  template <typename Changes>
  void UpdateThese(const Changes& changes, bool guard_resolution = true) {
    detail::Check("TVMGR_ClearUpdateList", TVMGR_ClearUpdateList());
    for (const auto& [setting, value] : changes) {
      const Bytes bytes(value);
      const auto length = detail::CheckedLength<std::int32_t>("TVMGR_SetUpdateList", bytes.Size());
      detail::Check("TVMGR_SetUpdateList",
                    TVMGR_SetUpdateList(static_cast<std::uint32_t>(setting), bytes.Data(), length));
    }
    if (guard_resolution) {
      detail::Check("TVMGR_UpdatePrinterSetting", TVMGR_UpdatePrinterSetting());
    } else {
      detail::Check("TVMGR_UpdatePrinterSettingNoChangeDPI", TVMGR_UpdatePrinterSettingNoChangeDPI());
    }
  }
  void Update(Setting setting, Bytes value, bool guard_resolution = true) {
    UpdateThese(std::initializer_list<std::pair<Setting, Bytes>>{{setting, value}}, guard_resolution);
  }

  void UpdatePrefix(char control, char format, char delimiter) {
    detail::Check("TVMGR_UpdatePrefix",
                  TVMGR_UpdatePrefix(static_cast<std::uint8_t>(control), static_cast<std::uint8_t>(format),
                                     static_cast<std::uint8_t>(delimiter)));
  }
  /** True also for a silent printer. */
  bool HasDefaultPrefix() {
    std::uint8_t is_default = 0;
    detail::Check("TVMGR_IsDefaultPrefix", TVMGR_IsDefaultPrefix(&is_default));
    return is_default != 0;
  }

  // --- Status, commands, operations ---

  /** TVMGR_STATUS_UNKNOWN: the printer does not answer. */
  Status PrinterStatus() {
    std::uint32_t status = TVMGR_STATUS_UNKNOWN;
    detail::Check("TVMGR_GetPrinterStatus", TVMGR_GetPrinterStatus(&status));
    return static_cast<Status>(status);
  }
  void Send(Bytes command, bool allow_resolution_change = false) {
    constexpr const char* kFunction = "TVMGR_DirectSendCommand";
    const auto length = detail::CheckedLength<std::int32_t>(kFunction, command.Size());
    detail::Check(kFunction, TVMGR_DirectSendCommand(command.Data(), length, allow_resolution_change));
  }
  /**
   * Waits until the printer is no longer busy, up to 60 s after the command (head maintenance 300 s), and longer for a
   * silent one: see TVMGR_ExecutePrinterOperation. `data`: for TVMGR_OP_SEND_DATA.
   */
  void Execute(Operation operation, Bytes data = {}) {
    constexpr const char* kFunction = "TVMGR_SetExecuteList";
    if (operation == TVMGR_OP_SEND_DATA && data.Size() == 0) {
      throw Error(kFunction, TVMGR_BAD_ARGUMENT);  // the module would send the data of an earlier call
    }
    const auto length = detail::CheckedLength<std::int32_t>(kFunction, data.Size());
    detail::Check(kFunction,
                  TVMGR_SetExecuteList(static_cast<std::uint32_t>(operation), data.Data(), length));
    detail::Check("TVMGR_ExecutePrinterOperation", TVMGR_ExecutePrinterOperation());
  }

  // --- Stored files ---

  std::uint32_t FileCount(FileList list) const {
    std::uint32_t count = 0;
    detail::Check("TVMGR_GetRegistFileArraySize", TVMGR_GetRegistFileArraySize(list, &count));
    return count;
  }
  std::wstring FileName(FileList list, std::size_t index) const {
    constexpr const char* kFunction = "TVMGR_GetRegistFileArrayData";
    const auto checked = detail::CheckedLength<std::int32_t>(kFunction, index);
    std::uint32_t length = 0;
    detail::Check(kFunction, TVMGR_GetRegistFileArrayData(list, checked, nullptr, &length));
    detail::Utf16 name(length, 0);
    std::uint32_t capacity = length + 1;  // with the string's own terminator
    detail::Check(kFunction, TVMGR_GetRegistFileArrayData(list, checked, name.data(), &capacity));
    return detail::FromUtf16(name.c_str());
  }
  /** The names that the last full load, registration, deletion or operation found; entries without one are left out. */
  std::vector<std::wstring> Files(FileList list) const {
    std::vector<std::wstring> names(FileCount(list));
    for (std::size_t i = 0; i < names.size(); ++i) {
      names[i] = FileName(list, i);
    }
    names.erase(std::remove(names.begin(), names.end(), std::wstring()), names.end());
    return names;
  }
  /**
   * A stored file, or none: there is no such file, or the printer was silent. What the printer sends compressed
   * (":Z64:") stays so.
   */
  std::optional<std::vector<std::uint8_t>> Fetch(FileList list, const std::wstring& name,
                                                 std::uint32_t timeout_ms = 60000) {
    constexpr const char* kLoad = "TVMGR_LoadStoredData";
    constexpr const char* kGet = "TVMGR_GetStoredData";
    const std::uint8_t mode = list == TVMGR_LIST_FMT || list == TVMGR_LIST_ZPL ? 1 : 0;
    detail::Check(kLoad, TVMGR_LoadStoredData(detail::ToUtf16(kLoad, name).c_str(), mode, timeout_ms));
    std::uint32_t length = 0;
    detail::Check(kGet, TVMGR_GetStoredData(nullptr, &length));
    if (length == 0) {
      return std::nullopt;
    }
    std::vector<std::uint8_t> bytes(length);
    detail::Check(kGet, TVMGR_GetStoredData(bytes.data(), &length));
    return bytes;
  }
  /** Stores a file, given as the printer's own download command, and proves it (but a format) by listing the files. */
  void Register(Request request, Bytes command, Bytes secondary = {}) {
    SetRequest(request, command, secondary);
    detail::Check("TVMGR_RegistData", TVMGR_RegistData());
  }
  /**
   * Deletes a stored file and proves it (but the background file) by listing the files; a silent printer lists none. The
   * name is 8-bit text, as on the printer.
   */
  void Delete(Request request, std::string_view name) {
    SetRequest(request, name, {});
    detail::Check("TVMGR_DeleteData", TVMGR_DeleteData());
  }

  // --- Backup and restore ---

  void Backup(const std::wstring& path, const BackupSections& sections = {}, bool reload = true) {
    constexpr const char* kFunction = "TVMGR_UpdateBackupInfo";
    const detail::Utf16 utf16_path = detail::ToUtf16(kFunction, path);
    const auto flag = [](bool is_wanted) { return static_cast<std::uint8_t>(is_wanted ? 1 : 0); };
    const TvmgrBackupInfo info = {
        utf16_path.c_str(),     flag(sections.settings), flag(sections.section_p), flag(sections.graphics),
        flag(sections.formats), flag(sections.fonts),    flag(sections.section_c), flag(sections.background)};
    detail::Check(kFunction, TVMGR_UpdateBackupInfo(&info));
    detail::Check("TVMGR_Backup", TVMGR_Backup(flag(reload)));
  }
  /** Sends a backup file. That the printer took it shows in the values, or in a second backup. */
  void Restore(const std::wstring& path) {
    constexpr const char* kFunction = "TVMGR_Restore";
    detail::Check(kFunction, TVMGR_Restore(detail::ToUtf16(kFunction, path).c_str()));
  }

  // --- Finding printers ---

  /**
   * Starts a search, which ends after 3 s, or up to 36 s later when printers that it asks for their names have
   * fallen silent. Waits for the worker of an earlier one as long. After an Error none runs.
   */
  void StartSearch(SearchKind kind) {
    const std::int32_t result = TVMGR_StartSearchPrinter(static_cast<std::uint32_t>(kind), 0);
    if (result != TVMGR_OK) {
      TVMGR_StopSearchPrinter(static_cast<std::uint32_t>(kind));
      throw Error("TVMGR_StartSearchPrinter", result);
    }
  }
  /** Ends a search before its time. Another thread may call it. */
  void StopSearch(SearchKind kind) {
    detail::Check("TVMGR_StopSearchPrinter", TVMGR_StopSearchPrinter(static_cast<std::uint32_t>(kind)));
  }
  bool IsSearching() const {
    const std::int32_t status = TVMGR_GetSearchPrinterStatus();
    if (status < 0) {
      throw Error("TVMGR_GetSearchPrinterStatus", status);
    }
    return status == 1;
  }
  std::uint32_t FoundCount(SearchKind kind) const {
    std::uint32_t count = 0;
    detail::Check("TVMGR_GetSearchedPrinterInfo", TVMGR_GetSearchedPrinterInfo(kind, 0, nullptr, &count));
    return count;
  }
  FoundPrinter Found(SearchKind kind, std::size_t index) const {
    std::optional<FoundPrinter> printer = ReadFound(kind, index);
    if (!printer) {
      throw Error("TVMGR_GetSearchedPrinterInfo", TVMGR_BAD_ARGUMENT, "no printer with this index was found");
    }
    return std::move(*printer);
  }
  /** The results of the last search of this kind. */
  std::vector<FoundPrinter> FoundPrinters(SearchKind kind) const {
    std::vector<FoundPrinter> printers;
    while (std::optional<FoundPrinter> printer = ReadFound(kind, printers.size())) {
      printers.push_back(std::move(*printer));
    }
    return printers;
  }
  /**
   * Searches for 3 s and returns what was found; takes up to 36 s more when printers that are asked for their
   * names have fallen silent. `go_on`, when given, is called about every 50 ms with the time since the start; it
   * ends the search by returning false, or by throwing, and then the names are still asked for. The next search
   * and the end of the Manager wait until 3 s after this one's start.
   */
  std::vector<FoundPrinter> Search(SearchKind kind,
                                   const std::function<bool(std::chrono::milliseconds)>& go_on = {}) {
    const auto start = std::chrono::steady_clock::now();
    StartSearch(kind);
    try {
      while (IsSearching()) {
        const auto elapsed = std::chrono::steady_clock::now() - start;
        if (go_on && !go_on(std::chrono::duration_cast<std::chrono::milliseconds>(elapsed))) {
          StopSearch(kind);
          break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
      }
    } catch (...) {
      TVMGR_StopSearchPrinter(static_cast<std::uint32_t>(kind));
      throw;
    }
    return FoundPrinters(kind);
  }

  // --- Kept for hosts that call them: fixed answers, as TaviraManager.h says. ---

  void ClearRegistList() { detail::Check("TVMGR_ClearRegistList", TVMGR_ClearRegistList()); }
  void SearchPort() { detail::Check("TVMGR_SearchPort", TVMGR_SearchPort(nullptr, nullptr, 0)); }
  void CheckPort() { detail::Check("TVMGR_CheckPort", TVMGR_CheckPort(0)); }
  void SendPrnFile() { detail::Check("TVMGR_SendPrnFile", TVMGR_SendPrnFile(nullptr)); }
  void GetDeviceInfo() { detail::Check("TVMGR_GetDeviceInfo", TVMGR_GetDeviceInfo(nullptr, nullptr, 0, 0)); }
  void SetCallbackWnd(struct HWND__* window) {
    detail::Check("TVMGR_SetCallbackWnd", TVMGR_SetCallbackWnd(window));
  }

 private:
  /** None at and beyond the end of the list. */
  static std::optional<FoundPrinter> ReadFound(SearchKind kind, std::size_t index) {
    constexpr const char* kFunction = "TVMGR_GetSearchedPrinterInfo";
    const auto checked = detail::CheckedLength<std::int32_t>(kFunction, index);
    detail::ModuleRecord record;
    std::uint32_t count = 0;
    detail::Check(kFunction, TVMGR_GetSearchedPrinterInfo(kind, checked, record.Get(), &count));
    return index < count ? std::optional<FoundPrinter>(record.Read()) : std::nullopt;
  }

  static void SetRequest(Request request, Bytes primary, Bytes secondary) {
    constexpr const char* kFunction = "TVMGR_UpdateRegistList";
    const auto size = detail::CheckedLength<std::uint32_t>(kFunction, primary.Size());
    const auto secondary_size = detail::CheckedLength<std::uint32_t>(kFunction, secondary.Size());
    detail::Check(kFunction, TVMGR_UpdateRegistList(static_cast<std::uint32_t>(request), primary.Data(), size,
                                                    secondary.Data(), secondary_size));
  }
};

}  // namespace tavira

#endif /* TAVIRA_MANAGER_HPP_ */

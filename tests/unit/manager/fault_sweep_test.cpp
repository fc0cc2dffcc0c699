#include "support/fault_sweep.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "backup/backup_format.h"
#include "support/allocation_faults.h"
#include "support/exchange_texts.h"
#include "support/temporary_file.h"
#include "unit/discovery/usb/recorded_printer.h"

namespace tavira::test {
namespace {

using enum EFault;
using Results = std::map<EFault, std::set<std::int32_t>>;

// Steps whose outcome does not matter: the resolution guard, the wait for an idle printer, what follows a change.
const Results kGuarded{{kPortCall, {TVMGR_OK}}, {kAllocation, {TVMGR_OK}}};
const Results kLoading{{kPortCall, {TVMGR_OK}}, {kAllocation, {TVMGR_OK, TVMGR_PAYLOAD_UNREADABLE}}};
// What cannot be read in the registry or of a device is not there.
const Results kFinding{{kRegistryCall, {TVMGR_OK}}, {kDeviceCall, {TVMGR_OK}}};
// The worker has nobody to tell; without one, the host's stop ends the search.
const Results kSearching{{kRegistryCall, {TVMGR_OK}},
                         {kDeviceCall, {TVMGR_OK}},
                         {kSocketCall, {TVMGR_OK}},
                         {kAllocation, {TVMGR_OK, TVMGR_PORT_NOT_READY}}};

// Made here: in the operations themselves they would be allocations of the test's own.
const WideString kGraphic = Wide("LOGO.PNG");
const WideString kFormat = Wide("LABEL.ZPL");
const WideString kTcpPort = Wide("IP_192.0.2.7");
const WideString kUsbPort = Wide("USB001");
const WideString kAddress = Wide("192.0.2.7");
const std::string kPicture(300, 'p');
const std::string kLongValue(100, 'x');
constexpr const char* kRestored = "^XA^S(CMP,F,restored^XZ^XA^JUS^XZ^XA^H(E^XZ";

std::uint32_t printer_status = 0;
std::uint8_t is_default_prefix = 0;
TvmgrFoundPrinter record;
std::uint32_t found = 0;

/** The file that the backup goes to and the restore comes from. */
const CTemporaryFile& HostFile() {
  static const CTemporaryFile file;
  return file;
}

void LoadEverything(CTestWorld&) {
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadSetting(true, 0));
}

/** A printer whose guard has to write on both sides, and that has changed since it was loaded. */
void LoadFromANonNeutralPrinter(CTestWorld& world) {
  world.printer.SetSetting("CLR,P", "300");
  LoadEverything(world);
  world.printer.SetSetting("CMP,F", "fresh");
  TVMGR_SetLoadList(6);
  TVMGR_SetLoadList(12);
}

/** The guard's own put-back may be what has failed. */
bool IsPutBack(CTestWorld& world, EFault struck) {
  return struck != kNone || world.printer.Setting("CLR,P") == "300";
}

bool IsLoaded(CTestWorld& world, EFault struck) {
  return StoredValue(TVMGR_SETTING_CMP_F) == "fresh" && IsPutBack(world, struck);
}

void StoreFiles(CTestWorld& world) {
  world.printer.PutFile("E:KORVDEF.BGD", "background");
  world.printer.PutFile("E:LOGO.PNG", kPicture, true);
  world.printer.PutFile("E:LABEL.ZPL", "^FO0,0^FDlabel^FS");
}

auto Holds(const char* file) {
  return [file](CTestWorld& world, EFault) { return world.printer.File(file).has_value(); };
}

auto HoldsNo(const char* file) {
  return [file](CTestWorld& world, EFault) { return !world.printer.File(file).has_value(); };
}

std::string StoredFile() {
  std::uint32_t size = 0;
  TVMGR_GetStoredData(nullptr, &size);
  std::string bytes(size, '\0');
  TVMGR_GetStoredData(reinterpret_cast<std::uint8_t*>(bytes.data()), &size);
  return bytes;
}

void SetRequest(std::uint32_t kind, std::string_view primary) {
  TVMGR_UpdateRegistList(kind, reinterpret_cast<const std::uint8_t*>(primary.data()),
                         static_cast<std::uint32_t>(primary.size()), nullptr, 0);
}

auto Requesting(std::uint32_t kind, const char* primary) {
  return [kind, primary](CTestWorld& world) {
    StoreFiles(world);
    SetRequest(kind, primary);
  };
}

std::int32_t Execute(std::uint32_t code) {
  const std::int32_t stored = TVMGR_SetExecuteList(code, reinterpret_cast<const std::uint8_t*>("data"), 4);
  return stored == TVMGR_OK ? TVMGR_ExecutePrinterOperation() : stored;
}

auto HasSent(const char* commands) {
  return [commands](CTestWorld& world, EFault) {
    const std::vector<std::string> sent = world.Sent();
    return std::any_of(sent.begin(), sent.end(), [&](const auto& one) { return one.starts_with(commands); });
  };
}

void ChooseBackup(CTestWorld& world) {
  StoreFiles(world);
  const TvmgrBackupInfo info{HostFile().Path().c_str(), 1, 1, 1, 1, 1, 1, 1};
  EXPECT_EQ(TVMGR_OK, TVMGR_UpdateBackupInfo(&info));
  HostFile().Write("");
}

/** The first backup of all has met no fault that it could have met. */
bool IsWholeBackup(CTestWorld&, EFault) {
  static const std::string undisturbed = HostFile().Read();
  return HostFile().Read() == undisturbed;
}

/** Whole pieces, whatever failed, and the trailer unless there was no memory or no file for it. */
bool IsOfWholePieces(CTestWorld&, std::int32_t, EFault struck) {
  const std::string contents = HostFile().Read();
  return contents.empty() || contents.ends_with(struck == kPortCall ? kBackupTrailer : "\r\n");
}

/** Two network ports of one address, of which an installed printer uses the second, and a USB printer. */
void PlugIn(CTestWorld& world) {
  const tagMemoryKey ports =
      Key("Ports", {{"Other", {{"IPAddress", "192.0.2.7"}}}, {"IP_192.0.2.7", {{"HostName", "192.0.2.7"}}}});
  const tagMemoryKey printers =
      Key("Printers", {{"Label", {{"Port", "IP_192.0.2.7"}, {"Printer Driver", "LX"}}}});
  const tagMemoryKey print =
      Key("Print", {Key("Monitors", {Key("Standard TCP/IP Port", {ports})}), printers});
  world.machine = Key("", {Key("SYSTEM", {Key("CurrentControlSet", {Key("Control", {print})})})});
  world.profiles.values["SupportDriver/0"] = "LX";
  world.usb = RootHubTree();
  for (tagRecordedInterface& entry : world.usb.interfaces) {
    entry.parameters = {"Device Parameters", {{"Base Name", "USB"}}, {{"Port Number", 1}}};
  }
}

std::string Narrow(TvmgrText text) {
  return {text, text + TvmgrTextLength(text)};
}

/** Tells the choice as the module reports it: port name, device path, address. */
std::string Choice() {
  TvmgrFoundPrinter choice{};
  EXPECT_EQ(TVMGR_OK, TVMGR_GetPrinterDeviceInfo(&choice));
  const std::string text = Narrow(choice.text1) + "|" + Narrow(choice.text3) + "|" + Narrow(choice.text5);
  TvmgrFoundPrinterRelease(&choice);
  return text;
}

/** Under a fault the choice may lack what could not be found, and is otherwise the same. */
auto Chooses(std::string whole, std::vector<std::string> reduced) {
  return [whole, reduced](CTestWorld&, EFault struck) {
    const std::string choice = Choice();
    return choice == whole || (struck != kNone && std::count(reduced.begin(), reduced.end(), choice) == 1);
  };
}

std::int32_t Search(std::uint32_t kind) {
  const std::int32_t started = TVMGR_StartSearchPrinter(kind, 0);
  if (started != TVMGR_OK) {
    TVMGR_StopSearchPrinter(kind);
  }
  while (TVMGR_GetSearchPrinterStatus() == 1) {
    std::this_thread::yield();
  }
  found = 0;
  const std::int32_t read = TVMGR_GetSearchedPrinterInfo(static_cast<std::int32_t>(kind), 0, &record, &found);
  if (started != TVMGR_OK) {
    TvmgrFoundPrinterRelease(&record);
    return started;
  }
  return read;
}

/** Both printers with their names, or under a fault those that could be asked. */
bool IsNetworkFound(CTestWorld&, EFault struck) {
  const std::string name = Narrow(record.text1) + "|" + Narrow(record.text2);
  TvmgrFoundPrinterRelease(&record);
  const bool is_known =
      name == "LX-R4100|printer 2" || name == "LX-R4100|printer 3" || (found == 0 && name == "|");
  EXPECT_TRUE(is_known) << found << " " << name;
  return found == 2 || (struck != kNone && found < 2);
}

/** A device that tells nothing is listed all the same, with empty texts; none at all when the list failed. */
bool IsFound(CTestWorld&, EFault struck) {
  const std::string all[] = {Narrow(record.text1), Narrow(record.text2), Narrow(record.text3),
                             Narrow(record.text4)};
  const std::string whole[] = {"LX-R4100", kDeviceId, kPrinterPath, "LX \xAC"};
  bool is_found = found == 1 || (struck != kNone && found == 0);
  for (std::size_t i = 0; found == 1 && i < std::size(all); ++i) {
    is_found = is_found && (all[i] == whole[i] || (struck == kDeviceCall && all[i].empty()));
  }
  TvmgrFoundPrinterRelease(&record);
  return is_found;
}

const std::vector<tagSweptOperation>& Operations() {
  static const std::vector<tagSweptOperation> operations{
      {"load one", LoadFromANonNeutralPrinter, [] { return TVMGR_LoadSetting(false, 12); }, IsLoaded,
       kGuarded},
      {"load by list", LoadFromANonNeutralPrinter, [] { return TVMGR_LoadSettingByList(true); }, IsLoaded,
       kGuarded},
      {"load everything", StoreFiles, [] { return TVMGR_LoadSetting(true, 0); },
       [](CTestWorld& world, EFault struck) {
         std::uint32_t count = 0;
         TVMGR_GetRegistFileArraySize(TVMGR_LIST_ZPL, &count);
         const std::string background = StoredValue(TVMGR_SETTING_BACKGROUND);
         return count == 1 && StoredValue(1) == world.printer.Setting("IMP,S") &&
                (background == "background" || (struck == kAllocation && background == "(none)"));
       },
       kLoading},
      {"prefix change", LoadEverything, [] { return TVMGR_UpdatePrefix('!', '^', ';'); },
       [](CTestWorld& world, EFault) { return world.printer.Setting("CCC,T") == "21"; }, kGuarded},
      {"prefix test", nullptr, [] { return TVMGR_IsDefaultPrefix(&is_default_prefix); },
       [](CTestWorld&, EFault) { return is_default_prefix == 1; }},
      {"status",
       nullptr,
       [] { return TVMGR_GetPrinterStatus(&printer_status); },
       [](CTestWorld&, EFault) { return printer_status == TVMGR_STATUS_IDLE; },
       {},
       [](CTestWorld&, std::int32_t result, EFault) {
         return result == TVMGR_OK || printer_status == TVMGR_STATUS_UNKNOWN;
       }},
      {"direct command", LoadFromANonNeutralPrinter,
       [] { return TVMGR_DirectSendCommand(reinterpret_cast<const std::uint8_t*>("~HS"), 3, true); },
       [](CTestWorld& world, EFault struck) {
         return HasSent("~HS")(world, struck) && IsPutBack(world, struck);
       },
       kGuarded},
      {"update",
       [](CTestWorld& world) {
         StoreFiles(world);
         world.printer.SetSetting("CLR,P", "300");
         TVMGR_SetUpdateList(12, reinterpret_cast<const std::uint8_t*>("new"), 3);
       },
       [] { return TVMGR_UpdatePrinterSetting(); },
       [](CTestWorld& world, EFault struck) {
         return world.printer.Setting("CMP,F") == "new" && IsPutBack(world, struck);
       },
       kLoading},
      {"fetch",
       [](CTestWorld& world) {
         StoreFiles(world);
         EXPECT_EQ(TVMGR_OK, TVMGR_LoadStoredData(Wide("KORVDEF.BGD").c_str(), 0, 1000));
       },
       [] { return TVMGR_LoadStoredData(kGraphic.c_str(), 0, 1000); },
       [](CTestWorld&, EFault) { return StoredFile() == kPicture; },
       {{kAllocation, {TVMGR_PAYLOAD_UNREADABLE}}},
       [](CTestWorld&, std::int32_t, EFault struck) {
         return struck != kPortCall || StoredFile() == "background";
       }},
      {"fetch a format", StoreFiles, [] { return TVMGR_LoadStoredData(kFormat.c_str(), 1, 1000); },
       [](CTestWorld&, EFault) { return StoredFile() == "^XA^DFE:LABEL.ZPL^FS^FO0,0^FDlabel^FS^XZ"; }},
      {"delete", Requesting(TVMGR_REQUEST_DELETE_GRAPHIC, "LOGO.PNG"), [] { return TVMGR_DeleteData(); },
       HoldsNo("E:LOGO.PNG")},
      {"delete the background", Requesting(TVMGR_REQUEST_BACKGROUND, "KORVDEF.BGD"),
       [] { return TVMGR_DeleteData(); }, HoldsNo("E:KORVDEF.BGD")},
      {"register", Requesting(TVMGR_REQUEST_REGISTER_FORMAT, "^XA^DFE:NEW.ZPL^FS^FDnew label^FS^XZ"),
       [] { return TVMGR_RegistData(); }, Holds("E:NEW.ZPL")},
      {"register a graphic", Requesting(TVMGR_REQUEST_REGISTER_GRAPHIC, "~DYE:NEW,B,P,3,0,:B64:YWJj:"),
       [] { return TVMGR_RegistData(); }, Holds("E:NEW.PNG")},
      {"send data", LoadEverything, [] { return Execute(TVMGR_OP_SEND_DATA); }, HasSent("data"), kGuarded},
      {"head maintenance", nullptr, [] { return Execute(TVMGR_OP_HEAD_MAINTENANCE); }, HasSent("~J(C"),
       kGuarded},
      {"factory reset", LoadFromANonNeutralPrinter, [] { return Execute(TVMGR_OP_FACTORY_RESET); },
       [](CTestWorld& world, EFault) { return world.printer.Setting("CMP,F") != "fresh"; }, kLoading},
      {"initialize memory", StoreFiles, [] { return Execute(TVMGR_OP_INITIALIZE_MEMORY); },
       HoldsNo("E:LOGO.PNG"), kLoading},
      {"backup", ChooseBackup, [] { return TVMGR_Backup(1); }, IsWholeBackup, kLoading, IsOfWholePieces},
      {"restore",
       [](CTestWorld& world) {
         world.printer.SetSetting("CLR,P", "300");
         HostFile().Write(kRestored);
       },
       [] { return TVMGR_Restore(HostFile().Path().c_str()); },
       [](CTestWorld& world, EFault) {
         return world.printer.Setting("CMP,F") == "restored" &&
                StoredValue(TVMGR_SETTING_CMP_F) == "restored";
       },
       {{kPortCall, {TVMGR_OK}},
        {kAllocation, {TVMGR_OK, TVMGR_FILE_ERROR, TVMGR_FILE_READ_ERROR}},
        {kFileCall, {TVMGR_OK, TVMGR_FILE_READ_ERROR}}}},
      {"choose a network port", PlugIn, [] { return TVMGR_UpdatePortComInfo(nullptr, kTcpPort.c_str()); },
       Chooses("IP_192.0.2.7||192.0.2.7", {"IP_192.0.2.7||"}), kFinding},
      {"choose a USB port", PlugIn, [] { return TVMGR_UpdatePortComInfo(nullptr, kUsbPort.c_str()); },
       Chooses(std::string("USB001|") + kPrinterPath + "|", {"USB001||"}), kFinding},
      {"choose a found printer", PlugIn,
       [] {
         TvmgrFoundPrinter printer{};
         printer.text5 = kAddress.c_str();
         return TVMGR_UpdatePortComInfo(&printer, nullptr);
       },
       Chooses("IP_192.0.2.7||192.0.2.7", {"Other||192.0.2.7", "||192.0.2.7"}), kFinding},
      {"report the choice", nullptr, [] { return TVMGR_GetPrinterDeviceInfo(&record); },
       [](CTestWorld&, EFault) {
         const std::string path = Narrow(record.text3);
         TvmgrFoundPrinterRelease(&record);
         return path == "\\\\?\\usb#lx";
       }},
      {"search USB", PlugIn, [] { return Search(TVMGR_SEARCH_USB); }, IsFound, kSearching},
      {"search the network", nullptr, [] { return Search(TVMGR_SEARCH_NETWORK); }, IsNetworkFound,
       kSearching},
      {"lists and requests", nullptr,
       [] {
         const auto* bytes = reinterpret_cast<const std::uint8_t*>(kLongValue.data());
         const TvmgrBackupInfo info{HostFile().Path().c_str(), 1, 1, 1, 1, 1, 1, 1};
         for (const std::int32_t result :
              {TVMGR_SetUpdateList(1, bytes, 100), TVMGR_SetExecuteList(TVMGR_OP_SEND_DATA, bytes, 100),
               TVMGR_UpdateBackupInfo(&info), TVMGR_UpdateRegistList(1, bytes, 100, bytes, 100),
               TVMGR_SetLoadList(1)}) {
           if (result != TVMGR_OK) {
             return result;
           }
         }
         return TVMGR_OK + 0;
       },
       [](CTestWorld& world, EFault struck) {
         return TVMGR_LoadSettingByList(true) == TVMGR_OK && HasSent("~H(IMP,S")(world, struck);
       }},
  };
  return operations;
}

TEST(FaultSweepTest, EveryOperationUnderEveryKindOfFault) {
  {  // what an undisturbed backup holds
    CTestWorld world;
    TVMGR_Initialize();
    ChooseBackup(world);
    EXPECT_EQ(TVMGR_OK, TVMGR_Backup(1));
    EXPECT_TRUE(IsWholeBackup(world, kNone));
    TVMGR_Terminate();
  }
  SweepFaults(Operations());
}

TEST(FaultSweepTest, AnInitializeWithoutMemoryLeavesNoManagerOrOneWithoutALink) {
  bool reached = true;
  for (std::uint32_t nth = 1; reached; ++nth) {
    ASSERT_LT(nth, 1000U);
    CTestWorld world;
    CAllocationFaults::Arm(nth);
    const std::int32_t result = TVMGR_Initialize();
    reached = CAllocationFaults::Disarm();
    EXPECT_EQ(reached ? TVMGR_OUT_OF_MEMORY : TVMGR_OK, result) << nth;
    const std::int32_t later = TVMGR_LoadSetting(false, 1);  // whatever is in place answers, and says so
    EXPECT_TRUE(reached ? later == TVMGR_NOT_INITIALIZED : later == TVMGR_OK) << nth << ": " << later;
    TVMGR_Terminate();
  }
}

}  // namespace
}  // namespace tavira::test

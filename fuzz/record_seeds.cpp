// The fuzz targets' first inputs: what passes between the module and the emulated printers while everything is done once.
//
// Usage: record_seeds FOLDER      writes FOLDER/TARGET/NUMBER
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>
#include <thread>

#include "tavira/TaviraManager.h"
#include "tests/recorder/memory_sink.h"
#include "tests/support/temporary_file.h"
#include "tests/support/test_world.h"
#include "tests/unit/discovery/network/memory_network.h"
#include "tests/unit/discovery/usb/recorded_printer.h"

namespace {

using namespace tavira::test;
namespace fs = std::filesystem;

class CSeeds {
 public:
  explicit CSeeds(fs::path folder) : folder_(std::move(folder)) {}

  void Add(std::initializer_list<const char*> targets, const std::string& bytes) {
    for (const char* target : targets) {
      if (!known_.emplace(target, bytes).second) {
        continue;
      }
      fs::create_directories(folder_ / target);
      std::ofstream file(folder_ / target / std::to_string(known_.size()), std::ios::binary);
      is_written_ = bool(file << bytes) && is_written_;
    }
  }
  bool IsWritten() const { return is_written_; }
  std::size_t Count() const { return known_.size(); }

 private:
  fs::path folder_;
  std::set<std::pair<std::string, std::string>> known_;
  bool is_written_ = true;
};

void SetRequest(std::uint32_t kind, const std::string& primary) {
  TVMGR_UpdateRegistList(kind, reinterpret_cast<const std::uint8_t*>(primary.data()),
                         static_cast<std::uint32_t>(primary.size()), nullptr, 0);
}

std::int32_t Search(std::uint32_t kind) {
  const std::int32_t result = TVMGR_StartSearchPrinter(kind, 0);
  while (TVMGR_GetSearchPrinterStatus() == 1) {
    std::this_thread::yield();
  }
  return result;
}

/** Everything that makes the module talk; how many of the calls have failed. */
int DoEverything(CTestWorld& world, const CTemporaryFile& file) {
  const tavira::WideString logo = Wide("LOGO.PNG");
  const tavira::WideString label = Wide("LABEL.ZPL");
  const TvmgrBackupInfo backup{file.Path().c_str(), 1, 1, 1, 1, 1, 1, 1};
  const tavira::WideString path = Wide(kPrinterPath);
  TvmgrFoundPrinter printer{};
  printer.text3 = path.c_str();
  std::uint8_t is_default = 0;
  std::uint32_t status = 0;
  int failed = 0;
  const auto check = [&failed](std::int32_t result) { failed += result == TVMGR_OK ? 0 : 1; };
  const auto transfer = [&] {
    check(TVMGR_LoadSetting(true, 0));
    check(TVMGR_IsDefaultPrefix(&is_default));
    check(TVMGR_LoadStoredData(logo.c_str(), 0, 1000));
    check(TVMGR_LoadStoredData(label.c_str(), 1, 1000));
    check(TVMGR_UpdateBackupInfo(&backup));
    check(TVMGR_Backup(1));
  };
  check(TVMGR_UpdatePortComInfo(&printer, nullptr));
  check(TVMGR_GetPrinterStatus(&status));
  SetRequest(TVMGR_REQUEST_REGISTER_GRAPHIC, "~DYE:NEW,B,P,3,0,:B64:YWJj:");
  check(TVMGR_RegistData());
  SetRequest(TVMGR_REQUEST_REGISTER_FORMAT, "^XA^DFE:NEW.ZPL^FS^FDnew label^FS^XZ");
  check(TVMGR_RegistData());
  transfer();
  SetRequest(TVMGR_REQUEST_DELETE_GRAPHIC, "NEW.PNG");
  check(TVMGR_DeleteData());
  check(TVMGR_Restore(file.Path().c_str()));
  check(TVMGR_UpdatePrefix('!', '@', ';'));
  world.printer.Quirks().compressed_downloads = true;
  world.printer.Quirks().short_format_names = true;
  world.printer.Quirks().garbage_between_frames = "\r\n?\x02";
  AppendUpdate(12, "new");
  check(TVMGR_UpdatePrinterSetting());
  transfer();
  check(Search(TVMGR_SEARCH_USB));
  check(Search(TVMGR_SEARCH_NETWORK));
  return failed;
}

std::string TranscriptOf(const lxemu::tagExchange& exchange) {
  recorder::test::CMemorySink sink;
  std::uint64_t now = 0;
  recorder::CTranscriptWriter writer(sink, [&now] { return now += 17; });
  const std::string sent = std::string(lxemu::kFrameStart) + exchange.sent + std::string(lxemu::kFrameEnd);
  const auto bytes_of = [](const std::string& text) {
    return reinterpret_cast<const std::uint8_t*>(text.data());
  };
  const recorder::tagRawPortRecord port{1, {u"USB001", u"", u""}, "^FX^FS", 6};
  writer.End(writer.BeginInitialize(1, &port), 0);
  writer.End(writer.BeginSend(1, bytes_of(sent), static_cast<std::uint32_t>(sent.size())), 0);
  std::uint32_t count = 0;
  auto receive = writer.BeginReceive(1, false, &count);
  count = static_cast<std::uint32_t>(exchange.answer.size());
  writer.EndReceive(receive, 0, &count, nullptr, 0);
  receive = writer.BeginReceive(1, true, &count);
  writer.EndReceive(receive, 0, &count, bytes_of(exchange.answer), count);
  writer.End(writer.BeginTerminate(1), 0);
  writer.WriteEnd(1);
  return sink.text;
}

void AddUsb(const CRecordedUsbTree& usb, CSeeds& seeds) {
  for (const auto& [path, answers] : usb.answers) {
    seeds.Add({"usb_descriptors"}, answers.device_id);
    seeds.Add({"usb_descriptors"}, answers.node_information);
    for (const auto& [port, connection] : answers.connections) {
      seeds.Add({"usb_descriptors"}, connection);
    }
    for (const auto& [which, descriptor] : answers.strings) {
      seeds.Add({"usb_descriptors"}, descriptor);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
    return 2;
  }
  fs::remove_all(argv[1]);
  CSeeds seeds(argv[1]);
  CTestWorld world;
  lxemu::tagSearchPlan faulty;
  faulty.cut_short.Add(lxemu::SearchMessage::kNames);
  faulty.rejected.Add(lxemu::SearchMessage::kState);
  CMemoryNetwork network(world.clock, {{}, faulty});
  network.on_datagram = [&seeds](const std::string& bytes) { seeds.Add({"search_datagram"}, bytes); };
  world.sockets = &network;
  world.usb = RootHubTree();
  world.printer.PutFile("E:KORVDEF.BGD", "background");
  world.printer.PutFile("E:LOGO.PNG", "picture", true);
  world.printer.PutFile("E:LABEL.ZPL", "^FO0,0^FDlabel^FS");
  const CTemporaryFile backup;
  int failed = TVMGR_Initialize() == TVMGR_OK ? 0 : 1;
  failed += DoEverything(world, backup);
  TVMGR_Terminate();
  for (const lxemu::tagExchange& exchange : world.port.Exchanges()) {
    seeds.Add({"answer_scanner", "prefix_answer", "directory_listing", "payload", "base64", "download_name"},
              exchange.answer);
    seeds.Add({"download_name", "backup_stream"}, exchange.sent);
    seeds.Add({"transcript"}, TranscriptOf(exchange));
  }
  seeds.Add({"backup_check", "backup_stream"}, backup.Read());
  AddUsb(world.usb, seeds);
  std::printf("%zu seeds, %d failed calls\n", seeds.Count(), failed);
  return failed == 0 && seeds.IsWritten() ? 0 : 1;
}

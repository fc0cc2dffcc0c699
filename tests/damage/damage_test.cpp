// What printers, their network and their devices answer. What is reported is right, or is reported as missing: a byte that
// changes within a value cannot be noticed where there is no checksum, but nothing else changes with it.
#include "damage.h"
#include "backup_file/stored_download.h"
#include "discovery/search/tv_async_socket.h"
#include "discovery/usb/usb_enumeration.h"
#include "support/exchange_texts.h"
#include "unit/discovery/network/memory_network.h"
#include "unit/discovery/search/search_support.h"
#include "unit/discovery/usb/recorded_printer.h"

namespace tavira::test {
namespace {

using DamageTest = CTransactionTest;

TEST_F(DamageTest, ASettingKeepsItsValueUnlessItsOwnAnswerIsWhole) {
  const struct {
    std::int32_t id;
    const char* key;
    const char* value;
  } settings[] = {{TVMGR_SETTING_CMP_F, "CMP,F", "front"},
                  {TVMGR_SETTING_CLR_Z, "CLR,Z", "300"},
                  {TVMGR_SETTING_IMP_S, "IMP,S", "printer, the first"}};
  std::string queries;
  for (const auto& setting : settings) {
    queries += std::string("~H(") + setting.key;
  }
  LoadAll();
  const std::string earlier_answer = world_.printer.Execute(queries);
  std::vector<std::string> earlier;
  std::string answer;
  std::vector<std::size_t> ends;
  for (const auto& [id, key, value] : settings) {
    earlier.push_back(world_.printer.Setting(key));
    world_.printer.SetSetting(key, value);
    answer += world_.printer.Execute(std::string("~H(") + key);
    ends.push_back(answer.find('\3', ends.empty() ? 0 : ends.back()) + 1);
  }
  const auto load = [&](const std::string& bytes) {
    for (const auto& setting : settings) {
      TVMGR_SetLoadList(static_cast<std::uint32_t>(setting.id));
    }
    world_.scripted_answer = bytes;
    EXPECT_EQ(TVMGR_OK, TVMGR_LoadSettingByList(true));
    TVMGR_ClearLoadList();
    world_.ClearLog();
  };
  ForEachDamage("settings", answer, [&](const std::string& bytes, const tagDamage& damage) {
    load(earlier_answer);
    load(bytes);
    int wrong = 0;
    int kept = 0;
    for (std::size_t i = 0; i < std::size(settings); ++i) {
      const std::string stored = StoredValue(settings[i].id);
      const std::string fresh = settings[i].value;
      wrong += stored == fresh || stored == earlier[i] ? 0 : 1;
      kept += stored == earlier[i] ? 1 : 0;
      EXPECT_TRUE(!damage.is_cut || stored == (ends[i] <= damage.at ? fresh : earlier[i])) << i;
    }
    EXPECT_TRUE(damage.is_cut ? wrong == 0 : wrong <= 1 && kept + wrong <= 2) << wrong << kept;
  });
}

TEST_F(DamageTest, AListHasNoNameThatTheListingDidNotTell) {
  const std::vector<WideString> files{Wide("ABCDEFGH.PNG"), Wide("B.PNG")};
  for (const WideString& file : files) {
    world_.printer.PutFile("E:" + std::string(file.begin(), file.end()), "x");
  }
  const std::string listing = world_.printer.Execute("^XA^HWE:*.PNG,c^XZ");
  constexpr std::size_t kShortestLine = 30;
  ForEachDamage("directory", listing, [&](const std::string& bytes, const tagDamage& damage) {
    world_.scripted_answer = bytes;
    EXPECT_EQ(TVMGR_OK, TVMGR_LoadSetting(true, 0));
    world_.ClearLog();
    const std::vector<WideString> names = Names(TVMGR_LIST_PNG);
    std::size_t strange = 0;
    for (const WideString& name : names) {
      strange += std::count(files.begin(), files.end(), name) == 1 ? 0 : 1;
    }
    EXPECT_GE(files.size(), names.size());
    EXPECT_GE(damage.is_cut ? 0U : 1U, strange);
    for (std::size_t i = 0, line = 0; damage.is_cut && i < files.size(); ++i, ++line) {
      line = listing.find("* E:", line);
      EXPECT_EQ(line + kShortestLine <= damage.at, i < names.size()) << i;
    }
  });
}

TEST_F(DamageTest, ADownloadIsNeverTakenForAnotherFileThatIsWhole) {
  const std::string picture("\x89PNG\r\n\x1A\n a picture, some of it\0\xFF", 33);
  world_.printer.PutFile("E:LOGO.PNG", picture);
  for (const bool compressed : {false, true}) {
    world_.scripted_answer.reset();
    world_.printer.Quirks().compressed_downloads = compressed;
    EXPECT_EQ(TVMGR_OK, TVMGR_LoadStoredData(Wide("LOGO.PNG").c_str(), 0, 1000));
    const std::string fetched = StoredData();
    const std::string download = world_.port.Exchanges().back().answer;
    const std::size_t data = download.find("64:") + 3;
    ForEachDamage(compressed ? "compressed download" : "download", download,
                  [&](const std::string& bytes, const tagDamage& damage) {
                    world_.scripted_answer = bytes;
                    EXPECT_EQ(TVMGR_OK, TVMGR_LoadStoredData(Wide("LOGO.PNG").c_str(), 0, 1000));
                    world_.ClearLog();
                    EXPECT_GE(bytes.size(), StoredData().size());
                    EXPECT_TRUE(!damage.is_cut || damage.at < data || fetched.starts_with(StoredData()));
                    // Where the whole answer is seen, as in a backup, nothing but the file passes for it.
                    const auto file = tvmgr::BytesOfDownload("LOGO.PNG", bytes);
                    EXPECT_TRUE(!file || *file == picture);
                    EXPECT_EQ(bytes == download, file.has_value() && damage.is_cut);
                  });
  }
}

TEST(SearchDamageTest, APrinterIsFoundAsItIsOrNotAtAll) {
  CLatin1Codec codec;
  CTestThreads threads;
  std::vector<std::string> datagrams;
  std::atomic<bool> given_up{false};
  for (std::size_t which = 0; which <= 3; ++which) {
    // The first search records what the others change: announcement, state, names.
    const auto search = [&](const std::string& bytes, const tagDamage& damage) {
      CVirtualClock clock;
      CMemoryNetwork network(clock, {{}});
      std::size_t sent = 0;
      network.on_datagram = [&](std::string& datagram) {
        if (++sent == which) {
          datagram = bytes;
        } else if (which == 0) {
          datagrams.push_back(datagram);
        }
      };
      CTVAsyncSocket socket(tagNetPlatform{network, threads, clock, codec}, tagSearchNetwork{});
      EXPECT_TRUE(socket.OpenBroadcast());
      const std::uint64_t start = clock.Now();
      EXPECT_TRUE(socket.Collect(given_up));
      EXPECT_GE(36000U, clock.Now() - start);
      const std::vector<tagFoundPrinter> found = socket.FoundPrinters();
      EXPECT_GE(1U, found.size());
      if (found.empty()) {
        EXPECT_NE(0U, which);
        return;
      }
      EXPECT_EQ(WidenAscii("10.0.0.2"), found[0].text5);
      if (which != 3) {  // one that is cut has told too little
        EXPECT_EQ(WidenAscii("LX-R4100|printer 2"), found[0].text1 + WidenAscii("|") + found[0].text2);
      } else if (damage.is_cut) {  // the names are told as far as they came
        EXPECT_TRUE(WidenAscii("LX-R4100").starts_with(found[0].text1));
        EXPECT_TRUE(WidenAscii("printer 2").starts_with(found[0].text2));
      }
    };
    if (which == 0) {
      search({}, {});
    } else {
      const char* const names[] = {"announcement", "state of a found printer", "names of a found printer"};
      ForEachDamage(names[which - 1], datagrams.at(which - 1), search);
    }
  }
}

TEST(UsbDamageTest, ADeviceIsListedWithWhatItToldWhole) {
  CMemoryProfile profile;
  const CModuleSettings settings(profile);
  CLatin1Codec codec;
  const auto enumerate = [&](CRecordedUsbTree& tree) {
    const std::vector<tagUsbRawEntry> entries = CUsbEnumeration(tree, settings, codec).Enumerate();
    EXPECT_EQ(1U, entries.size());
    return entries.empty() ? tagUsbRawEntry() : entries[0];
  };
  CRecordedUsbTree intact = RootHubTree();
  const tagUsbRawEntry whole = enumerate(intact);
  using Answer = std::string* (*)(CRecordedUsbTree&);
  const std::pair<const char*, Answer> answers[] = {
      {"device ID", [](CRecordedUsbTree& tree) { return &tree.answers[kPrinterPath].device_id; }},
      {"node information", [](CRecordedUsbTree& tree) { return &tree.answers[kHubPath].node_information; }},
      {"connection information",
       [](CRecordedUsbTree& tree) { return &tree.answers[kHubPath].connections[kPort]; }},
      {"languages",
       [](CRecordedUsbTree& tree) {
         return &tree.answers[kHubPath].strings[{kPort, 0, 0}];
       }},
      {"product name", [](CRecordedUsbTree& tree) {
         return &tree.answers[kHubPath].strings[{kPort, 3, kEnglish}];
       }}};
  for (const auto& [what, answer] : answers) {
    ForEachDamage(what, *answer(intact), [&](const std::string& bytes, const tagDamage& damage) {
      CRecordedUsbTree tree = RootHubTree();
      *answer(tree) = bytes;
      const tagUsbRawEntry entry = enumerate(tree);
      EXPECT_EQ(whole.instance_id, entry.instance_id);
      EXPECT_EQ(whole.device_path, entry.device_path);
      EXPECT_GT(256U, entry.model.size());
      EXPECT_GE(126U, entry.product_name.size());
      if (answer(tree) != &tree.answers[kPrinterPath].device_id) {
        EXPECT_EQ(whole.device_id, entry.device_id);
        EXPECT_EQ(whole.model, entry.model);
      }
      if (damage.is_cut) {
        EXPECT_TRUE(whole.device_id.starts_with(entry.device_id) || damage.at <= 2);
        EXPECT_TRUE(entry.model.empty() || entry.model == whole.model);
        EXPECT_TRUE(entry.product_name.empty() || entry.product_name == whole.product_name);
        EXPECT_TRUE(entry.vendor_number == 0 || entry.vendor_number == whole.vendor_number);
        EXPECT_TRUE(entry.product_number == 0 || entry.product_number == whole.product_number);
      }
    });
  }
}

}  // namespace
}  // namespace tavira::test

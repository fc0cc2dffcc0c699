// Files that people edit, and that power cuts end early.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>

#include "damage.h"
#include "discovery/module_settings.h"
#include "emulator/memory/printer_ini.h"
#include "support/temporary_file.h"
#include "tools/profile/json_lines.h"
#include "tools/profile/profile_file.h"
#include "tools/tvmgr/printer/choice_text.h"
#include "unit/discovery/search/search_support.h"

namespace tavira::test {
namespace {

/** Profile files of the system; the module seems to lie in a folder of the test's own. */
class CProfileElsewhere final : public IProfileFile {
 public:
  CProfileElsewhere()
      : folder_(std::filesystem::temp_directory_path() /
                ("tavira_damage_" + std::to_string(std::random_device()()))) {
    std::filesystem::create_directory(folder_);
  }
  ~CProfileElsewhere() override { std::filesystem::remove_all(folder_); }
  void Write(std::string_view text) const {
    std::ofstream(folder_ / "Setting.ini", std::ios::binary | std::ios::trunc) << text;
  }

  WideString ReadWide(const WideString& path, const char* section, const char* key,
                      std::size_t buffer_size) override {
    return system_->ReadWide(path, section, key, buffer_size);
  }
  WideString ModulePath() override { return (folder_ / "T.dll").string<TvmgrChar>(); }

 private:
  const std::unique_ptr<IProfileFile> system_ = MakeProfileFile();
  const std::filesystem::path folder_;
};

TEST(FileDamageTest, SettingIniTellsNamesOfLinesThatAreWhole) {
  CProfileElsewhere profile;
  const CModuleSettings settings(profile);
  CLatin1Codec codec;
  const std::string text = "[SupportPrinter]\r\n0=Label\r\n3=Dock\r\n[Search]\r\nUserUSBHubName=myhub\r\n";
  const std::vector<WideString> printers{WidenAscii("Label"), WidenAscii("Dock")};
  const std::size_t name_ends[] = {text.find("\r\n3"), text.find("\r\n[S")};
  ForEachDamage("Setting.ini", text, [&](const std::string& bytes, const tagDamage& damage) {
    profile.Write(bytes);
    tagSupportedNames names;
    EXPECT_EQ(0, settings.ReadSupportedNames(names));
    EXPECT_TRUE(names.drivers.empty());
    EXPECT_GE(2U, names.printers.size());
    const auto strange = std::count_if(names.printers.begin(), names.printers.end(), [&](const auto& name) {
      return std::find(printers.begin(), printers.end(), name) == printers.end();
    });
    EXPECT_GE(1, strange);
    for (std::size_t i = 0; damage.is_cut && i < printers.size(); ++i) {
      EXPECT_TRUE(damage.at < name_ends[i] ||
                  (names.printers.size() > i && names.printers[i] == printers[i]));
    }
    EXPECT_TRUE(!damage.Spares(text.find("[Search"), text.size()) || damage.at == text.find("\n[Search") ||
                settings.UserHubName(codec) == WidenAscii("myhub"));
  });
}

TEST(FileDamageTest, PrinterIniHasNoLineThatIsLostWithoutAWord) {
  const std::string text = "[printer]\nbusy_ms=300\nstate=CL\n[faults]\ncut_at=12\nfail=Poll:1:-9\n";
  ForEachDamage("printer.ini", text, [&](const std::string& bytes, const tagDamage& damage) {
    const lxemu::tagPrinterIni ini = lxemu::ReadPrinterIni(bytes);
    const struct {
      const char* line;
      bool is_default;
      bool is_in_force;
    } lines[] = {{"busy_ms=300", ini.busy_ms == 0, ini.busy_ms == 300},
                 {"state=CL", ini.state == "IL", ini.state == "CL"},
                 {"cut_at=12", !ini.faults.cut_answer_at, ini.faults.cut_answer_at == 12U},
                 {"fail=Poll:1:-9", ini.faults.call_faults.empty(),
                  ini.faults.call_faults.size() == 1 && ini.faults.call_faults[0].code == -9}};
    for (const auto& [line, is_default, is_in_force] : lines) {
      const std::size_t begin = text.find(line);
      const std::size_t end = begin + std::string_view(line).size();
      const std::size_t section = text.rfind('[', begin);
      const bool is_spared = damage.Spares(begin - 1, end + 1) &&
                             damage.Spares(section == 0 ? 0 : section - 1, text.find(']', section) + 2);
      EXPECT_TRUE(is_in_force || !is_spared) << line;
      // It may be cut away, made a comment, or have another value; else it is complained about.
      const bool is_hidden = bytes.size() > damage.at && std::string_view(";#").find(bytes[damage.at]) < 2;
      const bool has_other_value = damage.at > text.find('=', begin) && damage.at < end;
      EXPECT_TRUE(!is_default || damage.is_cut || is_hidden || has_other_value || !ini.problems.empty())
          << line;
    }
    EXPECT_GE(damage.is_cut ? 1U : 4U, ini.problems.size());  // a section's name in two lines, and its own
  });
}

TEST(FileDamageTest, ChoiceJsonIsWholeOrRefused) {
  using tvmgr::tagRememberedPrinter;
  tvmgr::tagChoiceFile choice;
  choice.chosen = tagRememberedPrinter{"address", "192.0.2.7", "Dock \xC3\xA4"};
  choice.found = {{"device", "\\\\?\\usb#1", ""}, {"port", "USB001", "Desk"}};
  const auto texts = [](const tvmgr::tagChoiceFile& file) {
    std::vector<std::string> all;
    std::vector<tagRememberedPrinter> printers = file.found;
    printers.insert(printers.begin(), file.chosen.value_or(tagRememberedPrinter()));
    for (const tagRememberedPrinter& printer : printers) {
      all.insert(all.end(), {printer.kind, printer.value, printer.name});
    }
    return all;
  };
  const std::vector<std::string> whole = texts(choice);
  const std::string text = tvmgr::FormatChoice(choice);
  ForEachDamage("choice.json", text, [&](const std::string& bytes, const tagDamage& damage) {
    const auto read = tvmgr::ParseChoice(bytes);
    EXPECT_TRUE(!damage.is_cut || read.has_value() == (damage.at + 1 >= text.size()));  // the line's end
    if (read) {
      const std::vector<std::string> all = texts(*read);
      ASSERT_EQ(whole.size(), all.size());
      std::size_t other = 0;
      for (std::size_t i = 0; i < all.size(); ++i) {
        other += all[i] == whole[i] ? 0 : 1;
        EXPECT_TRUE(i % 3 != 0 || all[i] == whole[i]) << all[i];  // the kind of printer
      }
      EXPECT_GE(damage.is_cut ? 0U : 1U, other);
    }
  });
}

TEST(FileDamageTest, ProfilesAreWholeOrRefusedWithALine) {
  const auto same = [](std::string_view text) { return std::string(text); };
  tvmgr::tagProfile profile{"port", "USB001", "LX", "1", "", {{6, "CLM,P", "12", 0}, {52, "CUL,L", "EN", 0}}};
  const std::string text = tvmgr::FormatProfile(profile, same);
  const std::size_t lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
  ForEachDamage("a profile", text, [&](const std::string& bytes, const tagDamage& damage) {
    try {
      const tvmgr::tagProfile read = tvmgr::ParseProfile(bytes, same);
      EXPECT_TRUE(!damage.is_cut || damage.at + 1 >= text.size());
      // A changed byte may change one key or one value, and takes no setting away.
      ASSERT_EQ(read.settings.size(), 2U);
      EXPECT_GE(1, (read.settings[0].key != "CLM,P") + (read.settings[0].value != "12") +
                       (read.settings[1].key != "CUL,L") + (read.settings[1].value != "EN"));
    } catch (const tvmgr::CFileProblem& problem) {
      EXPECT_LE(problem.Line(), lines + 1);
      EXPECT_STRNE(problem.what(), "");
    }
  });
}

}  // namespace
}  // namespace tavira::test

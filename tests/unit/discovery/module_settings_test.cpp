#include "discovery/module_settings.h"

#include <gtest/gtest.h>

#include "support/test_world.h"

namespace tavira::test {
namespace {

std::vector<WideString> WideList(std::initializer_list<std::string_view> texts) {
  std::vector<WideString> list;
  for (const std::string_view text : texts) {
    list.push_back(WidenAscii(text));
  }
  return list;
}

TEST(ModuleSettingsTest, ListsHoldWhatStandsUnderTheKeys0To19) {
  CMemoryProfile profile;
  profile.values = {{"SupportPrinter/0", "first"},
                    {"SupportPrinter/5", "second"},
                    {"SupportPrinter/19", std::string(400, 'p')},
                    {"SupportPrinter/20", "never"},
                    {"SupportPrinter/05", "never either"},
                    {"SupportDriver/10", "driver"}};
  const CModuleSettings settings(profile);
  tagSupportedNames names{WideList({"stale"}), WideList({"stale"})};
  EXPECT_EQ(0, settings.ReadSupportedNames(names));
  EXPECT_EQ(WideList({"first", "second", std::string(259, 'p')}), names.printers);
  EXPECT_EQ(WideList({"driver"}), names.drivers);
  profile.values.clear();
  EXPECT_EQ(0, settings.ReadSupportedNames(names));
  EXPECT_TRUE(names.printers.empty() && names.drivers.empty());
}

TEST(ModuleSettingsTest, TheHubNameIsCutToABufferOfBytes) {
  constexpr char16_t kPair = 0x8240;  // of the double-byte page
  const struct {
    std::u16string value;
    std::u16string name;
  } cases[] = {{std::u16string(400, 'h'), std::u16string(63, 'h')},
               {std::u16string(40, kPair), std::u16string(31, kPair)},
               {u'h' + std::u16string(40, kPair), u'h' + std::u16string(31, kPair)},
               {{u'h', 0x3042}, u"h?"}};
  class CWideProfile final : public IProfileFile {
   public:
    WideString ReadWide(const WideString&, const char*, const char*, std::size_t buffer_size) override {
      return value.substr(0, buffer_size - 1);
    }
    WideString ModulePath() override { return WidenAscii("C:\\T.dll"); }
    WideString value;
  } profile;
  CTestWorld world;
  world.double_byte_code_page = true;
  const auto platform = MakePlatform();
  for (const auto& [value, name] : cases) {
    profile.value.assign(value.begin(), value.end());
    EXPECT_EQ(WideString(name.begin(), name.end()), CModuleSettings(profile).UserHubName(platform->Text()));
  }
}

TEST(ModuleSettingsTest, TheFileStandsBesideTheModuleOnTheCurrentDrive) {
  const std::string deep = "C:\\" + std::string(244, 'd');  // the file's path: 257 characters
  struct tagCase {
    std::string module;
    std::string file;  // empty: there is no path
  };
  const tagCase cases[] = {{"C:\\Tools\\Label\\TaviraManager.dll", "\\Tools\\Label\\Setting.ini"},
                           {"D:TaviraManager.dll", "Setting.ini"},
                           {"C:\\TaviraManager.dll", "\\Setting.ini"},
                           {"\\\\server\\share\\TaviraManager.dll", "\\\\server\\share\\Setting.ini"},
                           {"C:/a/b\\c.d/TaviraManager.dll", "/a/b\\c.d/Setting.ini"},
                           {deep + "\\T.dll", deep.substr(2) + "\\Setting.ini"},
                           {deep + "dd\\T.dll", deep.substr(2) + "dd\\Setting.ini"},
                           {deep + "ddd\\T.dll", ""},
                           {deep + std::string(40, 'd') + "\\T.dll", ""},
                           {"C:\\a\\" + std::string(250, 'n') + ".dll", "\\a\\Setting.ini"},
                           {"C:\\a\\" + std::string(251, 'n') + ".dll", ""},
                           {"", ""}};
  CTestWorld world;
  const auto platform = MakePlatform();
  const auto beside = [](const std::string& module) {
    return module.empty() ? module : module.substr(0, module.find_last_of("\\/") + 1) + "Setting.ini";
  };
  for (const tagCase& entry : cases) {
    CMemoryProfile profile;
    profile.module_path = WidenAscii(entry.module);
    profile.values = {{"SupportPrinter/0", "printer"}, {"Search/UserUSBHubName", "hub"}};
    const CModuleSettings settings(profile);
    tagSupportedNames names{WideList({"kept"}), {}};
    EXPECT_EQ(entry.file.empty() ? -1 : 0, settings.ReadSupportedNames(names)) << entry.module;
    EXPECT_EQ(WideList({entry.file.empty() ? "kept" : "printer"}), names.printers);
    EXPECT_EQ(entry.file.empty() ? std::set<WideString>() : std::set<WideString>{WidenAscii(entry.file)},
              profile.paths);
    // The hub's name: in the same folder, on the module's own drive.
    profile.paths.clear();
    EXPECT_EQ(WidenAscii(entry.module.empty() ? "" : "hub"), settings.UserHubName(platform->Text()));
    EXPECT_EQ(entry.module.empty() ? std::set<WideString>()
                                   : std::set<WideString>{WidenAscii(beside(entry.module))},
              profile.paths);
  }
}

}  // namespace
}  // namespace tavira::test

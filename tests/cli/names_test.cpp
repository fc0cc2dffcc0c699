// Names of settings and files as users write them; pure, built everywhere.
#include <gtest/gtest.h>

#include <string>

#include "names/host_name.h"
#include "names/name_pattern.h"
#include "names/setting_names.h"

namespace {

using namespace tvmgr;

TEST(NamesTest, PatternsMatchWholeNames) {
  const struct {
    const char* pattern;
    const char* name;
    bool matches;
  } cases[] = {{"*", "", true},
               {"", "", true},
               {"", "A", false},
               {"*.PNG", "logo.png", true},
               {"*.PNG", "LOGO.PNGX", false},
               {"L*G?.*", "LOGO.PNG", true},
               {"A*B*C", "AXBXBXC", true},
               {"A*B*C", "AXBXBX", false},
               {"?.ZPL", "\xC3\xA4.ZPL", true},
               {"?.ZPL", ".ZPL", false},
               {"*?", "", false},
               {"**A**", "A", true}};
  for (const auto& c : cases) {
    EXPECT_EQ(MatchesPattern(c.pattern, c.name), c.matches) << c.pattern << " " << c.name;
  }
  // Such a pattern takes a simple matcher for ever.
  std::string pattern;
  for (int i = 0; i < 40; ++i) {
    pattern += "a*";
  }
  EXPECT_FALSE(MatchesPattern(pattern + "b", std::string(2000, 'a')));
}

TEST(NamesTest, WordsNameSettingsGroupsAndPatterns) {
  const struct {
    const char* word;
    std::string keys;
  } cases[] = {{"3", "CLR,Z"},
               {"clr_z", "CLR,Z"},
               {"CLR.Z", "CLR,Z"},
               {"clr", "CLR,Z CLR,P CLR,R"},
               {"CL?_P", "CLR,P CLM,P CLS,P"},
               {"INU,*", "INU,S INU,N INU,U INU,P INU,V"},
               {"st", "ST"},
               {"S*", "ST SCM,1 SCM,2 SCM,O SCM,C SCN,L SCN,C"},
               {"999", ""},
               {"CL", ""},
               {"XYZ,*", ""},
               {"", ""}};
  for (const auto& c : cases) {
    std::string keys;
    for (const tagSettingName& setting : SettingsNamed(c.word)) {
      keys += (keys.empty() ? "" : " ") + std::string(setting.key);
    }
    EXPECT_EQ(keys, c.keys) << c.word;
  }
  EXPECT_EQ(SettingsNamed("*").size(), AllSettings().size());
}

TEST(NamesTest, NamesThatPrintersListMustNotLeadOutOfAFolder) {
  for (const char* const name : {"LOGO.PNG", "\xC3\xA4.ZPL", "COM.PNG", "CONS.PNG", "COM10.PNG"}) {
    EXPECT_TRUE(IsHostFileName(name)) << name;
  }
  for (const char* const name : {"", ".", "..", "..\\A.PNG", "A/B.PNG", "C:A.PNG", "NUL", "nul.png",
                                 "COM1.ZPL", "CON.FMT", "A.PNG.", "A.PNG ", "A\n.PNG", "A?.PNG"}) {
    EXPECT_FALSE(IsHostFileName(name)) << name;
  }
}

}  // namespace

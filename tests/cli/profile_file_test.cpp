// Profiles, labels, comparisons and verdicts; pure, built everywhere.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "names/setting_names.h"
#include "profile/json_lines.h"
#include "profile/profile_file.h"
#include "profile/profile_settings.h"
#include "profile/setting_labels.h"
#include "profile/setting_verdict.h"
#include "profile/settings_difference.h"

namespace {

using namespace tvmgr;
using testing::HasSubstr;

std::string Same(std::string_view text) {
  if (text.find('@') != std::string_view::npos) {
    throw std::invalid_argument("has an @");
  }
  return std::string(text);
}

constexpr char kHead[] = "{\"format\": \"tvmgr-profile\", \"version\": 1,\n";

/** "line: why" for what the function throws; "taken" when it throws nothing. */
template <typename Function>
std::string ProblemOf(Function read) {
  try {
    read();
    return "taken";
  } catch (const CFileProblem& problem) {
    return std::to_string(problem.Line()) + ": " + problem.what();
  }
}

TEST(ProfileFileTest, WhatIsWrittenIsReadAgain) {
  tagProfile profile{"address", "192.0.2.7", "LX \"R\"", "1.20", "2031-05-04 13:14:15", {}};
  profile.settings = {{6, "CLM,P", "12", 0}, {79, "INU,S", "Laden \xC3\xA9\\x41", 0}};
  const std::string text = FormatProfile(profile, [](std::string_view bytes) { return std::string(bytes); });
  const tagProfile read = ParseProfile(text, Same);
  EXPECT_EQ(read.kind + read.printer + read.model + read.firmware + read.time,
            profile.kind + profile.printer + profile.model + profile.firmware + profile.time);
  ASSERT_EQ(read.settings.size(), 2U);
  EXPECT_EQ(read.settings[1].id, 79);
  EXPECT_EQ(read.settings[1].value, profile.settings[1].value);
  EXPECT_TRUE(LooksLikeProfile(text));
}

TEST(ProfileFileTest, CommentsAndOtherSpellingsOfKeysAreTaken) {
  const tagProfile read =
      ParseProfile("\xEF\xBB\xBF// mine\n" + std::string(kHead) +
                       "/* of\nthe shop */ \"settings\": {\n\"clm_p\": \"1\" // margin\n}}",
                   Same);
  ASSERT_EQ(read.settings.size(), 1U);
  EXPECT_EQ(read.settings[0].key, "CLM,P");
  EXPECT_EQ(read.settings[0].line, 5U);
  EXPECT_EQ(read.model, "");
}

TEST(ProfileFileTest, WhatIsNotUnderstoodIsRefusedWithItsLine) {
  const auto settings = [](const std::string& lines) {
    return kHead + ("\"settings\": {\n" + lines + "\n}}");
  };
  const struct {
    std::string text;
    const char* problem;
  } cases[] = {
      {"", "0: it is empty"},
      {" \n", "0: it is empty"},
      {std::string(kLargestProfile + 1, ' '), "0: it is larger than 1048576 bytes"},
      {"\xFF\xFE{", "1: this is UTF-16"},
      {"^XA^XZ", "1: this is no JSON"},
      {settings("\"CLM,P\": \"1\",\n\"CLM,S\": 2"),
       "4: the value of CLM,S is to be a text in quotes, not a number"},
      {settings("\"CLM,P\": null"), "3: the value of CLM,P is to be a text in quotes, not null"},
      {settings("\"CLM,P\": {\n\"a\":[]}"), "3: the value of CLM,P is to be a text in quotes, not an object"},
      {settings("\"CLM,P\": \"1\",\n\"CLX,P\": \"1\""), "4: there is no setting \"CLX,P\""},
      {settings("\"CLM,P\": \"1\",\n\n\"6\": \"1\""), "5: CLM,P stands in line 3 already"},
      {settings("\"CLM,P\": \"1\","), "4: this is no JSON"},
      {settings("\"CLM,P\": \"\xC3\x28\""), "3: this is no JSON: syntax error"},
      {settings("\"CLM,P\": \"" + std::string(256, '1') + "\""), "3: the value of CLM,P has 256 bytes"},
      {settings("\"CLM,P\": \"\""), "3: the value of CLM,P is empty"},
      {settings("\"CLM,P\": \"1^XZ\""), "3: the value of CLM,P holds ^, ~"},
      {settings("\"CLM,P\": \"1\\n2\""), "3: the value of CLM,P holds ^, ~ or a control"},
      {settings("\"CLM,P\": \"@\""), "3: the value of CLM,P has an @"},
      {settings("\"CMP,U\": \"D\""), "3: CMP,U cannot be in a profile: the resolution guard"},
      {settings("\"ST\": \"1\""), "3: ST cannot be in a profile"},
      {settings("\"CCC,T\": \"7E\""), "3: CCC,T cannot be in a profile: it is a prefix"},
      {settings(""), "2: there are no settings in it"},
      {kHead + std::string("\"sittings\": {}}"), "2: there is no member \"sittings\" here"},
      {kHead + std::string("\"time\": 5, \"settings\": {}}"), "2: \"time\" is to be a text"},
      {kHead + std::string("\"version\": 1}"), "2: \"version\" stands in line 1 already"},
      {kHead + std::string("\"printer\": {\"model\": \"X\",\n\"modle\": 1}}"),
       "3: there is no member \"modle\" here"},
      {"{\"format\": \"tvmgr-profile\",\n\"version\": 2}", "2: \"version\" is to be 1"},
      {"{\n}", "1: this is no profile"},
      {"[]", "1: a profile is to be an object, not a list"},
      {std::string(100'000, '['), "1: this is nested too deeply"},
  };
  for (const auto& c : cases) {
    EXPECT_THAT(ProblemOf([&] { ParseProfile(c.text, Same); }), testing::StartsWith(c.problem))
        << c.text.substr(0, 200);
  }
  // Nor does what is large take long.
  std::string many = kHead + std::string("\"settings\": {\n");
  while (many.size() < kLargestProfile - 40) {
    many += "\"CLM,P\": \"1\",\n";
  }
  EXPECT_EQ(ProblemOf([&] { ParseProfile(many + "\"CLM,P\": \"1\"}}", Same); }),
            "4: CLM,P stands in line 3 already");
}

TEST(ProfileSettingsTest, WhatBelongsToADeviceIsInNoProfileUnlessAskedFor) {
  std::size_t device = 0;
  std::size_t never = 0;
  for (const tagSettingName& setting : AllSettings()) {
    device += BelongsToDevice(setting.id) ? 1U : 0U;
    never += WhyNotInProfiles(setting.id).empty() ? 0U : 1U;
  }
  EXPECT_EQ(device, 21U) << "1, 2, 58-64, 68-74, 79-83: docs/profiles.md and the help have the list";
  EXPECT_EQ(never, 6U) << "37, 46, 65-67, 84";
}

TEST(SettingLabelsTest, LabelsAreReadAndCheckValues) {
  const std::string head = "{\"format\": \"tvmgr-labels\", \"settings\": {\n";
  const SettingLabels labels =
      ParseLabels(head +
                  R"("CLM,P": {"name": "Margin", "unit": "dots", "minimum": -5, "maximum": 20},
                     "clp_m": {"values": {"T": "tear off", "D": ""}}, "3": {"values": ["600", "300"]}}})");
  const tagSettingLabel& margin = labels.at(6);
  EXPECT_EQ(margin.name + margin.unit, "Margindots");
  for (const char* const value : {"-5", "0", "20"}) {
    EXPECT_EQ(WhyNotAllowed(margin, value), "") << value;
  }
  for (const char* const value : {"21", "-6", "x", "1.5", "", "99999999999999999999"}) {
    EXPECT_EQ(WhyNotAllowed(margin, value), "allowed are whole numbers from -5 to 20 dots") << value;
  }
  EXPECT_EQ(MeaningOfValue(labels.at(10), "T"), "tear off");
  EXPECT_EQ(WhyNotAllowed(labels.at(10), "t"), "allowed are T (tear off), D");
  EXPECT_EQ(WhyNotAllowed(labels.at(3), "300"), "");
  EXPECT_EQ(WhyNotAllowed({}, "anything"), "");
  const struct {
    std::string text;
    const char* problem;
  } cases[] = {{"{}", "1: these are no labels"},
               {head + "\"CLM,P\": {\"nmae\": \"x\"}}}", "2: there is no member \"nmae\" here"},
               {head + "\"CLM,P\": {},\n\"6\": {}}}", "3: CLM,P stands there already"},
               {head + "\"XX\": {}}}", "2: there is no setting \"XX\""},
               {head + "\"CLM,P\": \"x\"}}", "2: the label of CLM,P is to be an object"},
               {head + "\"CLM,P\": {\"minimum\": 1.5}}}", "2: \"minimum\" is to be a whole number"},
               {head + "\"CLM,P\": {\"minimum\": 2, \"maximum\": 1}}}", "2: \"minimum\" is larger"},
               {head + "\"CLM,P\": {\"values\": [\"1\"], \"minimum\": 2}}}", "2: \"values\" lists all"},
               {head + "\"CLM,P\": {\"values\": []}}}", "2: \"values\" is empty"},
               {head + "\"CLM,P\": {\"values\": {\"1\": \"a\",\n\"1\": \"b\"}}}}",
                "3: the value \"1\" stands there twice"},
               {head + "\"CLM,P\": {\"values\": [1]}}}", "2: an allowed value is to be a text"}};
  for (const auto& c : cases) {
    EXPECT_THAT(ProblemOf([&] { ParseLabels(c.text); }), testing::StartsWith(c.problem)) << c.text;
  }
}

TEST(SettingsDifferenceTest, WhatIsComparedDependsOnWhereItComesFrom) {
  using enum ESettingsSource;
  const tagSettingsSource profile{kProfile, {{"CLM,P", "1"}, {"CPC,Y", "0"}, {"INU,N", "a"}}};
  const tagSettingsSource other{kProfile, {{"CLM,P", "2"}, {"CLM,S", "1"}}};
  const tagSettingsSource backup{kBackup, {{"CLM,P", "1"}, {"CLM,S", "2"}, {"INU,N", "b"}}};
  const tagSettingsSource printer{
      kPrinter, {{"CLM,P", "1"}, {"CLM,S", "2"}, {"CPC,Y", "1"}, {"INU,N", "c"}, {"CMP,U", "E"}}};
  tagSettingsSource second = printer;
  second.values["CMP,U"] = "D";
  second.values["CLM,S"] = "02";
  const struct {
    const tagSettingsSource& a;
    const tagSettingsSource& b;
    bool all;
    std::string pairs;
    std::size_t compared;
  } cases[] = {
      {profile, other, false, "CLM,P differs; CLM,S only in B; CPC,Y only in A; INU,N only in A; ", 1},
      {profile, backup, false, "CPC,Y not in backups; INU,N differs; ", 2},
      {backup, profile, false, "CPC,Y not in backups; INU,N differs; ", 2},
      {profile, printer, false, "CPC,Y differs; INU,N differs; ", 3},
      {other, {kPrinter, {}}, false, "CLM,P not answered in B; CLM,S not answered in B; ", 0},
      {backup, printer, false, "", 2},
      {backup, printer, true, "INU,N differs; ", 3},
      {printer, backup, true, "INU,N differs; ", 3},
      {backup, {kBackup, {{"CLM,P", "1"}}}, false, "CLM,S only in A; ", 1},
  };
  for (const auto& c : cases) {
    const tagSettingsComparison result = CompareSources(c.a, c.b, c.all);
    std::string pairs;
    for (const tagSettingPair& pair : result.pairs) {
      pairs += pair.key + " " + pair.verdict + "; ";
    }
    EXPECT_EQ(pairs, c.pairs);
    EXPECT_EQ(result.compared, c.compared);
  }
  const tagSettingsComparison two = CompareSources(printer, second, false);
  EXPECT_EQ(two.compared, 2U) << "neither the device's own nor the mode";
  EXPECT_TRUE(two.HasDifference());
  EXPECT_FALSE(CompareSources(printer, printer, false).HasDifference())
      << "what both leave unanswered is open";
}

TEST(SettingVerdictTest, ProofIsWhatWasReadBack) {
  const struct {
    std::int32_t id;
    const char* asked;
    std::optional<std::string> got;
    bool keep;
    const char* word;
    EProof proof;
  } cases[] = {{6, "a", "A", false, "written", EProof::kProved},
               {6, "5", "05", false, "differs", EProof::kFailed},
               {6, "5", std::nullopt, false, "not readable", EProof::kFailed},
               {46, "5", std::nullopt, false, "not readable", EProof::kOpen},
               {74, "5", "6", false, "not readable", EProof::kOpen},
               {84, "D", "D", false, "cannot be proved here", EProof::kOpen},
               {84, "E", "E", false, "written", EProof::kProved},
               {84, "F", "E", false, "differs", EProof::kFailed},
               {3, "300", "600", true, "differs", EProof::kFailed}};
  for (const auto& c : cases) {
    const tagSettingVerdict verdict = JudgeWritten(c.id, c.asked, c.asked, c.got, c.keep);
    EXPECT_EQ(verdict.word, c.word) << c.id;
    EXPECT_EQ(verdict.proof, c.proof) << c.id;
  }
  EXPECT_THAT(JudgeWritten(3, "300", "300", "600", false).reason, HasSubstr("guard"));
  EXPECT_THAT(JudgeWritten(3, "300", "300", "600", true).reason, testing::Not(HasSubstr("guard")));
}

}  // namespace

// What the doctor says of what it has seen; built everywhere.
#include "doctor/judgement.h"

#include <gtest/gtest.h>

#include "computer/firewall_rule.h"

namespace {

using namespace tvmgr;

constexpr EHealth kWell = EHealth::kWell;
constexpr EHealth kLook = EHealth::kLook;
constexpr EHealth kFailed = EHealth::kFailed;
constexpr EHealth kNotTried = EHealth::kNotTried;

struct tagCase {
  tagFinding finding;
  EHealth health;
  std::vector<std::string> words; /**< of reason and cure */
};

void Expect(const std::vector<tagCase>& cases) {
  for (const tagCase& judged : cases) {
    const std::string text = judged.finding.reason + " -> " + judged.finding.cure;
    EXPECT_EQ(judged.finding.health, judged.health) << text;
    for (const std::string& words : judged.words) {
      EXPECT_NE(text.find(words), std::string::npos) << words << " in: " << text;
    }
    // What is well needs no cure, and everything else but an untried step has one.
    const bool wants_cure = judged.health == kLook || judged.health == kFailed;
    EXPECT_EQ(judged.finding.cure.empty(), !wants_cure) << text;
  }
}

TEST(DoctorJudgementTest, LibrariesAreJudgedByWhatTheirFilesAre) {
  const tagLibraryState good{"C:\\x.dll", true, "", "1.0.0.7", false};
  const auto with = [&](auto change) {
    tagLibraryState state = good;
    change(state);
    return state;
  };
  Expect({
      {JudgeModule(good, "1.0.0"), kWell, {"C:\\x.dll", "version 1.0.0.7"}},
      {JudgeModule(good, "1.0.1"), kLook, {"not of one delivery", "same folder"}},
      {JudgeModule(with([](auto& s) { s.version = ""; }), "1.0.0"), kLook, {"does not say its version"}},
      {JudgeModule(with([](auto& s) { s.version = "1.0.01.2"; }), "1.0.0"), kLook, {"1.0.01.2"}},
      {JudgeModule(with([](auto& s) { s.problem = "is not there"; }), "1.0.0"),
       kFailed,
       {"x.dll\" is not there"}},
      {JudgeModule(with([](auto& s) { s.is_download = true; }), "1.0.0"),
       kLook,
       {"mark of a download", "Unblock"}},
      {JudgePortLibrary(good, ""), kWell, {"six entry points"}},
      {JudgePortLibrary({}, ""), kFailed, {"beside tvmgr.exe"}},
      {JudgePortLibrary(good, "is not loaded"), kFailed, {"x.dll\" is not loaded"}},
      {JudgePortLibrary(with([](auto& s) { s.problem = "has 32 bits"; }), "other"), kFailed, {"has 32 bits"}},
      {JudgePortLibrary(with([](auto& s) { s.is_download = true; }), "is not loaded"),
       kFailed,
       {"mark of a download", "Unblock"}},
  });
}

TEST(DoctorJudgementTest, ThePrinterIsJudgedByItsAnswersAlone) {
  const tagAnswer idle{0, "", "", 1, 104};
  const tagAnswer slow{0, "", "", 1, 2'500};
  const tagAnswer silent{0, "", "", 0, 3'050};
  const tagAnswer refused{-77, "refused", "plug it in", 0, 5};
  Expect({
      {JudgeAnswer(idle), kWell, {"after 104 ms"}},
      {JudgeAnswer(slow), kLook, {"2500 ms", "ask again"}},
      {JudgeAnswer(silent), kFailed, {"no answer came within 3050 ms", "switched on"}},
      {JudgeAnswer({0, "", "", 0, 105}), kFailed, {"came after 105 ms that names no state"}},
      {JudgeAnswer(refused), kFailed, {"code -77", "refused", "plug it in"}},
      {JudgePrefix(idle, true, idle), kWell, {"understands the default ones"}},
      {JudgePrefix(silent, true, silent), kNotTried, {"does not answer reads like"}},
      {JudgePrefix(idle, true, {0, "", "", 0, 105}), kNotTried, {"what came before named no state"}},
      {JudgePrefix(silent, false, silent), kFailed, {"are not ~ ^ and ,", "prefix --default"}},
      {JudgePrefix(refused, true, silent), kFailed, {"-77"}},
      {JudgeState(1, "idle (ready)"), kWell, {"idle (ready)"}},
      {JudgeState(2, "busy"), kLook, {"wait until it is ready"}},
      {JudgeState(3, "other"), kLook, {"panel"}},
      {JudgeRoundTrips({idle, idle, {0, "", "", 1, 210}}),
       kWell,
       {"3 of 3", "104 to 210 ms", "no setting was read"}},
      {JudgeRoundTrips({idle, silent, idle}), kFailed, {"2 of 3", "now and then"}},
      {JudgeRoundTrips({idle, refused}), kFailed, {"1 of 2", "code -77"}},
      {JudgeLoad({0, "", 76, 76, true, 900}), kWell, {"76 of 76", "900 ms"}},
      {JudgeLoad({0, "", 76, 76, false, 900}), kWell, {"has saved its settings"}},
      {JudgeLoad({0, "", 70, 76, true, 900}), kLook, {"70 of 76", "get --all"}},
      {JudgeLoad({0, "", 0, 76, true, 60'000}), kFailed, {"0 of 76"}},
      {JudgeLoad({-77, "refused", 0, 76, true, 9}), kFailed, {"code -77"}},
  });
}

TEST(DoctorJudgementTest, PortAndNetworkSayWhatThisComputerHas) {
  const tagPortState port{"USB001", true, "", true, "usb#1", {"Shipping"}, false, true};
  const tagNetworkState network{
      true, false, {"Ethernet (192.0.2.9/24)"}, "Ethernet", "", false, {}, false, "", true, {"public"}, {}};
  const auto with = [](auto state, auto change) {
    change(state);
    return state;
  };
  Expect({
      {JudgePort(port), kWell, {"the port USB001", "Shipping", "knows usb#1"}},
      {JudgePort(with(tagPortState{}, [](auto& p) { p.is_asked = true; })),
       kWell,
       {"none was chosen by name"}},
      {JudgePort({}), kNotTried, {"none was chosen by name, and the module cannot be asked"}},
      {JudgePort(with(port,
                      [](auto& p) {
                        p.is_chosen = false;
                        p.spooler_problem = "no spooler";
                      })),
       kLook,
       {"no spooler: nothing was seen"}},
      {JudgePort(with(port, [](auto& p) { p.is_asked = false; })),
       kNotTried,
       {"Shipping; the module cannot"}},
      {JudgePort(with(port, [](auto& p) { p.is_chosen = false; })),
       kWell,
       {"has usb#1", "port USB001 leads there"}},
      {JudgePort(with(port, [](auto& p) { p.is_listed = false; })), kLook, {"no port USB001", "tvmgr ports"}},
      {JudgePort(with(port, [](auto& p) { p.known = ""; })), kLook, {"knows no printer behind it", "WSD"}},
      {JudgePort(with(port, [](auto& p) { p.has_trouble = true; })), kLook, {"queue"}},
      {JudgePort(with(port, [](auto& p) { p.spooler_problem = "no spooler"; })), kFailed, {"no spooler"}},
      {JudgeNetwork({}), kLook, {"does not list"}},
      {JudgeNetwork(with(tagNetworkState{}, [](auto& n) { n.is_late = true; })), kFailed, {"without an end"}},
      {JudgeNetwork(with(network,
                         [](auto& n) {
                           n.address = "2001:db8::7";
                           n.is_other_address = true;
                         })),
       kNotTried,
       {"of the way to 2001:db8::7 nothing is seen"}},
      {JudgeNetwork(network),
       kWell,
       {"Ethernet (192.0.2.9/24)", "leaves by Ethernet", "on for public networks"}},
      {JudgeNetwork(with(network, [](auto& n) { n.blocking = {"tvmgr"}; })),
       kLook,
       {"may keep datagrams", "look at these rules"}},
      {JudgeNetwork(with(network, [](auto& n) { n.broadcast = ""; })), kWell, {"no way out"}},
      {JudgeNetwork(with(network, [](auto& n) { n.address = "dock"; })),
       kFailed,
       {"no known name", "dotted"}},
      {JudgeNetwork(with(network,
                         [](auto& n) {
                           n.address = "dock";
                           n.resolved = {"192.0.2.7"};
                         })),
       kFailed,
       {"no way to 192.0.2.7"}},
      {JudgeNetwork(with(network,
                         [](auto& n) {
                           n.address = "dock";
                           n.resolved = {"192.0.2.7", "192.0.2.8"};
                           n.way = "Ethernet";
                           n.has_firewall = false;
                         })),
       kWell,
       {"dock is 192.0.2.7 and 192.0.2.8, by Ethernet", "firewall is not seen"}},
  });
}

TEST(DoctorJudgementTest, ExitCodeIsThatOfTheFirstFailure) {
  const struct {
    std::vector<std::pair<std::string, EHealth>> steps;
    int code;
  } cases[] = {
      {{{"tool", kWell}, {kStepAnswer, kWell}}, 0},
      {{{"tool", kLook}, {kStepAnswer, kWell}}, 3},
      {{{"tool", kWell}, {kStepAnswer, kNotTried}}, 3},
      {{{"tool", kLook}, {kStepAnswer, kFailed}}, 4},
      {{{"tool", kWell}, {kStepAnswer, kWell}, {kStepRoundTrip, kFailed}}, 4},
      {{{"network", kFailed}, {kStepAnswer, kFailed}}, 1},
  };
  for (const auto& ending : cases) {
    std::vector<tagFinding> findings;
    for (const auto& [step, health] : ending.steps) {
      findings.push_back({step, health, "", ""});
    }
    EXPECT_EQ(ExitCodeOf(findings), ending.code);
  }
}

TEST(FirewallRuleTest, RulesAreReadWithWhatTheyLeaveOut) {
  const tagFirewallRule rule = ParseFirewallRule(
      "v2.30|Action=Block|Active=TRUE|Dir=In|Protocol=17|Profile=Public|App=%ProgramFiles%\\a\\tvmgr.exe|"
      "Name=a|");
  EXPECT_TRUE(rule.is_block && rule.is_active && rule.is_inbound && rule.is_udp);
  EXPECT_EQ(rule.program, "%ProgramFiles%\\a\\tvmgr.exe");
  EXPECT_EQ(rule.name, "a");
  EXPECT_TRUE(HoldsIn(rule, {"domain", "public"}));
  EXPECT_FALSE(HoldsIn(rule, {"domain"}));
  EXPECT_FALSE(HoldsIn({}, {})) << "the firewall is off";
  EXPECT_TRUE(HoldsIn({}, {"private"}));
  EXPECT_FALSE(ParseFirewallRule("v2.30|Action=Block|Dir=Out|Protocol=6|Name=b").is_udp);
  EXPECT_TRUE(ParseFirewallRule("v2.30|Action=Block|").is_udp);  // every protocol
  for (const char* const damaged : {"", "|", "=", "||=|Name", "Name=|=="}) {
    EXPECT_FALSE(ParseFirewallRule(damaged).is_active) << damaged;
  }
}

}  // namespace

#include "doctor/judgement.h"

#include <algorithm>

namespace tvmgr {
namespace {

constexpr char kAllow[] = "right-click the file, Properties, Unblock (PowerShell: Unblock-File)";
constexpr char kSilent[] =
    "check that it is switched on and connected, that --port, --device or --address names it, and that no "
    "other program holds it";
constexpr std::uint64_t kSlowMs = 1'000;
// The module waits 3 s for the first byte of an answer, by a clock that goes in steps of up to 16 ms: without a state but
// earlier, some bytes have come.
constexpr std::uint64_t kSilenceMs = 2'900;

std::string Seconds(std::uint64_t ms) {
  return std::to_string(ms) + " ms";
}

/** Nothing came, or nothing that names a state. */
bool IsSilent(const tagAnswer& answer) {
  return answer.result == 0 && answer.status == 0;
}

bool IsCutOff(const tagAnswer& answer) {
  return IsSilent(answer) && answer.took_ms < kSilenceMs;
}

std::string Failure(const tagAnswer& answer) {
  return "code " + std::to_string(answer.result) + " after " + Seconds(answer.took_ms) + ": " +
         answer.meaning;
}

std::string Marked(const tagLibraryState& library) {
  return library.is_download ? "; the file carries the mark of a download" : "";
}

}  // namespace

const char* NameOf(EHealth health) {
  switch (health) {
    case EHealth::kWell:
      return "well";
    case EHealth::kLook:
      return "look";
    case EHealth::kFailed:
      return "failed";
    case EHealth::kNotTried:
      break;
  }
  return "not tried";
}

int ExitCodeOf(const std::vector<tagFinding>& findings) {
  bool is_printer = false;
  int code = 0;
  for (const tagFinding& finding : findings) {
    is_printer = is_printer || finding.step == kStepAnswer;
    if (finding.health == EHealth::kFailed) {
      return is_printer ? 4 : 1;
    }
    code = finding.health == EHealth::kWell ? code : 3;
  }
  return code;
}

std::string Listed(const std::vector<std::string>& words) {
  std::string text;
  for (std::size_t i = 0; i < words.size(); ++i) {
    text += (i == 0 ? "" : i + 1 < words.size() ? ", " : " and ") + words[i];
  }
  return text;
}

tagFinding JudgeModule(const tagLibraryState& library, const std::string& tool_version) {
  constexpr char kBelong[] = "put tvmgr.exe and the DLL of one delivery into the same folder";
  const std::string file = "\"" + library.path + "\" ";
  if (!library.problem.empty()) {
    return {"module", EHealth::kFailed, file + library.problem + Marked(library),
            library.is_download ? std::string(kAllow) + "; else " + kBelong : kBelong};
  }
  if (library.version.empty() || !library.version.starts_with(tool_version + ".")) {
    return {
        "module", EHealth::kLook,
        file + (library.version.empty() ? "does not say its version" : "has the version " + library.version) +
            ", the tool " + tool_version + ": they are not of one delivery",
        kBelong};
  }
  return {"module", library.is_download ? EHealth::kLook : EHealth::kWell,
          file + "has the version " + library.version + ", as the tool, and all 39 entry points" +
              Marked(library),
          library.is_download ? kAllow : ""};
}

tagFinding JudgePortLibrary(const tagLibraryState& library, const std::string& load_problem) {
  constexpr char kInstall[] = "put the port library for 64 bits beside tvmgr.exe";
  if (!library.exists) {
    return {"port library", EHealth::kFailed, library.problem, kInstall};
  }
  const std::string file = "\"" + library.path + "\" ";
  const std::string problem = library.problem.empty() ? load_problem : library.problem;
  if (!problem.empty()) {
    return {"port library", EHealth::kFailed, file + problem + Marked(library),
            library.is_download ? std::string(kAllow) + "; else " + kInstall : kInstall};
  }
  return {"port library", library.is_download ? EHealth::kLook : EHealth::kWell,
          file + (library.version.empty() ? "" : "(version " + library.version + ") ") +
              "has 64 bits and its six entry points" + Marked(library),
          library.is_download ? kAllow : ""};
}

tagFinding JudgeAnswer(const tagAnswer& answer) {
  if (answer.result != 0) {
    return {kStepAnswer, EHealth::kFailed, Failure(answer), answer.advice};
  }
  if (IsCutOff(answer)) {
    return {kStepAnswer, EHealth::kFailed,
            "something came after " + Seconds(answer.took_ms) +
                " that names no state: cut off, or no answer at all",
            "look at its cable, at who else talks to it, and whether it is an LX-R4100"};
  }
  if (IsSilent(answer)) {
    return {kStepAnswer, EHealth::kFailed,
            "the question for its state was sent, and no answer came within " + Seconds(answer.took_ms),
            kSilent};
  }
  const bool is_slow = answer.took_ms > kSlowMs;
  return {
      kStepAnswer, is_slow ? EHealth::kLook : EHealth::kWell,
      "it answered the question for its state after " + Seconds(answer.took_ms) +
          " (the module looks every 100 ms)",
      is_slow ? "it may be printing, another program may hold it, or the way there is slow: ask again" : ""};
}

tagFinding JudgePrefix(const tagAnswer& question, bool is_default, const tagAnswer& state) {
  if (question.result != 0) {
    return {kStepPrefix, EHealth::kFailed, Failure(question), question.advice};
  }
  if (!is_default) {
    return {kStepPrefix, EHealth::kFailed,
            "the printer says that they are not ~ ^ and ,: it may understand nothing that is sent to it",
            "\"tvmgr prefix\" shows them, \"tvmgr prefix --default\" puts the default ones back"};
  }
  if (!IsSilent(state)) {
    return {kStepPrefix, EHealth::kWell, "the printer understands the default ones, and names no others", ""};
  }
  return {kStepPrefix, EHealth::kNotTried,
          IsCutOff(state)
              ? "asked, but what came before named no state: an answer that is cut off reads like "
                "that of a printer that has the default ones"
              : "asked, but a printer that does not answer reads like one that has the default ones",
          ""};
}

tagFinding JudgeState(std::uint32_t status, const std::string& words) {
  constexpr std::uint32_t kIdle = 1;
  constexpr std::uint32_t kBusy = 2;
  const bool is_idle = status == kIdle;
  return {kStepState, is_idle ? EHealth::kWell : EHealth::kLook, words,
          is_idle ? ""
          : status == kBusy
              ? "wait until it is ready, or look at its panel: what is sent now may be answered late"
              : "look at its panel"};
}

tagFinding JudgeRoundTrips(const std::vector<tagAnswer>& answers) {
  std::uint64_t shortest = UINT64_MAX;
  std::uint64_t longest = 0;
  std::size_t answered = 0;
  const tagAnswer* failed = nullptr;
  for (const tagAnswer& answer : answers) {
    if (answer.result != 0 && failed == nullptr) {
      failed = &answer;
    }
    if (answer.result == 0 && !IsSilent(answer)) {
      ++answered;
      shortest = std::min(shortest, answer.took_ms);
      longest = std::max(longest, answer.took_ms);
    }
  }
  const std::string count = std::to_string(answered) + " of " + std::to_string(answers.size()) +
                            " questions in a row were answered";
  if (failed != nullptr) {
    return {kStepRoundTrip, EHealth::kFailed, count + ", then " + Failure(*failed), failed->advice};
  }
  if (answered < answers.size()) {
    return {kStepRoundTrip, EHealth::kFailed, count,
            "it answers now and then only: look at its cable, its network, and who else talks to it"};
  }
  return {kStepRoundTrip, EHealth::kWell,
          count + ", after " + (shortest == longest ? "" : std::to_string(shortest) + " to ") +
              Seconds(longest) +
              "; no setting was read, since that makes some printers save theirs (--read does it)",
          ""};
}

tagFinding JudgeLoad(const tagLoad& load) {
  const std::string count = std::to_string(load.answered) + " of " + std::to_string(load.readable) +
                            " settings were answered in " + Seconds(load.took_ms);
  if (load.result != 0) {
    return {kStepRoundTrip, EHealth::kFailed,
            "reading all settings ended with code " + std::to_string(load.result) + ": " + load.meaning,
            kSilent};
  }
  const std::string neutral = load.answered == 0 ? ""
                              : load.is_neutral
                                  ? ""
                                  : "; it is not at 600 dots per inch, so it has saved its settings";
  if (load.answered == load.readable) {
    return {kStepRoundTrip, EHealth::kWell, count + neutral, ""};
  }
  return {kStepRoundTrip, load.answered == 0 ? EHealth::kFailed : EHealth::kLook, count + neutral,
          load.answered == 0
              ? kSilent
              : "\"tvmgr get --all\" shows which: this printer may not know them, or fell silent"};
}

tagFinding JudgePort(const tagPortState& port) {
  constexpr char kQueue[] = "look at the printer's queue in Windows: jobs in it go to the same printer";
  const std::string installed =
      port.printers.empty() ? "no installed printer uses it" : "installed on it: " + Listed(port.printers);
  if (!port.is_chosen && !port.is_asked) {
    return {"port", EHealth::kNotTried, "none was chosen by name, and the module cannot be asked for one",
            ""};
  }
  if (!port.is_chosen) {
    std::string reason = "none was chosen by name";
    reason += port.known.empty() ? "" : "; the module has " + port.known;
    reason += port.is_listed ? "; the print spooler's port " + port.port + " leads there; " + installed : "";
    if (!port.spooler_problem.empty()) {
      return {"port", EHealth::kLook, reason + "; " + port.spooler_problem + ": nothing was seen of queues",
              "start the service \"Print Spooler\", unless it is meant to be off"};
    }
    return {"port", port.has_trouble ? EHealth::kLook : EHealth::kWell, reason,
            port.has_trouble ? kQueue : ""};
  }
  if (!port.spooler_problem.empty()) {
    return {"port", EHealth::kFailed, port.spooler_problem, "start the service \"Print Spooler\""};
  }
  if (!port.is_listed) {
    return {"port", EHealth::kLook,
            "the print spooler has no port " + port.port + "; only this name goes to the port library",
            "\"tvmgr ports\" lists those that there are"};
  }
  const std::string reason = "the print spooler has the port " + port.port + "; " + installed + "; ";
  if (!port.is_asked) {
    return {"port", port.has_trouble ? EHealth::kLook : EHealth::kNotTried,
            reason + "the module cannot be asked what is behind it", port.has_trouble ? kQueue : ""};
  }
  if (port.known.empty()) {
    return {
        "port", EHealth::kLook, reason + "the module knows no printer behind it",
        "it may be of a USB printer that is off, or of another kind (WSD, IPP); only the port's name goes to "
        "the port library"};
  }
  return {"port", port.has_trouble ? EHealth::kLook : EHealth::kWell,
          reason + "behind it the module knows " + port.known, port.has_trouble ? kQueue : ""};
}

tagFinding JudgeNetwork(const tagNetworkState& network) {
  if (!network.is_known) {
    return {"network", network.is_late ? EHealth::kFailed : EHealth::kLook,
            network.is_late ? "Windows was asked for its network adapters and its firewall, without an end"
                            : "Windows does not list its network adapters",
            "look at them in its settings"};
  }
  std::string reason = network.adapters.empty() ? "no adapter but the computer's own is up"
                                                : "up: " + Listed(network.adapters);
  reason += network.broadcast.empty()
                ? "; a search has no way out"
                : "; a search leaves by " + network.broadcast + " and reaches its segment only";
  reason += !network.has_firewall ? "; Windows' own firewall is not seen"
            : network.profiles.empty()
                ? "; Windows' own firewall is off"
                : "; Windows' own firewall is on for " + Listed(network.profiles) + " networks";
  if (!network.blocking.empty()) {
    reason += ", with rules that may keep datagrams from this program: " + Listed(network.blocking);
  }
  if (network.is_other_address) {
    return {"network", EHealth::kNotTried,
            "of the way to " + network.address + " nothing is seen, since it is no IPv4 address; " + reason,
            ""};
  }
  if (network.address.empty()) {
    return {"network", network.blocking.empty() ? EHealth::kWell : EHealth::kLook, reason,
            network.blocking.empty()
                ? ""
                : "\"tvmgr search\" may find nothing on the network: look at these rules"};
  }
  if (network.resolved.empty()) {
    return {
        "network", EHealth::kFailed,
        network.address +
            (network.is_resolved_late ? " was looked up without an end" : " is no known name or address") +
            "; " + reason,
        "check how it is written, or choose the printer by its dotted address"};
  }
  const std::string meaning = Listed(network.resolved);
  if (network.way.empty()) {
    return {"network", EHealth::kFailed, "there is no way to " + meaning + "; " + reason,
            "connect this computer to the printer's network"};
  }
  return {"network", network.blocking.empty() ? EHealth::kWell : EHealth::kLook,
          (meaning == network.address ? meaning : network.address + " is " + meaning) + ", by " +
              network.way + "; " + reason,
          network.blocking.empty() ? ""
                                   : "\"tvmgr search\" may not find it: look at these rules; by its address "
                                     "it is reached all the same"};
}

}  // namespace tvmgr

// The steps of the doctor that look at this computer.
#include <windows.h>

#include <algorithm>

#include "computer/firewall.h"
#include "computer/library_files.h"
#include "computer/network.h"
#include "computer/spooler.h"
#include "doctor/checkup.h"
#include "output/command_error.h"
#include "output/result_words.h"
#include "output/text_encoding.h"
#include "output/text_layout.h"
#include "printer/manager_session.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

constexpr std::uint64_t kLoadMs = 12'000;
constexpr std::uint64_t kSpoolerMs = 10'000;
constexpr std::uint64_t kNetworkMs = 10'000;
constexpr char kToEverybody[] = "255.255.255.255";

/** As the system's core says it, without regard to what a program is told for its own good. */
std::string WindowsVersion() {
  using Function = LONG WINAPI(OSVERSIONINFOW*);
  auto* const get = reinterpret_cast<Function*>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion")));
  OSVERSIONINFOW info{};
  info.dwOSVersionInfoSize = sizeof info;
  if (get == nullptr || get(&info) != 0) {
    return "Windows";
  }
  return "Windows " + std::to_string(info.dwMajorVersion) + "." + std::to_string(info.dwMinorVersion) + "." +
         std::to_string(info.dwBuildNumber);
}

tagLibraryState StateOf(const tagLibraryFacts& facts) {
  return {facts.path, facts.exists, facts.problem, facts.version, facts.is_download};
}

/** The Ferrolink.dll that is loaded, else the one that would be. */
tagLibraryState LookAtPortFile() {
  const std::wstring path = FindPortLibrary();
  tagLibraryState state = StateOf(LookAtLibrary(path, PortEntryPoints()));
  if (path.empty()) {
    state.problem = NoPortLibrary();
  }
  return state;
}

/** The installed printer in words, with what keeps its jobs. */
std::string Shown(const tagInstalledPrinter& printer) {
  std::string more = printer.is_paused ? "paused" : "";
  more += printer.is_off_line ? std::string(more.empty() ? "" : ", ") + "off-line" : "";
  if (printer.jobs != 0) {
    more += std::string(more.empty() ? "" : ", ") + std::to_string(printer.jobs) + " jobs wait";
  }
  return MakeVisible(printer.name) + (more.empty() ? "" : " (" + more + ")");
}

std::string Shown(const tagAdapter& adapter) {
  return MakeVisible(adapter.name) + " (" + Listed(adapter.addresses) + ")";
}

/** The adapter with this number in words; empty: there is none. */
std::string ShownWay(const std::vector<tagAdapter>& adapters, std::optional<std::uint32_t> index) {
  for (const tagAdapter& adapter : adapters) {
    if (index && adapter.index == *index) {
      return adapter.is_loopback ? "this computer itself" : MakeVisible(adapter.name);
    }
  }
  return index ? "adapter " + std::to_string(*index) : "";
}

/** What Windows says of this computer's own network. */
tagNetworkState LookAtAdapters() {
  tagNetworkState state;
  const std::optional<std::vector<tagAdapter>> adapters = NetworkAdapters();
  state.is_known = adapters.has_value();
  for (const tagAdapter& adapter : adapters.value_or(std::vector<tagAdapter>())) {
    if (!adapter.is_loopback) {
      state.adapters.push_back(Shown(adapter));
    }
  }
  if (adapters) {
    state.broadcast = ShownWay(*adapters, AdapterTowards(kToEverybody));
  }
  const tagFirewallFacts firewall = LookAtFirewall(ToUtf8(ProgramPath()));
  state.has_firewall = firewall.is_known;
  state.profiles = firewall.profiles;
  state.blocking = firewall.blocking;
  return state;
}

/** What a host means, and the adapter towards it; empty: there is none. */
struct tagWay {
  std::vector<std::string> resolved;
  std::string adapter;
};

tagWay LookUp(const std::string& host) {
  tagWay way{AddressesOf(host), {}};
  if (!way.resolved.empty()) {
    way.adapter =
        ShownWay(NetworkAdapters().value_or(std::vector<tagAdapter>()), AdapterTowards(way.resolved.front()));
  }
  return way;
}

/** What the spooler says of a port. */
tagPortState LookAtSpooler(const std::string& name) {
  tagPortState state;
  state.port = name;
  try {
    const std::vector<tagSpoolerPort> ports = SpoolerPorts();
    state.is_listed = std::any_of(ports.begin(), ports.end(), [&](const tagSpoolerPort& port) {
      return EqualsIgnoreCase(port.name, name);
    });
    const std::vector<tagInstalledPrinter> printers = InstalledPrinters();
    for (const tagInstalledPrinter* const printer : PrintersOn(name, printers)) {
      state.printers.push_back(Shown(*printer));
      state.has_trouble =
          state.has_trouble || printer->is_paused || printer->is_off_line || printer->jobs != 0;
    }
  } catch (const CFailure& error) {
    state.spooler_problem = error.what();
  }
  return state;
}

/** The choice as the module has it after it was made; ends the step when it cannot be made. */
tagPrinterChoice Choose(const tagPrinterChoice& choice) {
  const std::int32_t result = TellChoice(choice);
  if (result != TVMGR_OK) {
    throw CallFailure("choosing the printer failed", "choosing the printer", result);
  }
  return KnownPrinter();
}

}  // namespace

tagFinding CCheckup::LookAtTool() {
  return {"tool", EHealth::kWell,
          "tvmgr " TVMGR_VERSION " for 64 bits, \"" + ToUtf8(ProgramPath()) + "\", on " + WindowsVersion(),
          ""};
}

tagFinding CCheckup::LookAtModule() {
  const tagLibraryFacts facts = LookAtLibrary(ManagerLibraryPath(), ManagerEntryPoints());
  tagFinding finding = JudgeModule(StateOf(facts), TVMGR_VERSION);
  if (finding.health == EHealth::kFailed) {
    return finding;
  }
  const auto loaded = Within<bool>(
      "loading TaviraManager.dll", kLoadMs,
      [] {
        LoadManagerLibrary();
        return true;
      },
      true);
  if (!loaded) {
    throw CFailure("TaviraManager.dll is still being loaded after " + FormatDuration(kLoadMs));
  }
  is_loaded_ = true;
  return finding;
}

tagFinding CCheckup::LookAtPortLibrary() {
  const std::wstring path = FindPortLibrary();
  std::string problem;
  if (is_loaded_) {
    const auto result = Within<std::int32_t>(
        "starting the module", kLoadMs, [] { return TVMGR_Initialize(); }, true);
    if (!result) {
      throw CFailure("\"" + ToUtf8(path) + "\" is still being loaded after " + FormatDuration(kLoadMs));
    }
    is_started_ = *result == TVMGR_OK;
    if (*result == TVMGR_PORT_LIBRARY_MISSING) {
      problem = "is as it should be, but Windows does not load it: a DLL that it needs may be missing";
    } else if (*result != TVMGR_OK) {
      problem = "cannot be used: " + ExplainResult(*result);
    }
  }
  return JudgePortLibrary(LookAtPortFile(), problem);
}

tagFinding CCheckup::LookAtPort() {
  if (is_started_) {
    const tagPrinterChoice choice = choice_;
    in_the_way_ = "port";
    const auto known =
        Within<tagPrinterChoice>("choosing the printer", kLoadMs, [choice] { return Choose(choice); });
    if (!known) {
      throw CFailure("choosing the printer did not end within " + FormatDuration(kLoadMs));
    }
    known_ = *known;
    in_the_way_.clear();
  }
  // A printer that is chosen by its address or device may have a port, too.
  const std::string name = choice_.port.empty() ? known_.port : choice_.port;
  tagPortState silent;
  silent.port = name;
  silent.spooler_problem = "the print spooler does not answer";
  auto state = Within<tagPortState>("asking the print spooler", kSpoolerMs, [name] {
                 return LookAtSpooler(name);
               }).value_or(silent);
  state.is_asked = is_started_;
  state.is_chosen = !choice_.port.empty();
  state.known = MakeVisible(known_.address.empty() ? known_.device : known_.address);
  return JudgePort(state);
}

tagFinding CCheckup::LookAtNetwork() {
  // Each of these asks services of Windows, which may be as ill as anything else.
  const auto seen = Within<tagNetworkState>("looking at the network adapters", kNetworkMs, LookAtAdapters);
  tagNetworkState state = seen.value_or(tagNetworkState());
  state.is_late = !seen;
  state.address = choice_.address.empty() ? known_.address : choice_.address;
  state.is_other_address = std::count(state.address.begin(), state.address.end(), ':') > 1;
  if (state.is_known && !state.address.empty() && !state.is_other_address) {
    // Port libraries take a port behind the name.
    const std::string host = state.address.substr(0, state.address.find(':'));
    const auto way = Within<tagWay>("looking up " + host, kNetworkMs, [host] { return LookUp(host); });
    state.is_resolved_late = !way;
    state.resolved = way.value_or(tagWay()).resolved;
    state.way = way.value_or(tagWay()).adapter;
  }
  return JudgeNetwork(state);
}

}  // namespace tvmgr

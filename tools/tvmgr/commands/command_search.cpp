#include <algorithm>
#include <chrono>
#include <future>
#include <iterator>
#include <thread>

#include "commands/commands.h"
#include "output/command_error.h"
#include "output/json_output.h"
#include "output/progress.h"
#include "output/record_output.h"
#include "output/result_words.h"
#include "output/text_encoding.h"
#include "printer/choice_file.h"
#include "printer/manager_session.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

constexpr std::uint64_t kSearchMs = 3'000;
// Printers of the network are asked at the same time; one that has fallen silent costs up to so much more.
constexpr std::uint64_t kNamesMs = 36'000;
// From then on it is worth a word: names come within a second.
constexpr std::uint64_t kSlowNamesMs = 3'000;
// After Ctrl-C: printers that answer have done so by then.
constexpr std::chrono::milliseconds kNamesAfterInterrupt{1'500};
constexpr std::uint32_t kPollMs = 100;

struct tagFound {
  std::int32_t kind = 0; /**< enum TvmgrSearchKind */
  std::string name1;     /**< USB: model */
  std::string name2;     /**< USB: device ID */
  std::string device_path;
  std::int32_t vendor = 0;
  std::int32_t product = 0;
  std::string product_name;
  std::string address;

  bool IsNetwork() const { return kind == TVMGR_SEARCH_NETWORK; }
  const std::string& Where() const { return IsNetwork() ? address : device_path; }
};

std::uint32_t CountFound(std::int32_t kind) {
  std::uint32_t count = 0;
  return TVMGR_GetSearchedPrinterInfo(kind, 0, nullptr, &count) == TVMGR_OK ? count : 0;
}

tagFound ReadFound(std::int32_t kind, std::uint32_t index) {
  TvmgrFoundPrinter record = {};
  const std::int32_t result =
      TVMGR_GetSearchedPrinterInfo(kind, static_cast<std::int32_t>(index), &record, nullptr);
  if (result != TVMGR_OK) {
    throw CallFailure("reading what was found failed", "reading what was found", result);
  }
  tagFound found{kind,          TextOf(record.text1), TextOf(record.text2), TextOf(record.text3),
                 record.value1, record.value2,        TextOf(record.text4), TextOf(record.text5)};
  TvmgrFoundPrinterRelease(&record);
  return found;
}

// False: some printer has fallen silent, and the module still waits for it.
bool StopAtOnce(std::int32_t kind) {
  std::promise<void> stopped;
  std::future<void> done = stopped.get_future();
  std::thread([kind, stopped = std::move(stopped)]() mutable {
    TVMGR_StopSearchPrinter(static_cast<std::uint32_t>(kind));
    stopped.set_value();
  }).detach();
  return done.wait_for(kNamesAfterInterrupt) == std::future_status::ready;
}

// Appends what was found; nothing when Ctrl-C ended it before there was a result.
void Search(CManagerSession& session, const tagGlobalOptions& global, std::int32_t kind,
            std::vector<tagFound>& all) {
  const char* const what = kind == TVMGR_SEARCH_USB ? "searching USB printers" : "searching network printers";
  session.Require("TVMGR_StartSearchPrinter", what, kSearchMs,
                  [&] { return TVMGR_StartSearchPrinter(static_cast<std::uint32_t>(kind), 0); });
  const CProgress progress(what, kSearchMs + (kind == TVMGR_SEARCH_USB ? 0 : kNamesMs), !global.quiet,
                           {"usually 3 s", {}});
  while (TVMGR_GetSearchPrinterStatus() == 1) {
    if (session.WaitOrInterrupted(kPollMs)) {
      session.Leave();
      if (!StopAtOnce(kind)) {
        session.Remark("printers were still being asked for their names: those are not listed");
        return;
      }
      break;
    }
  }
  if (const std::uint64_t took_ms = progress.ElapsedMs(); took_ms > kSearchMs + kSlowNamesMs) {
    session.Remark("asking printers for their names took " + FormatDuration(took_ms - kSearchMs) +
                   ": one that announced itself answered late, or not at all; in that case it is not listed");
  }
  // Only now: while results are being made, a question for them would wait.
  const std::uint32_t count = CountFound(kind);
  for (std::uint32_t i = 0; i < count; ++i) {
    all.push_back(ReadFound(kind, i));
  }
}

std::string HexNumber(std::int32_t number) {
  const char bytes[] = {static_cast<char>(number >> 8), static_cast<char>(number)};
  return ToHex({bytes, sizeof bytes});
}

void PrintFound(const std::vector<tagFound>& all) {
  CRecordOutput output({{"", "NO"}, {"", "KIND"}, {"", "NAME"}, {"", "MORE"}, {"", "WHERE"}});
  for (std::size_t i = 0; i < all.size(); ++i) {
    const tagFound& found = all[i];
    const std::string more = found.IsNetwork()
                                 ? found.name2
                                 : found.product_name + (found.product_name.empty() ? "" : "  ") +
                                       HexNumber(found.vendor) + ":" + HexNumber(found.product);
    output.Add({tagCell::Number(static_cast<std::int64_t>(i + 1)),
                tagCell::Text(found.IsNetwork() ? "network" : "usb"), tagCell::Text(found.name1),
                tagCell::Text(more), tagCell::Text(found.Where())});
  }
  output.PrintTable();
}

void PrintFoundJson(const std::vector<tagFound>& all) {
  Json array = Json::array();
  for (std::size_t i = 0; i < all.size(); ++i) {
    const tagFound& found = all[i];
    const bool is_network = found.IsNetwork();
    Json printer = PrinterJson(is_network ? "address" : "device", found.Where(), found.name1);
    printer["number"] = i + 1;
    printer["second_name"] = is_network ? TextOrNull(found.name2) : Json();
    printer["device_id"] = is_network ? Json() : TextOrNull(found.name2);
    printer["vendor"] = is_network ? Json() : Json(found.vendor);
    printer["product"] = is_network ? Json() : Json(found.product);
    printer["product_name"] = TextOrNull(found.product_name);
    array.push_back(printer);
  }
  SetJsonResult({{"printers", array}});
}

void Remember(const CManagerSession& session, const std::vector<tagFound>& all) {
  tagChoiceFile choice = LoadChoiceFileOrNone();
  choice.found.clear();
  std::transform(all.begin(), all.end(), std::back_inserter(choice.found), [](const tagFound& found) {
    return tagRememberedPrinter{found.IsNetwork() ? "address" : "device", found.Where(), found.name1};
  });
  try {
    SaveChoiceFile(choice);
  } catch (const CFailure& error) {
    session.Remark(std::string("remark: \"tvmgr use NUMBER\" will not know these printers: ") + error.what());
  }
}

}  // namespace

int RunSearch(const tagGlobalOptions& global, const tagSearchOptions& options) {
  CManagerSession session(global, EPrinterUse::kNone);
  std::vector<tagFound> all;
  std::string problems;
  for (const std::int32_t kind : {TVMGR_SEARCH_USB, TVMGR_SEARCH_NETWORK}) {
    if (options.kind != "all" && (options.kind == "usb") != (kind == TVMGR_SEARCH_USB)) {
      continue;
    }
    try {
      Search(session, global, kind, all);
    } catch (const CFailure& error) {
      // What the other half finds is worth as much as before.
      problems += (problems.empty() ? "" : "; ") + std::string(error.what());
    }
    if (session.WaitOrInterrupted(0)) {
      break;
    }
  }
  if (!problems.empty() && (all.empty() || options.kind != "all")) {
    throw CFailure(problems);
  }
  global.json ? PrintFoundJson(all) : PrintFound(all);
  if (!options.forgets) {
    Remember(session, all);
  }
  if (session.WaitOrInterrupted(0)) {
    throw CUnproved("ended by Ctrl-C: there may be more printers");
  }
  if (!problems.empty()) {
    throw CUnproved("one half of the search failed: " + problems);
  }
  if (all.empty()) {
    session.Remark("no printers found");
  }
  return kExitDone;
}

}  // namespace tvmgr

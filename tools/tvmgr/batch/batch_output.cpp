#include "batch/batch_output.h"

#include <algorithm>
#include <map>

#include "batch/live_lines.h"
#include "output/command_error.h"
#include "output/json_output.h"
#include "output/record_output.h"
#include "output/text_layout.h"

namespace tvmgr {
namespace {

Json ListedJson(const tagListedPrinter& printer) {
  const bool is_known = printer.kind != "name";
  return PrinterJson(is_known ? printer.kind : "", is_known ? printer.value : "",
                     is_known ? printer.name : printer.value);
}

ETone ToneOf(const tagPrinterVerdict& verdict) {
  return verdict.IsDone()                                                ? ETone::kGood
         : verdict.word == "not proved" || verdict.word == "not started" ? ETone::kOpen
                                                                         : ETone::kBad;
}

void SetJson(const std::string& command, const std::vector<tagListedPrinter>& printers,
             const std::vector<tagPrinterVerdict>& verdicts) {
  Json rows = Json::array();
  std::size_t done = 0;
  for (std::size_t i = 0; i < printers.size(); ++i) {
    const tagPrinterVerdict& verdict = verdicts[i];
    done += verdict.IsDone() ? 1 : 0;
    rows.push_back({{"printer", ListedJson(printers[i])},
                    {"verdict", verdict.word},
                    {"exit_code", verdict.exit_code ? Json(*verdict.exit_code) : Json()},
                    {"reason", TextOrNull(verdict.reason)},
                    {"result", TextOrNull(verdict.result)},
                    {"remarks", verdict.remarks},
                    {"ms", verdict.took_ms},
                    {"document", verdict.document}});
  }
  SetJsonResult({{"of", command},
                 {"printer_count", printers.size()},
                 {"done_count", done},
                 {"printers", std::move(rows)}});
}

void PrintTable(const std::vector<tagListedPrinter>& printers,
                const std::vector<tagPrinterVerdict>& verdicts) {
  CRecordOutput output({{"", "PRINTER"}, {"", "VERDICT"}, {"", "TIME"}, {"", "RESULT"}});
  for (std::size_t i = 0; i < printers.size(); ++i) {
    const tagPrinterVerdict& verdict = verdicts[i];
    output.Add({tagCell::Text(LabelOf(printers[i])), tagCell::Verdict(verdict.word, ToneOf(verdict)),
                tagCell::Text(verdict.took_ms == 0 ? "-" : ShortDuration(verdict.took_ms)),
                tagCell::Text(verdict.result)});
  }
  output.PrintTable();
}

/** Printers with the same fate stand together: twenty that are off need one sentence. */
std::string WhyNot(const std::vector<tagListedPrinter>& printers,
                   const std::vector<tagPrinterVerdict>& verdicts) {
  std::vector<std::string> order;
  std::map<std::string, std::string> names;
  for (std::size_t i = 0; i < printers.size(); ++i) {
    if (verdicts[i].IsDone()) {
      continue;
    }
    const std::string fate = verdicts[i].word + ": " + verdicts[i].reason;
    std::string& list = names[fate];
    if (list.empty()) {
      order.push_back(fate);
    }
    list += (list.empty() ? "" : ", ") + MakeVisible(LabelOf(printers[i]));
  }
  std::string text;
  for (const std::string& fate : order) {
    std::string lines = fate;
    for (std::size_t at = lines.find('\n'); at != std::string::npos; at = lines.find('\n', at + 5)) {
      lines.replace(at, 1, "\n    ");
    }
    text += "\n" + names[fate] + "\n    " + lines + "\n";
  }
  return text;
}

}  // namespace

void PrintVerdicts(const tagGlobalOptions& global, const std::string& command,
                   const std::vector<tagListedPrinter>& printers,
                   const std::vector<tagPrinterVerdict>& verdicts) {
  if (global.json) {
    SetJson(command, printers, verdicts);
    return;
  }
  PrintTable(printers, verdicts);
  WriteOutput(WhyNot(printers, verdicts));
}

void RequireAllDone(const std::vector<tagListedPrinter>& printers,
                    const std::vector<tagPrinterVerdict>& verdicts, const std::string& search_problem) {
  std::string names;
  std::size_t count = 0;
  for (std::size_t i = 0; i < printers.size(); ++i) {
    if (!verdicts[i].IsDone()) {
      ++count;
      names +=
          (names.empty() ? "" : ", ") + MakeVisible(LabelOf(printers[i])) + " (" + verdicts[i].word + ")";
    }
  }
  if (count == 0 && search_problem.empty()) {
    return;
  }
  if (count == 0) {
    throw CFailure("done on each printer that was found, but " + search_problem, kExitSomePrinters);
  }
  const std::optional<int> first = verdicts.front().exit_code;
  const bool is_users = (first == kExitUsage || first == kExitInputFile) &&
                        std::all_of(verdicts.begin(), verdicts.end(), [&](const tagPrinterVerdict& verdict) {
                          return verdict.exit_code == first;
                        });
  if (is_users) {
    throw CFailure(verdicts.front().reason, *first);
  }
  throw CFailure(std::to_string(count) + " of " + std::to_string(printers.size()) +
                     " printers are not done: " + names +
                     (search_problem.empty() ? "" : "; " + search_problem),
                 kExitSomePrinters);
}

}  // namespace tvmgr

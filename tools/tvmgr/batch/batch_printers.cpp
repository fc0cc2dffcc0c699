#include "batch/batch_printers.h"

#include <algorithm>
#include <filesystem>

#include "batch/child_pool.h"
#include "files/host_data.h"
#include "output/command_error.h"
#include "output/console.h"
#include "output/progress.h"
#include "output/text_encoding.h"
#include "printer/printer_kind.h"

namespace tvmgr {
namespace {

// Two kinds of search, and printers that fall silent while they are asked for their names.
constexpr std::uint64_t kLongestSearchMs = 60'000;

/** @param problem  gets why there may be more of them */
std::vector<tagListedPrinter> Search(const tagGlobalOptions& global, std::string& problem) {
  tagPrinterVerdict verdict;
  bool is_interrupted = false;
  {
    const CProgress progress("searching printers", kLongestSearchMs, !global.quiet, {"usually 6 s", {}});
    tagPoolListener listener;
    listener.interrupted = [&] { is_interrupted = true; };
    verdict = Judge(RunChildren({"--json search all --no-numbers"}, {1, kLongestSearchMs}, listener).front(),
                    "search");
  }
  if (is_interrupted) {
    throw CFailure("stopped by Ctrl-C while printers were searched: nothing was started");
  }
  std::vector<tagListedPrinter> found = PrintersOfSearch(verdict.document);
  if (!verdict.IsDone() && found.empty()) {
    throw CFailure("the search for printers: " + verdict.reason + "; nothing was started");
  }
  if (!verdict.IsDone()) {
    problem = "the search for printers: " + verdict.reason + "; there may be more of them";
  }
  if (!global.quiet) {
    for (const std::string& remark : verdict.remarks) {
      WriteError("remark: the search for printers: " + remark + "\n");
    }
    if (!problem.empty()) {
      WriteError("remark: " + problem + "\n");
    }
  }
  return found;
}

bool HasListName(const std::string& text) {
  return text.size() > 4 && EqualsIgnoreCase(std::string_view(text).substr(text.size() - 4), ".txt");
}

// Of what starts with two backslashes, shares of a network hold files; the others may be the printer itself.
bool IsDevicePath(const std::string& text) {
  return text.starts_with("\\\\?\\") || text.starts_with("\\\\.\\");
}

bool IsFile(const std::string& text) {
  if (IsDevicePath(text) || IsNumericAddress(text) || (KindByLook(text) == "port" && !HasListName(text))) {
    return false;
  }
  std::error_code error;
  return std::filesystem::is_regular_file(ToWide(text), error);
}

bool LooksLikeFile(const std::string& text) {
  const bool has_kind =
      std::any_of(std::begin(kPrinterKinds), std::end(kPrinterKinds),
                  [&](const auto& kind) { return text.starts_with(std::string(kind) + "="); });
  return !has_kind && KindByLook(text) != "device" && text.find(',') == std::string::npos &&
         (text.find_first_of("/\\") != std::string::npos || HasListName(text));
}

}  // namespace

tagBatchPrinters ListPrinters(const tagGlobalOptions& global, const std::string& text) {
  tagBatchPrinters all;
  if (text == "found") {
    all.printers = Search(global, all.search_problem);
    if (all.printers.empty()) {
      throw CFailure(
          "the search found no printers: nothing was started (\"tvmgr search all\" searches again)");
    }
  } else if (IsFile(text)) {
    all.printers = ParsePrinterFile(ReadHostFile(text), text);
  } else if (LooksLikeFile(text)) {
    throw CInputFileError("there is no file \"" + text + "\"");
  } else {
    all.printers = ParsePrinterText(text);
  }
  const bool has_names = std::any_of(all.printers.begin(), all.printers.end(),
                                     [](const tagListedPrinter& printer) { return printer.kind == "name"; });
  std::string search_problem;
  FindNames(all.printers, has_names ? Search(global, search_problem) : std::vector<tagListedPrinter>(),
            all.problems);
  for (std::string& problem : all.problems) {
    problem += problem.empty() || search_problem.empty() ? "" : "; " + search_problem;
  }
  for (const std::string& remark : MergeDuplicates(all.printers, all.problems)) {
    if (!global.quiet) {
      WriteError("remark: " + remark + "\n");
    }
  }
  return all;
}

}  // namespace tvmgr

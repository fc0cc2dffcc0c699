#include <algorithm>
#include <filesystem>

#include "commands/commands.h"
#include "files/content_check.h"
#include "files/host_data.h"
#include "files/listed_files.h"
#include "files/stored_files.h"
#include "names/host_name.h"
#include "names/name_pattern.h"
#include "output/command_error.h"
#include "output/console.h"
#include "output/json_output.h"
#include "output/record_output.h"
#include "output/text_encoding.h"
#include "output/text_layout.h"
#include "printer/answers.h"
#include "printer/manager_session.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

namespace fs = std::filesystem;

/** A stored file as it came. */
struct tagFetched {
  std::string bytes;
  bool is_cut = false; /**< it shows that its end is missing */
};

tagFetched Fetch(const CManagerSession& session, const std::string& stored, const tagFileKind* kind,
                 const tagFetchOptions& options) {
  const std::wstring name = ToWide(stored);
  const std::uint8_t mode = kind != nullptr && IsFormat(*kind) ? 1 : 0;
  const auto timeout_ms = static_cast<std::uint32_t>(options.wait_s * 1000);
  session.Require("TVMGR_LoadStoredData", "fetching " + stored, timeout_ms + 100,
                  [&] { return TVMGR_LoadStoredData(name.c_str(), mode, timeout_ms); });
  std::string bytes = FetchedData(session);
  if (bytes.empty()) {
    RequireStillAnswering(session, stored + " was asked for");
    throw CFailure("the printer sent nothing for " + stored +
                   ": no such file, an empty file, or no answer within " + std::to_string(timeout_ms / 1000) +
                   " s (--wait)");
  }
  if (mode == 0 && IsCompressed(bytes)) {
    session.Remark("remark: the printer sent " + stored +
                   " compressed (zlib); the data is written as it came");
  }
  const bool is_cut = kind != nullptr && IsEvidentlyCut(bytes, *kind);
  return {std::move(bytes), is_cut};
}

std::string Bytes(std::size_t size) {
  return std::to_string(size) + " bytes";
}

std::string CutOff(const std::string& name, std::size_t size, const std::string& target,
                   const std::string& output) {
  return name + " came without its end: " + Bytes(size) +
         (target.empty() ? "" : " in " + target + ", nothing in " + output) +
         ". The printer stopped sending in the middle, or has stored it like that: fetch it again";
}

int FetchOne(const tagGlobalOptions& global, const tagFetchOptions& options, const std::string& name) {
  RequireTable({}, "without a pattern");
  RequireFileName(name);
  RequireAnsi(name);
  const tagFileKind* const kind = KindOfFile(name);
  if (options.output.empty() && (global.json || IsTerminal(EStream::kOutput))) {
    throw CUsageError(std::string(global.json ? "with --json the bytes of a file cannot go to stdout"
                                              : "the bytes of a file do not go to a terminal") +
                      ": name a file with -o" + (global.json ? "" : ", or redirect the output"));
  }
  if (!options.output.empty()) {
    ConfirmOverwriting(options.output, options.yes);
  }
  const CManagerSession session(global);
  session.RequireAnsweringPrinter();
  if (kind != nullptr && !options.unlisted) {
    // A file that does not exist shows as silence only, after the whole time-out; the list knows at once.
    session.LoadAll();
    if (!IsStored(session, *kind, name)) {
      // An empty list is no proof: a silent printer has one, too.
      RequireStillAnswering(session, "the lists were read");
      throw CFailure("the printer has no file " + name +
                     " (\"tvmgr files\" lists them; --unlisted asks for it "
                     "all the same)");
    }
  }
  const tagFetched fetched = Fetch(session, name, kind, options);
  // What was there before is worth more than a part.
  const std::string target =
      fetched.is_cut && !options.output.empty() ? options.output + ".partial" : options.output;
  if (target.empty()) {
    WriteOutput(fetched.bytes);
  } else {
    WriteHostFile(target, fetched.bytes);
  }
  if (fetched.is_cut) {
    throw CUnproved(CutOff(name, fetched.bytes.size(), target, options.output));
  }
  if (target.empty()) {
    return kExitDone;
  }
  if (global.json) {
    SetJsonResult({{"name", name}, {"bytes", fetched.bytes.size()}, {"file", target}});
  } else {
    session.Remark(name + ": " + Bytes(fetched.bytes.size()) + " to " + target);
  }
  return kExitDone;
}

std::string PathIn(const std::string& folder, const std::string& name) {
  return ToUtf8((fs::path(ToWide(folder)) / fs::path(ToWide(name))).wstring());
}

void RequireFolder(const std::string& folder) {
  std::error_code error;
  fs::create_directories(fs::path(ToWide(folder)), error);
  if (!fs::is_directory(fs::path(ToWide(folder)), error)) {
    throw COutputFileError("the folder \"" + folder + "\" cannot be created, or is a file");
  }
}

void ConfirmOverwritingAll(const std::vector<tagListedFile>& files, const tagFetchOptions& options) {
  std::string names;
  for (const tagListedFile& file : files) {
    std::error_code ignored;
    if (IsHostFileName(file.name) &&
        fs::exists(fs::path(ToWide(PathIn(options.output, file.name))), ignored)) {
      names += (names.empty() ? "" : ", ") + file.name;
    }
  }
  if (!names.empty()) {
    Confirm("overwrite in the folder \"" + options.output + "\" on this computer: " + names, options.yes);
  }
}

/** What became of one file of several. */
struct tagOutcome {
  std::string file; /**< of this computer; empty: none was written */
  std::size_t bytes = 0;
  std::string reason; /**< empty: fetched */
  int exit_code = kExitDone;
};

tagOutcome FetchTo(const CManagerSession& session, const tagListedFile& stored,
                   const tagFetchOptions& options) {
  if (!IsHostFileName(stored.name)) {
    return {{},
            0,
            "it cannot have that name in a folder of this computer: fetch it by its name with -o",
            kExitFailed};
  }
  try {
    const tagFetched fetched = Fetch(session, stored.name, stored.kind, options);
    const std::string file = PathIn(options.output, stored.name);
    const std::string target = fetched.is_cut ? file + ".partial" : file;
    WriteHostFile(target, fetched.bytes);
    return {target, fetched.bytes.size(),
            fetched.is_cut ? CutOff(stored.name, fetched.bytes.size(), target, file) : std::string(),
            fetched.is_cut ? kExitUnproved : kExitDone};
  } catch (const CCommandError& error) {
    return {{}, 0, error.what(), error.ExitCode()};
  }
}

int FetchAll(const tagGlobalOptions& global, const tagFetchOptions& options, const std::string& pattern) {
  if (options.output.empty()) {
    throw CUsageError("\"" + options.name + "\" may be several files: name a folder for them with -o");
  }
  if (options.unlisted) {
    throw CUsageError("a pattern is looked up in the printer's lists: --unlisted belongs to a name");
  }
  const CManagerSession session(global);
  session.RequireAnsweringPrinter();
  session.LoadAll();
  const std::vector<tagListedFile> files = MatchingFiles(session, pattern);
  if (files.empty()) {
    RefuseUnmatched(session, options.name);
  }
  const bool is_cut = IsAnswerCut(session);
  RequireFolder(options.output);
  ConfirmOverwritingAll(files, options);
  CRecordOutput output({{"name", "NAME"}, {"bytes", "BYTES"}, {"file", "FILE"}, {"reason", "REASON"}});
  tagOutcome outcome;
  int worst = is_cut ? kExitUnproved : kExitDone;
  for (const tagListedFile& stored : files) {
    // Each of the others would cost as long again.
    outcome = outcome.exit_code == kExitUnreachable
                  ? tagOutcome{{}, 0, "not asked for: the printer no longer answers", kExitUnreachable}
                  : FetchTo(session, stored, options);
    worst = worst == kExitUnreachable || outcome.exit_code == kExitUnreachable ? kExitUnreachable
            : worst == kExitFailed || outcome.exit_code == kExitFailed         ? kExitFailed
                                                                       : std::max(worst, outcome.exit_code);
    const bool has_file = !outcome.file.empty();
    output.Add({tagCell::Text(stored.name),
                has_file ? tagCell::Number(static_cast<std::int64_t>(outcome.bytes)) : tagCell::Null("-"),
                has_file ? tagCell::Text(outcome.file) : tagCell::Null("-"),
                tagCell::TextOrNull(outcome.reason)});
  }
  global.json ? output.SetAsJson("files") : output.PrintTable();
  if (worst == kExitUnreachable) {
    throw CUnreachable("not every file was fetched: the printer no longer answers");
  }
  if (worst == kExitFailed) {
    throw CFailure("not every file was fetched: see the reasons");
  }
  if (worst != kExitDone) {
    throw CUnproved(is_cut ? "the printer's lists were cut off: there may be more files"
                           : "not every file came whole: see the reasons");
  }
  return kExitDone;
}

}  // namespace

int RunFetch(const tagGlobalOptions& global, const tagFetchOptions& options) {
  const std::string name = WithoutDevice(options.name);
  return IsPattern(name) ? FetchAll(global, options, name) : FetchOne(global, options, name);
}

}  // namespace tvmgr

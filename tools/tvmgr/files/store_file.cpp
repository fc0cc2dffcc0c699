#include "files/store_file.h"

#include "backup_file/stored_download.h"
#include "files/stored_files.h"
#include "output/command_error.h"
#include "output/result_words.h"
#include "output/text_encoding.h"
#include "output/work_report.h"
#include "printer/answers.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

// A file of that name may have been there before, and have stayed: it is protected, or there is no room.
void RequireStored(const CManagerSession& session, const tagDownload& download) {
  const std::string name = ListedName(session, download);
  const std::string ansi = RequireAnsi(name);
  const std::optional<std::string> bytes =
      name.empty() ? std::nullopt : BytesOfDownload(ansi, download.command);
  const EComparison content = bytes ? CompareStored(session, name, *bytes) : EComparison::kNotCompared;
  if (content == EComparison::kNotCompared) {
    RequireStillAnswering(session, download.name + " was sent");
  }
  if (name.empty()) {
    throw CFailure(download.name + " was sent, but the printer does not list it");
  }
  if (content == EComparison::kOther) {
    throw CFailure(name +
                   " was sent, but the printer has other contents under that name: an earlier file stayed "
                   "(it is protected, or there is no room)");
  }
  if (content == EComparison::kNotCompared) {
    throw CUnproved(name +
                    ": listed, content not compared (the printer sends nothing back for it, or what was "
                    "sent cannot be read here)");
  }
}

}  // namespace

std::string ListedName(const CManagerSession& session, const tagDownload& download) {
  for (const tagFileKind& kind : AllFileKinds()) {
    const bool complete = KindOfFile(download.name) != nullptr;
    const std::string name = complete ? download.name : download.name + std::string(kind.extension);
    if (kind.group == download.kind->group && IsStored(session, kind, name)) {
      return name;
    }
  }
  return {};
}

void StoreFile(const CManagerSession& session, const tagDownload& download) {
  session.Require("TVMGR_UpdateRegistList", "preparing the transfer", 0, [&] {
    return TVMGR_UpdateRegistList(download.kind->register_request,
                                  reinterpret_cast<const std::uint8_t*>(download.command.data()),
                                  static_cast<std::uint32_t>(download.command.size()), nullptr, 0);
  });
  ReportTransfer(download.command.size());
  constexpr std::uint64_t kLongestTransfer = 50ULL * 60 * 1000;
  const std::uint64_t transfer = session.IsNetwork() ? kLongestTransfer : limit::kTransaction;
  const std::int32_t result =
      session.Call("TVMGR_RegistData", "storing " + download.name, transfer + limit::kConfirmFiles,
                   [] { return TVMGR_RegistData(); });
  if (result == TVMGR_NOT_CONFIRMED) {
    RequireStillAnswering(session, download.name + " was sent");
    throw CallFailure(download.name + " was sent, but the printer does not list it",
                      "storing " + download.name, result);
  }
  if (result != TVMGR_OK) {
    throw CallFailure("storing " + download.name + " failed", "storing " + download.name, result);
  }
  // For stored formats the result says only that they were sent, for all others that the name is listed.
  RequireStored(session, download);
}

}  // namespace tvmgr

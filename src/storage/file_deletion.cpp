#include "storage/file_deletion.h"

#include "command/fixed_commands.h"

namespace tavira {
namespace {

/** One pass of the confirmation: refreshes two lists and looks for the file. */
std::int32_t ConfirmAbsence(CRegisteredFiles& files, std::initializer_list<std::int32_t> lists,
                            std::string_view name) {
  for (const std::int32_t list : lists) {
    const std::int32_t result = files.Refresh(list);
    if (result != TVMGR_OK) {
      return result;
    }
  }
  return files.IsListed(lists, name) ? TVMGR_NOT_CONFIRMED : TVMGR_OK;
}

std::int32_t ConfirmationPass(CRegisteredFiles& files, const tagFileRequest& request) {
  switch (request.kind) {
    case TVMGR_REQUEST_DELETE_GRAPHIC:
      return ConfirmAbsence(files, {TVMGR_LIST_PNG, TVMGR_LIST_GRF}, request.primary);
    case TVMGR_REQUEST_DELETE_FORMAT:
      return ConfirmAbsence(files, {TVMGR_LIST_FMT, TVMGR_LIST_ZPL}, request.primary);
    case TVMGR_REQUEST_DELETE_FONT:
      return ConfirmAbsence(files, {TVMGR_LIST_TTF, TVMGR_LIST_TTE}, request.primary);
    case TVMGR_REQUEST_BACKGROUND:
      return files.Refresh(TVMGR_LIST_BACKGROUND);
    default:
      return TVMGR_BAD_ARGUMENT;
  }
}

}  // namespace

std::int32_t DeleteStoredFile(CPrinterPort& port, CRegisteredFiles& files, const tagFileRequest& request) {
  if (!port.HasLink()) {
    return TVMGR_NOT_INITIALIZED;
  }
  if (request.primary.empty()) {
    return TVMGR_BAD_ARGUMENT;
  }
  std::string& commands = port.NewCommand();
  commands.append("^XA^F(AE:")
      .append(request.primary)
      .append(",N^XZ");  // a protected file refuses to be deleted
  commands.append("^XA^IDE:").append(request.primary).append("^XZ").append(kClosingCommand);
  std::int32_t result = port.Exchange();
  if (result != TVMGR_OK) {
    return result;
  }
  for (int pass = 0; pass < kConfirmationPasses; ++pass) {
    port.Clock().Sleep(kConfirmationIntervalMs);
    result = ConfirmationPass(files, request);
    // Only a listed file is asked for again; the background file takes every pass, as hosts have come to
    // expect.
    const bool goes_on =
        result == TVMGR_NOT_CONFIRMED || (result == TVMGR_OK && request.kind == TVMGR_REQUEST_BACKGROUND);
    if (!goes_on) {
      break;
    }
  }
  return result;
}

}  // namespace tavira
